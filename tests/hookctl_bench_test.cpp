// What holds for the bench that commands work at: the handset folder, its modem, the process and their end.
#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <string>

#include "support/tool_test.h"

namespace kesext_test {
namespace {

namespace fs = std::filesystem;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

std::string fileText(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

class HandsetBench : public ToolTest {
 protected:
  HandsetBench() : root_(temporary_ + "/handset"), memory_(root_ + "/modem.txt") {}
  ~HandsetBench() override { fs::remove_all(root_); }

  /// The lines of what the modem has kept, without the heading.
  [[nodiscard]] std::string Kept() const {
    const std::string text = fileText(memory_);
    return text.substr(std::min(text.find('\n') + 1, text.size()));
  }
  [[nodiscard]] ToolResult Send(std::vector<std::string> words) const {
    words.insert(words.begin(), {"send", "--root", root_});
    return RunTool(words);
  }
  void Remember(const std::string& lines) const {
    fs::create_directories(root_);
    std::ofstream(memory_) << lines;
  }

  const std::string root_;
  const std::string memory_;
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
    modem.type("# a comment\nfail data-plmn 3\n" + lines + "restore lte-channels\n");
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

TEST_F(HandsetBench, ALineThatIsNoneIsSaidAndTheOthersCount) {
  Remember("# by hand\nset bsr-timer 45\nset rde 5\nset rdx 5 00\n");
  const ToolResult result = Send({"bsr-timer", "get"});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.out, HasSubstr("timer        45"));
  EXPECT_THAT(
      result.err,
      AllOf(HasSubstr(memory_ + ":3: that takes: set rde INDEX BYTES [RECORD]; the modem goes without"),
            HasSubstr(memory_ + ":4: "), HasSubstr("mend the file, or tell the modem reset")));
  EXPECT_THAT(fileText(memory_), HasSubstr("set rdx 5 00")) << "nothing was told, so nothing is written";
}

TEST_F(HandsetBench, AMemoryThatIsNoneIsBounded) {
  std::string lines = "stop\nindicate test\n\x1b[2J\nset rde 5 " + std::string(70'000, '0') + '\n';
  for (int i = 0; i < 1000; ++i)
    lines += "line\n";
  Remember(lines + "set bsr-timer 45\n");
  const ToolResult result = Send({"bsr-timer", "get"});
  EXPECT_THAT(result.out, HasSubstr("timer        45"));
  EXPECT_THAT(result.err, AllOf(HasSubstr(":1: stop is nothing"), HasSubstr(":2: indicate is nothing"),
                                HasSubstr("told '?[2J'"), HasSubstr(":4: a line has up to 65536 characters"),
                                HasSubstr(": 999 more such lines")));
  Remember(std::string(5'000'000, 'x'));
  EXPECT_THAT(Send({"bsr-timer", "get"}).err, HasSubstr("modem.txt has more than 4194304 bytes"));
}

TEST_F(HandsetBench, AStartThatIsSlowByRightIsWaitedForWithAWord) {
  Remember("delay rde-read 3500\n");
  const ToolResult result = Send({"pfp"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(
      result.err,
      "hookctl: still waiting, after 2 s: the modem has not answered rde-read; the process gives it 15 s\n");
}

TEST_F(HandsetBench, AStartThatWaitsForAServiceTellsWhichOne) {
  const std::string slow = temporary_ + "/slow";
  std::ofstream(slow) << "#!/bin/sh\n"
                         "echo 'E RIL-KESEXT: qmi_kesext_hook_client_init: wait for server to come up.' >&2\n"
                         "sleep 2.2\n"
                         "echo 'E RIL-KESEXT: Child process waiting for data' >&2\n";
  fs::permissions(slow, fs::perms::all);
  EXPECT_THAT(
      RunTool({"--executable", slow, "send", "pfp"}).err,
      AllOf(HasSubstr(
                "still waiting, after 2 s: the modem does not publish vendor; the process gives it 500 s\n"),
            HasSubstr("no answer came")));
  fs::remove(slow);
}

TEST_F(HandsetBench, AFolderThatTheProcessCannotEnterIsSaidAtOnce) {
  if (geteuid() != 0) GTEST_SKIP() << "only root's process becomes another user";
  const std::string closed = temporary_ + "/closed";
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
  fs::remove(closed);
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
  script = std::regex_replace(script, std::regex("/tmp/(handset|answers|messages)\\b"), temporary_ + "/$1");
  std::ofstream(temporary_ + "/script") << script;
  setenv("PATH", (fs::path(KESEXT_HOOKCTL).parent_path().string() + ":" + std::getenv("PATH")).c_str(), 1);
  const std::string run = "cd " + temporary_ + " && sh script >shown 2>log";
  EXPECT_EQ(std::system((run + "; while [ -e handset/modem.sock ]; do :; done").c_str()), 0);
  EXPECT_THAT(fileText(temporary_ + "/shown"), HasSubstr("timer        300"));
  EXPECT_LT(fs::file_size(temporary_ + "/log"), 100'000U) << "the log goes round and round";
  for (const char* file : {"script", "shown", "log", "answers", "messages"})
    fs::remove(temporary_ + "/" + file);
}

TEST_F(HandsetBench, TheManualTellsHowTheLogTellsZerosFromFailures) {
  struct Case {
    const char* message;
    const char* request;
    const char* logged;  // with the code as the manual has it
  };
  const Case cases[] = {
      {"engineering-information", "engineering cp",
       "kes_qmi_sprint_get_engineering_info: qmi_client_send_msg_sync"},
      {"engineering-information", "engineering evdo",
       "kes_qmi_sprint_get_engineering_info: qmi_client_send_msg_sync"},
      {"band-read", "band10 get", "kes_qmi_sprint_read_band: qmi_client_send_msg_sync"},
      {"band-read", "band14 get", "kes_qmi_sprint_read_band: qmi_client_send_msg_sync"},
      {"bsr-timer-read", "bsr-timer get", "kes_qmi_sprint_get_bsr_timer: qmi_client_send_msg_sync"},
      {"active-ehrpd-apn-list", "apn-list", "kes_qmi_sprint_get_active_ehrpd_apn: qmi_client_send_msg_sync"},
      {"tot-order-read", "tot-order get", "kes_qmi_sprint_get_tot_order: qmi_client_send_msg_sync"},
      {"data-plmn", "data-plmn", "Sending QMI_DATA_PLMN_REQ_V01"},
  };
  const std::string manual = fileText(KESEXT_MANUAL);
  for (const Case& c : cases) {
    const ToolResult result = RunTool(
        {"shell"}, std::string("modem fail ") + c.message + " 90\nlog since\n" + c.request + "\nlog since\n");
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_THAT(result.out, AllOf(HasSubstr(std::string(c.logged) + " failed"), Not(HasSubstr("(failure)"))))
        << c.request;
    EXPECT_THAT(manual, AllOf(HasSubstr(std::string("(") + c.request + ")"),
                              HasSubstr(std::string(".Dl ") + c.logged + " failed")));
  }
}

}  // namespace
}  // namespace kesext_test
