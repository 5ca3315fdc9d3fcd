// What holds for hookctl as a whole, and its commands that go on until they are ended.
#include <fcntl.h>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <sstream>

#include "handset/line_reader.h"
#include "support/terminal.h"
#include "support/tool_test.h"

namespace kesext_test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::StartsWith;

using Hookctl = ToolTest;

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
  const ToolResult result = RunTool({"watch", "--count", "2", "--every", "0.001"});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.out, MatchesRegex("Serving +sid +4183 .*EVDO .*pilotPn +168.*\n\nServing .*EVDO .*"));
}

/// What stands between two erasures of the window's rest, row by row.
std::vector<std::string> NextScreen(Terminal& terminal) {
  EXPECT_TRUE(terminal.shows("\x1b[J"));
  std::vector<std::string> rows;
  std::istringstream text(terminal.passed());
  for (std::string row; std::getline(text, row, '\n');) {
    EXPECT_TRUE(row.ends_with("\x1b[K\r")) << row;
    rows.push_back(row.substr(0, row.find("\x1b[K")));
  }
  EXPECT_TRUE(!rows.empty() && rows[0].starts_with("\x1b[H"));
  if (!rows.empty()) rows[0].erase(0, 3);
  return rows;
}

TEST_F(Hookctl, TheScreensAreDrawnInPlaceForTheWindowThatThereIs) {
  Terminal terminal({"watch", "--every", "0.001"});
  struct Case {
    unsigned short columns, rows;
    const char* first;
    const char* last;
  };
  const Case cases[] = {{80, 24, "Serving      sid ", "EVDO sector  sectorIds  zeros"},
                        {40, 10, "Serving      sid 4183  nid 65535", "... 25 more rows in a larger window"},
                        {39, 10, "This window has 39 columns and 10 rows;", "watch needs 40 and 10."}};
  for (const Case& c : cases) {
    terminal.resize(c.columns, c.rows);
    std::vector<std::string> rows;
    for (int tries = 0; tries < 100 && (rows.empty() || rows.back() != c.last); ++tries)
      rows = NextScreen(terminal);
    ASSERT_FALSE(rows.empty());
    EXPECT_THAT(rows.front(), StartsWith(c.first));
    EXPECT_EQ(rows.back(), c.last);
    EXPECT_LT(rows.size(), c.rows);
    for (const std::string& row : rows)
      EXPECT_LE(row.size(), c.columns) << row;
  }
  EXPECT_EQ(terminal.endsWith("\x03"), 128 + SIGINT);
}

TEST_F(Hookctl, LinesOfALogThatAreLetGoLeaveTheOthersTheirNumbers) {
  int ends[2];
  ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
  host::UniqueFd in(ends[1]);
  handset::LineReader reader{host::UniqueFd(ends[0])};
  const auto write = [&](std::string_view text) {
    EXPECT_EQ(::write(in.get(), text.data(), text.size()), static_cast<ssize_t>(text.size()));
  };
  for (size_t round = 0; round < 100; ++round) {
    write("E TAG: first\nE TAG: second\n");
    EXPECT_EQ(reader.waitFor("second", 2 * round, handset::kTimeout), 2 * round + 1);
    EXPECT_THAT(reader.lines(), ElementsAre("E TAG: first", "E TAG: second"));
    EXPECT_THAT(reader.lines(2 * round + 1), ElementsAre("E TAG: second"));
    EXPECT_EQ(reader.newLines().size(), 2U);
    reader.forget(reader.count());
    EXPECT_EQ(reader.count(), 2 * round + 2);
    EXPECT_TRUE(reader.lines().empty());
    EXPECT_TRUE(reader.newLines().empty());
  }
}

TEST_F(Hookctl, AScreenWithoutDataSaysSo) {
  (void)Write("handset/modem.txt", "fail engineering-information 90\n");
  const ToolResult result = RunTool({"watch", "--root", root_, "--count", "1"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.out, HasSubstr("(no data from the modem: qmi_client_send_msg_sync failed (90).)"));
}

TEST_F(Hookctl, WhatIsWrongIsSaidWithWhatWouldBeRight) {
  ExpectGoldenRuns("wrong_command_lines");
}

TEST_F(Hookctl, HelpVersionAndFolderCanBeHadInTheUsualWays) {
  for (const std::string command : {"send", "completion"})
    EXPECT_EQ(RunTool({"help", command}).out, RunTool({command, "--help"}).out);
  EXPECT_EQ(RunTool({"help"}).out, RunTool({"--help"}).out);
  EXPECT_THAT(RunTool({"--version"}).out, MatchesRegex("hookctl [0-9]+\\.[0-9]+\\.[0-9]+\n"));
  setenv("HOOKCTL_ROOT", root_.c_str(), 1);
  RunTool({"send", "rde", "write", "10017", "0102"});
  unsetenv("HOOKCTL_ROOT");
  EXPECT_TRUE(std::filesystem::exists(root_));
}

/// Of each line, what stands behind the stroke.
TEST_F(Hookctl, ABashThatSourcesTheScriptCompletesCommandLines) {
  const std::string script = Write("script", "source <(" KESEXT_HOOKCTL
                                             " completion bash)\n"
                                             "while IFS='|' read -r COMP_LINE words; do\n"
                                             "  COMP_POINT=${#COMP_LINE} COMPREPLY=()\n"
                                             "  _hookctl " KESEXT_HOOKCTL
                                             " </dev/null 2>/dev/null\n"
                                             "  echo \"$COMP_LINE|${COMPREPLY[*]}\"\n"
                                             "done\n");
  const std::string lines = KESEXT_GOLDEN "/bash_completions.txt";
  EXPECT_EQ(std::system(("bash " + script + " <" + lines + " | diff " + lines + " -").c_str()), 0);
  for (const char* shell : {"zsh", "fish"}) {
    const std::string check = fmt::format(
        "! command -v {0} >/dev/null || " KESEXT_HOOKCTL " completion {0} | {0} -n /dev/stdin", shell);
    EXPECT_EQ(std::system(check.c_str()), 0);
  }
}

TEST_F(Hookctl, CtrlCLeavesNothingWhateverItIsAt) {
  const std::vector<std::string> commands[] = {
      {"watch"}, {"tour"}, {"modem", "--root", root_}, {"send", "--trace", "--modem", "silent pfp", "pfp"}};
  for (const std::vector<std::string>& command : commands) {
    RunningTool tool(command);
    ASSERT_TRUE(tool.waitForOutput("e"));
    tool.signal(SIGINT);
    EXPECT_THAT(tool.finish().status, ::testing::AnyOf(128 + SIGINT, 0)) << command[0];
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
    const std::string errors = own_ + "/errors";
    const std::string script =
        fmt::format("bash -c 'exec 3> >(:); wait $!; " KESEXT_HOOKCTL " {} >&3 2>{}'", command, errors);
    const int status = std::system(script.c_str());
    EXPECT_EQ(WEXITSTATUS(status), 1) << command;
    EXPECT_EQ(std::filesystem::file_size(errors), 0U) << command;
  }
}

}  // namespace
}  // namespace kesext_test
