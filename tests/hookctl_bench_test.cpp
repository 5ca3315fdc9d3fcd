// What holds for the bench that commands work at: the handset folder, its modem, the process and their end.
#include <gmock/gmock.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <regex>
#include <string>

#include "support/tool_test.h"

namespace kesext_test {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::Not;

class HandsetBench : public ToolTest {
 protected:
  /// The lines of what the modem has kept, without the heading.
  [[nodiscard]] std::string Kept() const {
    const std::string text = FileText(memory_);
    return text.substr(std::min(text.find('\n') + 1, text.size()));
  }
  [[nodiscard]] ToolResult Send(std::vector<std::string> words) const {
    words.insert(words.begin(), {"send", "--root", root_});
    return RunTool(words);
  }
  void Remember(const std::string& lines) const { (void)Write("handset/modem.txt", lines); }

  const std::string memory_ = root_ + "/modem.txt";
};

TEST_F(HandsetBench, WhatIsWrittenInAKeptFolderIsReadBackLater) {
  ASSERT_EQ(Send({"--check", "rde", "write", "10017", "0102"}).status, 0);
  EXPECT_THAT(Send({"--check", "rde", "read", "10017"}).out, HasSubstr("01 02                    data"));
  for (const char* request : {"band10 set 7", "bsr-timer set 3", "tot-order set 1,2"})
    ASSERT_EQ(RunTool({"shell", "--root", root_}, request).status, 0);
  const std::string written = "set rde 10017 0102\nset band 10 7\nset bsr-timer 3\nset tot-order 1,2\n";
  EXPECT_EQ(Kept(), written);
}

TEST_F(HandsetBench, WhatAModemWasToldInAKeptFolderLastsUntilItIsReset) {
  const std::string lines =
      "set rde 5 AA00 3\nset rde 6 text:\nset rde 7 'text:flex # 7'\nset band 14 9\nset bsr-timer 301\n"
      "set tot-order 1,70000\nrefuse plmn-name 7\ndelay rde-read 1\nanswer pfp 0000000100\nanswer utility "
      "00\n"
      "silent data-plmn\nfail band-read 3\npublish dms 2\n";
  {
    RunningTool modem({"modem", "--root", root_});
    modem.type("# a comment\nfail data-plmn 3\nfail lte-channels 3\n" + lines + "restore lte-channels\n");
    ASSERT_TRUE(modem.waitForOutput("told     restore"));
    modem.signal(SIGTERM);
    EXPECT_THAT(modem.finish().out, Not(HasSubstr("comment")));
  }
  std::string shortest = lines;
  shortest.replace(shortest.find("0000000100"), 10, "00000001");
  EXPECT_EQ(Kept(), shortest);
  EXPECT_THAT(Send({"--modem", "set bsr-timer 302", "band14 get"}).out, HasSubstr("status       0"));
  shortest.replace(shortest.find("301"), 3, "302");
  EXPECT_EQ(Kept(), shortest);
  EXPECT_THAT(Send({"--modem", "reset", "bsr-timer", "get"}).out, HasSubstr("timer        300"));
  EXPECT_EQ(Kept(), "");
}

TEST_F(HandsetBench, LinesThatAreNoneAreSaidWithinBoundsAndTheOthersCount) {
  std::string lines =
      "# by hand\nset rde 5\nstop\nindicate test\n\x1b[2J\nset rde 5 " + std::string(70'000, '0') + '\n';
  for (int i = 0; i < 1000; ++i)
    lines += "line\n";
  Remember(lines + "set bsr-timer 45\n");
  const ToolResult result = Send({"bsr-timer", "get"});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.out, HasSubstr("timer        45"));
  for (const char* said : {"modem.txt:2: that takes: set rde INDEX BYTES [RECORD]; the modem goes without",
                           ":3: stop is nothing", ":4: indicate is nothing", "told '?[2J'",
                           ":6: a line has up to 65536 characters", ": 1000 more such lines",
                           "mend the file, or tell the modem reset"})
    EXPECT_THAT(result.err, HasSubstr(said));
  EXPECT_THAT(FileText(memory_), HasSubstr("set rde 5\n")) << "nothing was told, so nothing is written";
  Remember(std::string(5'000'000, 'x'));
  EXPECT_THAT(Send({"bsr-timer", "get"}).err, HasSubstr("modem.txt has more than 4194304 bytes"));
}

TEST_F(HandsetBench, AStartThatWaitsForAServiceIsWaitedForAndTellsWhichOne) {
  const std::string slow =
      Write("slow",
            "#!/bin/sh\n"
            "echo 'E RIL-KESEXT: qmi_kesext_hook_client_init: wait for server to come up.' >&2\n"
            "sleep 2.2\n"
            "exec " KESEXT_BINARY " \"$@\"\n");
  const ToolResult result = RunTool({"--executable", slow, "send", "pfp"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(
      result.err,
      "hookctl: still waiting, after 2 s: the modem does not publish vendor; the process gives it 500 s\n");
}

TEST_F(HandsetBench, AFolderThatTheProcessCannotEnterIsSaidAtOnce) {
  if (geteuid() != 0) GTEST_SKIP() << "only root's process becomes another user";
  const std::string closed = own_ + "/closed";
  fs::create_directory(closed);
  fs::permissions(closed, fs::perms::owner_all);
  const std::string who =
      "the process runs as user 1001, who may not enter " + closed + ": chmod o+x " + closed;
  const ToolResult kept = RunTool({"send", "--root", closed + "/handset", "pfp"});
  EXPECT_EQ(kept.status, 2);
  EXPECT_THAT(kept.err, HasSubstr(who + ", or take another --root"));
  setenv("TMPDIR", closed.c_str(), 1);
  EXPECT_THAT(RunTool({"send", "pfp"}).err, HasSubstr(who + ", or set TMPDIR to another folder"));
  setenv("TMPDIR", temporary_.c_str(), 1);
  EXPECT_TRUE(fs::is_empty(closed));
}

TEST_F(HandsetBench, EvenSigkillLeavesNothing) {
  for (const char* state : {"modem silent bsr-timer-read\nbsr-timer get\n", "wait 3600\n"}) {
    RunningTool tool({"shell"});
    tool.type(std::string("pfp\n") + state);
    ASSERT_TRUE(tool.waitForOutput("answer"));
    tool.signal(SIGKILL);
    // The process shares the output, so this goes on until it has gone.
    EXPECT_EQ(tool.finish().status, -SIGKILL);
    EXPECT_TRUE(fs::is_empty(temporary_)) << state;
  }
}

TEST_F(HandsetBench, TheHelpOfModemShowsAParentThatWorks) {
  std::string script = RunTool({"modem", "--help"}).out;
  script.erase(0, script.find("  hookctl modem --root"));
  ASSERT_FALSE(script.empty());
  script = std::regex_replace(script, std::regex("/tmp/(handset|answers|messages)\\b"), own_ + "/$1");
  (void)Write("script", script);
  setenv("PATH", (fs::path(KESEXT_HOOKCTL).parent_path().string() + ":" + std::getenv("PATH")).c_str(), 1);
  const std::string run = "cd " + own_ + " && sh script >shown 2>log";
  EXPECT_EQ(std::system((run + "; while [ -e handset/modem.sock ]; do :; done").c_str()), 0);
  EXPECT_THAT(FileText(own_ + "/shown"), HasSubstr("timer        300"));
  EXPECT_LT(fs::file_size(own_ + "/log"), 100'000U) << "the log goes round and round";
}

}  // namespace
}  // namespace kesext_test
