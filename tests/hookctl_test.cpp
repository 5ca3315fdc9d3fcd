// What holds for hookctl as a whole, and its commands that go on until they are ended.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <regex>
#include <sstream>

#include "handset/line_reader.h"
#include "support/schema.h"
#include "support/terminal.h"
#include "support/tool_test.h"

namespace kesext_test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

using Hookctl = ToolTest;

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

TEST_F(Hookctl, EvenSigkillLeavesNothing) {
  for (const char* state : {"modem silent bsr-timer-read\nbsr-timer get\n", "wait 3600\n"}) {
    RunningTool tool({"shell"});
    tool.type(std::string("pfp\n") + state);
    ASSERT_TRUE(tool.waitForOutput("answer"));
    tool.signal(SIGKILL);
    // The process shares the output, so this goes on until it has gone.
    EXPECT_EQ(tool.finish().status, -SIGKILL);
    EXPECT_TRUE(std::filesystem::is_empty(temporary_)) << state;
  }
}

TEST_F(Hookctl, AFolderThatTheProcessCannotEnterIsSaidAtOnce) {
  if (geteuid() != 0) GTEST_SKIP() << "only root's process becomes another user";
  const std::string closed = own_ + "/closed";
  std::filesystem::create_directory(closed);
  std::filesystem::permissions(closed, std::filesystem::perms::owner_all);
  const std::string who =
      "the process runs as user 1001, who may not enter " + closed + ": chmod o+x " + closed;
  const ToolResult kept = RunTool({"send", "--root", closed + "/handset", "pfp"});
  EXPECT_EQ(kept.status, 2);
  EXPECT_THAT(kept.err, HasSubstr(who + ", or take another --root"));
  setenv("TMPDIR", closed.c_str(), 1);
  EXPECT_THAT(RunTool({"send", "pfp"}).err, HasSubstr(who + ", or set TMPDIR to another folder"));
  setenv("TMPDIR", temporary_.c_str(), 1);
  EXPECT_TRUE(std::filesystem::is_empty(closed));
}

TEST_F(Hookctl, WhatScriptsGetHasTheShapeOfTheSchema) {
  const std::string crash = KESEXT_SCENARIOS "/modem_crash.json";
  const std::pair<const char*, std::vector<std::string>> outputs[] = {
      {"send",
       {"send", "--json", "--log", "--trace", "--times", "--messages", "0.1", "--modem",
        "indicate lte-error 1 2 3", "--modem", "silent pfp", "sid-nid", "read"}},
      {"send", {"send", "--json", "raw", "00050077", "00000000"}},
      {"play", {"play", "--json", "--show", "--trace", "--times", crash}},
      {"playSeveral", {"play", "--json", crash, KESEXT_SCENARIOS "/tour/11_reports.json"}},
      {"decode", {"decode", "--json", "BD000002", "04000000", "00000000", "000000000000", "1E00"}}};
  for (const auto& [shape, words] : outputs) {
    const std::string out = RunTool(words).out;
    EXPECT_FALSE(out.starts_with('\n'));
    EXPECT_EQ(SchemaMisfit(shape, nlohmann::json::parse(out, nullptr, false)), "") << words[0];
  }
  // The lines of the log are typed into a file there.
  const std::string session = FileText(KESEXT_GOLDEN "/sessions/a_log_of_a_silent_modem.txt");
  const std::string log = std::regex_replace(session, std::regex("\n> "), "\n");
  const auto events = JsonLines(RunTool({"explain", "--json"}, log).out);
  EXPECT_EQ(events.size(), 6U);
  for (const auto& event : events)
    EXPECT_EQ(SchemaMisfit(&event == &events.back() ? "summary" : "explain", event), "") << event;
}

}  // namespace
}  // namespace kesext_test
