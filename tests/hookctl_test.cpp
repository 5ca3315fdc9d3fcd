// What holds for hookctl as a whole, and its commands that go on until they are ended.
#include <gmock/gmock.h>
#include <sys/wait.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>

#include "support/tool_test.h"

namespace kesext_test {
namespace {

using ::testing::HasSubstr;
using ::testing::MatchesRegex;

class Hookctl : public ToolTest {
 protected:
  Hookctl() : root_(temporary_ + "/handset") {}
  ~Hookctl() override { std::filesystem::remove_all(root_); }

  const std::string root_;
};

TEST_F(Hookctl, AModemAloneServesOthersAndDoesWhatItIsTold) {
  RunningTool modem({"modem", "--root", root_});
  modem.type("fail utility 90\n");
  ASSERT_TRUE(modem.waitForOutput("told     fail utility 90"));
  const ToolResult sent = RunTool({"send", "--root", root_, "sysinfo-filter", "1"});
  EXPECT_EQ(sent.status, 0);
  EXPECT_THAT(sent.out, HasSubstr("status       5 (failure)"));
  EXPECT_TRUE(
      modem.waitForOutput("    modem    utility: type 5, len 1, req_data 01\n"
                          "             refused with code 90 in 0."));
  const ToolResult traced = RunTool({"send", "--root", root_, "--trace", "nam", "read"});
  EXPECT_EQ(traced.status, 2);
  EXPECT_THAT(traced.err, HasSubstr("is another tool's: its own console shows what it is asked"));
  const ToolResult refused = RunTool({"send", "--root", root_, "--modem", "stop", "nam", "read"});
  EXPECT_EQ(refused.status, 2);
  EXPECT_THAT(refused.err, HasSubstr("a modem runs in " + root_ + " already"));
  modem.signal(SIGTERM);
  EXPECT_EQ(modem.finish().status, 128 + SIGTERM);
  EXPECT_FALSE(std::filesystem::exists(root_ + "/modem.sock"));
}

TEST_F(Hookctl, TheScreensAreShownAsOftenAsAsked) {
  const ToolResult result = RunTool({"watch", "--count", "2", "--every", "0.05"});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.out, MatchesRegex("Call processing\n.*SID  +4183.*EVDO\n.*pilot PN  +168.*"
                                       "Call processing\n.*EVDO\n.*"));
}

TEST_F(Hookctl, AScreenWithoutDataSaysSo) {
  RunningTool modem({"modem", "--root", root_});
  modem.type("fail engineering-information 90\n");
  ASSERT_TRUE(modem.waitForOutput("told"));
  const ToolResult result = RunTool({"watch", "--root", root_, "--count", "1"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.out, HasSubstr("(no data from the modem: qmi_client_send_msg_sync failed (90).)"));
  modem.signal(SIGINT);
}

TEST_F(Hookctl, CtrlCLeavesNothingWhateverItIsAt) {
  const std::vector<std::string> commands[] = {{"watch"}, {"tour"}, {"modem", "--root", root_}};
  for (const std::vector<std::string>& command : commands) {
    RunningTool tool(command);
    ASSERT_TRUE(tool.waitForOutput("e"));
    tool.signal(SIGINT);
    EXPECT_THAT(tool.finish().status, ::testing::AnyOf(128 + SIGINT, 0)) << command[0];
    std::filesystem::remove_all(root_);
    EXPECT_TRUE(std::filesystem::is_empty(temporary_)) << command[0];
  }
}

TEST_F(Hookctl, CtrlCAtTheVeryStartLeavesNothing) {
  for (int i = 0; i < 20; ++i) {
    RunningTool tool({"send", "pfp"});
    tool.signal(SIGINT);
    tool.finish();
    EXPECT_TRUE(std::filesystem::is_empty(temporary_));
  }
}

TEST_F(Hookctl, ClosedStandardStreamsAreNoTrouble) {
  const auto run = [](const std::string& arguments) {
    const int status = std::system((std::string("bash -c '" KESEXT_HOOKCTL " ") + arguments + "'").c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  };
  EXPECT_EQ(run("bogus 2>&-"), 2);
  EXPECT_EQ(run("bogus 2>/dev/full"), 2);
  EXPECT_EQ(run("send pfp >&-"), 0);
  EXPECT_EQ(run("shell <&- >/dev/null"), 0);
}

TEST_F(Hookctl, AClosedOutputEndsIt) {
  for (const std::string command :
       {"tour", "watch", "send nam read", "send --list",
        "decode < <(yes 000A00060000000436017800 2>/dev/null)", "shell <> <(:)"}) {
    const std::string script =
        "bash -c 'exec 3> >(:); wait $!; " KESEXT_HOOKCTL " " + command + " >&3 2>" + temporary_ + "/errors'";
    const int status = std::system(script.c_str());
    EXPECT_EQ(WEXITSTATUS(status), 1) << command;
    EXPECT_EQ(std::filesystem::file_size(temporary_ + "/errors"), 0U) << command;
  }
  std::filesystem::remove(temporary_ + "/errors");
}

}  // namespace
}  // namespace kesext_test
