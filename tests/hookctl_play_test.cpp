// Scenarios: what is said of one that is wrong or does not go as it says, and how several are played.
#include <gmock/gmock.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <sstream>

#include "handset/message_table.h"
#include "support/golden.h"
#include "support/tool_test.h"
#include "tools/bench/question.h"

namespace kesext_test {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;

class Play : public ToolTest {
 protected:
  [[nodiscard]] std::string steps(const std::string& text) const {
    return Write("scenario.json", R"({"steps": [)" + text + "]}");
  }
};

TEST_F(Play, ThePlayGoesOnBehindAStepThatIsWrongAndShowsWhatCame) {
  const std::string scenario = KESEXT_GOLDEN "/scenario_that_goes_wrong.json";
  const ToolResult result = RunTool({"play", scenario});
  EXPECT_EQ(result.status, 1);
  for (const char* said :
       {"  3  WRONG       Read\n", "status: expected 5 (failure), not 0 (success)",
        "length: expected 3, not 2", "data differs at byte 1 of 2: expected 03, not 02",
        "not logged behind the text before: RDE index (10017",
        "logged: E RIL-KESEXT: Child process waiting for data",
        "asked: message 1: expected nothing more, not rde-read rde_index=10017",
        "asked: message 1: rde-write data differs at byte 1 of 512: expected 03 00 ",
        "  4  WRONG       request rde write 10017 0102\n    the answer differs at byte 8 of 20: expected 05 ",
        "asked: expected pfp\n      was asked: rde-read rde_index=38\n", "01 02                    data",
        "message 1: expected data PLMN changed, not unsolicited 0x00000457", "/a is not there",
        "none is not there", "dropbox: expected [t: x], not []", "  8  ok          modem stop\n",
        "nobody heard the indication: no process is connected to the modem",
        "exit: expected 3, but the process has ended with status 0", "3 of 10 steps as expected"})
    EXPECT_THAT(result.out, HasSubstr(said));

  const auto results = nlohmann::json::parse(RunTool({"play", "--json", "--trace", scenario}).out);
  ASSERT_EQ(results.size(), 10U);
  EXPECT_EQ(results[1]["result"], "ok");
  EXPECT_EQ(results[2]["result"], "WRONG");
  EXPECT_EQ(results[2]["wrong"][1], "length: expected 3, not 2");
  EXPECT_EQ(results[5]["messages"].size(), 2U);
  EXPECT_EQ(results[2]["trace"][0]["message"], "rde-read");
  EXPECT_EQ(results[5]["trace"].size(), 3U);  // with the one that tells that all were heard
}

TEST_F(Play, AFileThatIsWrongIsSaidWithThePlaceBeforeAnythingStarts) {
  for (const auto& [wrong, said] : GoldenCases("wrong_scenarios")) {
    const ToolResult result = RunTool({"play", steps(wrong)});
    EXPECT_EQ(result.status, 2) << wrong;
    EXPECT_EQ(result.err, "hookctl: " + own_ + "/" + said);
    EXPECT_EQ(result.out, "");
  }
  EXPECT_THAT(RunTool({"play", Write("a.json", "[]")}).err, HasSubstr("not []"));
  EXPECT_THAT(RunTool({"play", steps("")}).err, HasSubstr("a scenario has \"steps\""));
}

TEST_F(Play, FilesAndFoldersArePlayedByNameEachOnAHandsetOfItsOwnUnlessThatIsKept) {
  const std::string one =
      Write("story/1/make.json",
            R"({"title": "One", "steps": [{"file": {"path": "/x", "bytes": "A5*3 00", "at": "0x10"}},
    {"expect": {"file": [{"path": "/x", "size": 20}, {"path": "/x", "at": 17, "bytes": "A5A500"}]}}]})");
  (void)Write("story/1/notes.txt", "no scenario");
  const std::string two = Write(
      "story/2.json", R"({"title": "Two", "steps": [{"expect": {"file": {"path": "/x", "absent": true}}}]})");
  const std::string folder = own_ + "/story";
  EXPECT_EQ(RunTool({"play", folder}).out,
            "\nOne\n    1  ok          file {\"path\":\"/x\",\"bytes\":\"A5*3 00\","
            "\"at\":\"0x10\"}\n    2  ok          expect file\n\nTwo\n    1  ok          expect file\n\n"
            "3 of 3 steps as expected\n");
  const std::string root = own_ + "/kept";
  const ToolResult kept = RunTool({"play", "--root", root, one, two});
  EXPECT_EQ(kept.status, 1);
  EXPECT_THAT(kept.out, HasSubstr("    /x is there, and should not be\n\n2 of 3 steps as expected\n"
                                  "    not as expected: " +
                                  two + "\n"));
  const auto all = nlohmann::json::parse(RunTool({"play", "--json", folder}).out);
  EXPECT_EQ(all[1]["scenario"], "Two");
  EXPECT_EQ(all[1]["file"], two);
  EXPECT_EQ(all[0]["steps"].size(), 2U);
}

TEST_F(Play, ThePageAndTheHelpTellEveryKey) {
  const std::string page = FileText(std::filesystem::path(KESEXT_SCHEMA).replace_filename("hookctl.md"));
  std::istringstream help(RunTool({"play", "--help"}).out);
  size_t count = 0;
  for (std::string line; std::getline(help, line);) {
    const size_t at = line.find_first_not_of(' ');
    const size_t end = line.find("\":");
    if (at == std::string::npos || line[at] != '"' || end == std::string::npos) continue;
    ++count;
    EXPECT_THAT(page, HasSubstr("| `" + line.substr(at, end + 1 - at) + "` |"));
  }
  EXPECT_GE(count, 18U);
}

TEST_F(Play, WhatIsBehindTheDeathOfTheProcessIsNotPlayed) {
  const std::string mortal = Write("mortal",
                                   "#!/bin/sh\n"
                                   "echo 'E RIL-KESEXT: Child process waiting for data' >&2\n"
                                   "head -c 1 <&3 >/dev/null\n"
                                   "echo 'E RIL-KESEXT: last words' >&2\n"
                                   "exit 3\n");
  const ToolResult result =
      RunTool({"--executable", mortal, "play",
               steps(R"({"process": "start"}, {"request": "nam read"}, {"modem": "stop"})")});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.out, AllOf(HasSubstr("  2  WRONG       request nam read\n"
                                          "    no answer came: the process has ended with status 3. It last "
                                          "logged:\n"),
                                HasSubstr("last words\n"), HasSubstr("  3  not played  modem stop\n"),
                                HasSubstr("1 of 4 steps as expected")));
}

TEST_F(Play, TheToursLinesCanBeTypedInTheShellRecordedAndPlayedAgain) {
  const ToolResult tour = RunTool({"tour"});
  EXPECT_EQ(tour.status, 0) << tour.out;
  constexpr std::string_view kTourPrompt = "    hook> ";
  std::istringstream lines(tour.out);
  std::string typed;
  size_t count = 0;
  for (std::string line; std::getline(lines, line);) {
    if (!line.starts_with(kTourPrompt)) continue;
    typed += line.substr(kTourPrompt.size()) + '\n';
    ++count;
  }
  EXPECT_GT(count, 75U);
  const std::string recorded = own_ + "/recorded.json";
  const ToolResult shell = RunTool({"shell", "--record", recorded}, typed);
  EXPECT_EQ(shell.status, 0);
  EXPECT_THAT(shell.err, ::testing::IsEmpty());
  const ToolResult again = RunTool({"play", recorded});
  EXPECT_EQ(again.status, 0) << again.out << again.err;
}

TEST(Question, IsWrittenInTheShortestWordsThatItIsReadFrom) {
  std::istringstream lines(FileText(KESEXT_GOLDEN "/questions.txt"));
  size_t count = 0;
  for (std::string line; std::getline(lines, line); ++count) {
    const tools::Question question = tools::readQuestion(line);
    const handset::Received asked{.service = question.row->service,
                                  .id = question.row->id,
                                  .body = question.body.value_or(handset::Bytes{})};
    const std::string written = tools::writeQuestion(asked);
    EXPECT_EQ(written, line);
    EXPECT_THAT(tools::compareQuestion(question, asked), ::testing::IsEmpty());
  }
  EXPECT_EQ(count, 17);
}

}  // namespace
}  // namespace kesext_test
