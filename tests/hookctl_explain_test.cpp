// Logs told as stories: every form of a log, what took long or failed, and that no line of the process is
// unknown.
#include <fmt/format.h>
#include <gmock/gmock.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <regex>
#include <set>

#include "support/golden.h"
#include "support/schema.h"
#include "support/tool_test.h"
#include "tools/log/line_table.h"

namespace kesext_test {
namespace {

namespace fs = std::filesystem;
using nlohmann::ordered_json;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
using Explain = ToolTest;

/// A log in which the modem lets 15 seconds pass, its lines ending as they are told to.
std::string SilentModemsLog(const char* line_end = "\n") {
  return std::regex_replace(GoldenCases("log_forms").at(0).second, std::regex("\n"), line_end);
}

/// What --json tells, all of which has the shape of the schema.
std::vector<ordered_json> Events(const std::string& log, std::vector<std::string> options = {}) {
  options.insert(options.begin(), {"explain", "--json"});
  std::vector<ordered_json> events = JsonLines(RunTool(options, log).out);
  for (const ordered_json& event : events)
    EXPECT_EQ(SchemaMisfit(&event == &events.back() ? "summary" : "explain", event), "") << event;
  return events;
}

std::string Bench(std::initializer_list<const char*> texts) {
  std::string log;
  for (const char* text : texts)
    log += fmt::format("E RIL-KESEXT: {}\n", text);
  return log;
}

TEST_F(Explain, TheStoryHasTimesAndPointsOutASilentModem) {
  const ToolResult told = RunTool({"explain"}, SilentModemsLog("\r\n"));
  EXPECT_EQ(told.status, 0) << told.err;
  EXPECT_EQ(told.out, GoldenCases("story_of_a_silent_modem")[0].second);
}

/// Of each form stands in the file what its lines have.
TEST_F(Explain, EveryFormOfALogTellsTheSame) {
  const auto story = [](const std::vector<ordered_json>& events) {
    std::string text;
    for (const ordered_json& event : events)
      text += fmt::format("{}, {}, {}\n", event["event"].dump(), event.value("name", ""),
                          event.value("result", ""));
    return text;
  };
  const auto expected = Events(SilentModemsLog("\r\r\n"));
  ASSERT_EQ(expected.size(), 6U);
  for (const auto& [form, log] : GoldenCases("log_forms")) {
    const auto has = [&form = form](const char* what) { return form.find(what) != std::string::npos; };
    const auto events = Events(log);
    ASSERT_EQ(events.size(), expected.size()) << form;
    EXPECT_EQ(events[2].contains("took_ms"), has("times")) << form;
    EXPECT_EQ(events[2].contains("process"), has("processes")) << form;
    EXPECT_EQ(events[2].value("silences", 0), has("silence") ? 1 : 0) << form;
    EXPECT_EQ(events.back()["unknown"], 0) << events.back();
    EXPECT_EQ(story(events), story(expected)) << form;
  }
}

TEST_F(Explain, OnlyWhatIsAskedForIsTold) {
  const std::string log = SilentModemsLog();
  struct Case {
    const char* only;
    std::vector<size_t> lines;
  };
  const Case cases[] = {{"failures", {7, 15}},   {"bsr-timer", {7}}, {"bsr-timer get", {7}},
                        {"bsr-timer set", {}},   {"start-up", {2}},  {"reports", {9}},
                        {"modem-logs", {14, 15}}};
  for (const Case& c : cases) {
    auto events = Events(log, {"--only", c.only});
    ASSERT_EQ(events.size(), c.lines.size() + 1) << c.only;
    for (size_t i = 0; i < c.lines.size(); ++i)
      EXPECT_EQ(events[i]["line"], c.lines[i]) << c.only;
    EXPECT_EQ(events.back()["event"], "summary");
    EXPECT_EQ(events.back()["requests"][0]["name"], "bsr-timer get");
  }
}

TEST_F(Explain, HowARequestEndsIsWhatItsLinesTell) {
  for (const auto& [told, log] : GoldenCases("request_endings")) {
    const auto events = Events(log);
    ASSERT_GE(events.size(), 2U) << told;
    const size_t colon = told.find(": ");
    EXPECT_EQ(events[0]["result"], told.substr(0, colon)) << events[0];
    EXPECT_THAT(events[0].dump(), HasSubstr(told.substr(colon + 2)));
  }
}

TEST_F(Explain, WhatTheModemReportsMeanwhileIsNotTheRequests) {
  const auto events = Events(Bench({"Read 18 bytes from pipe", "msg Id is 0x20000bc, type is 0. ",
                                    "qmi_kesext_hook_ind_cb: msg_id=0x111 buf_len=2 cb_data=(nil)",
                                    "tunerIndHndlr: failed to decode 0x111 ind data for -4",
                                    "adamIndHndlr: Write to file /data/adam/~adam0001.log failed, errno 0",
                                    "Get BSR timer result - 7", "Child process waiting for data"}));
  ASSERT_EQ(events.size(), 4U);
  EXPECT_EQ(events[0]["event"], "report");
  EXPECT_EQ(events[0]["problems"][0]["text"], "the tuner event does not decode: code -4, it does not decode");
  EXPECT_THAT(events[1]["problems"][0]["text"].get<std::string>(),
              HasSubstr("not all was written (errno 0)"));
  EXPECT_FALSE(events[2]["failed"]);
  EXPECT_EQ(events[3]["troubles"], 2);
}

TEST_F(Explain, ATimeThatTheClockWasSetInIsNotTold) {
  const auto timed = [](const char* from, const char* to) {
    return fmt::format(
        "{0} 7 7 E RIL-KESEXT: Read 18 bytes from pipe\n"
        "{1} 7 7 E RIL-KESEXT: Get BSR timer result - 7\n"
        "{1} 7 7 E RIL-KESEXT: Child process waiting for data\n",
        from, to);
  };
  const auto events = Events(timed("01-01 00:00:05.000", "11-23 13:43:40.000") +
                             timed("11-23 13:43:50.000", "11-23 13:43:49.000") +
                             timed("12-31 23:59:59.500", "01-01 00:00:01.0") +
                             timed("2027-02-28 23:59:59.123456", "2027-03-01 00:00:00.123456"));
  ASSERT_EQ(events.size(), 5U);
  EXPECT_FALSE(events[0].contains("took_ms") || events[1].contains("took_ms"));
  EXPECT_EQ(events[2]["took_ms"], 1500);
  EXPECT_EQ(events[3]["took_ms"], 1000);
  EXPECT_EQ(events[4]["silences"], 0);
}

TEST_F(Explain, WhatIsCutUnknownOrRepeatedIsSaidOnce) {
  const std::string log = "E RIL-KESEXT: ffer length is ze\n" +
                          Bench({"Read failed", "select returned zero"}) +
                          Bench({"select returned zero", "select returned zero", "Child proc"});
  const ToolResult told = RunTool({"explain", "--colour", "always"}, log);
  EXPECT_THAT(
      told.out,
      HasSubstr("\x1b[31m       3  trouble               it cannot wait for requests; 3 times\x1b[0m"));
  EXPECT_THAT(told.out, HasSubstr("2 lines are cut or not known; the first is line 1: ffer length is ze"));
  const ToolResult foreign = RunTool({"explain"}, "E/Other( 1): E RIL-KESEXT: Read failed\n");
  EXPECT_EQ(foreign.status, 1);
  EXPECT_THAT(foreign.err, HasSubstr("the log has no line of the process: 1 lines"));
  const auto long_name =
      Events(Bench({"Read 18 bytes from pipe"}) + "E RIL-KESEXT: plmn short name is 7-bit Unpacked data " +
             std::string(154, 'a') + "\xce\xa3\x1b]0;\n" + std::string(1 << 20, '\0') + "\n");
  EXPECT_EQ(long_name[0]["details"][0], "name " + std::string(154, 'a') + "...");
}

TEST_F(Explain, EveryShippedScenarioGoesAsItSaysAgainAndAgainAndLogsNoUnknownLine) {
  const std::string log = own_ + "/log";
  const std::string process =
      Write("process", "#!/bin/bash\nexec " KESEXT_BINARY " \"$@\" 2> >(exec tee -a " + log + " >&2)\n");
  const std::string all = KESEXT_SCENARIOS;
  const ToolResult played =
      RunTool({"--executable", process, "play", "--root", root_, all, all + "/tour", all, all + "/tour"});
  EXPECT_EQ(played.status, 0) << played.out << played.err;
  EXPECT_TRUE(fs::exists(root_ + "/data/adam"));
  const ToolResult told = RunTool({"explain", log});
  EXPECT_THAT(told.out,
              AllOf(HasSubstr("nam write "), HasSubstr("tot-order set "), Not(HasSubstr("cut or not known")),
                    Not(HasSubstr(": code 0"))));  // which is no failure
}

struct LoggedText {
  std::string text;
  bool certain;  // otherwise the name that it begins with is any that the source speaks of
};

/// What a source may log, with one number in the place of the first and another in those of all others.
std::vector<LoggedText> LoggedTexts(const std::string& code, const std::string& first,
                                    const std::string& others) {
  static const std::regex kCall(R"re(LOG[ED]\(\s*((?:GET_NAM_VALUE )?(?:"(?:[^"\\]|\\.)*"\s*)+))re");
  static const std::regex kName(R"(Enter kes\w+\(\)|\b(kes|adam)\w+)");
  static const std::pair<std::regex, std::string> kRewritten[] = {
      {std::regex("GET_NAM_VALUE "), "\"kesext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE \""},
      {std::regex(R"re(^"|"\s*"|"\s*$|\\n)re"), ""},
      {std::regex("%#"), "0x%"},
      {std::regex(R"((.)%[.0-9]*s)"), "$1text"}};
  static const std::regex kNumber("%(02|l)?[duxXp]");
  std::vector<LoggedText> texts;
  for (std::sregex_iterator call(code.begin(), code.end(), kCall), end; call != end; ++call) {
    std::string text = (*call)[1];
    for (const auto& [pattern, replacement] : kRewritten)
      text = std::regex_replace(text, pattern, replacement);
    text = std::regex_replace(text, kNumber, first, std::regex_constants::format_first_only);
    text = std::regex_replace(text, kNumber, others);
    if (!text.starts_with("%s")) {
      texts.push_back({text, true});
      continue;
    }
    for (std::sregex_iterator name(code.begin(), code.end(), kName); name != end; ++name)
      texts.push_back({name->str() + text.substr(2), false});
  }
  return texts;
}

/// The manual's lines of a log, with a number in the place of the code.
std::vector<std::string> ManualsLines() {
  static const std::regex kLine(R"(\n\.Dl (?:E RIL-KESEXT: )?([^\n]*))");
  const std::string manual = FileText(KESEXT_MANUAL);
  std::vector<std::string> lines;
  for (std::sregex_iterator line(manual.begin(), manual.end(), kLine), end; line != end; ++line)
    lines.push_back(std::regex_replace((*line)[1].str(), std::regex("CODE|ERROR"), "7"));
  return lines;
}

TEST_F(Explain, EveryTextThatTheProcessCanLogHasARowAndEveryRowSuchAText) {
  std::set<const tools::LineRow*> met;
  for (const auto& file : fs::recursive_directory_iterator(fs::path(KESEXT_GOLDEN) / "../../src")) {
    if (file.path().extension() != ".cpp") continue;
    const std::string code = FileText(file.path());
    for (const auto& [first, others] :
         {std::pair{"7", "7"}, {"0", "7"}, {"0", "0"}, {"1", "1"}, {"93", "93"}}) {
      for (const auto& [text, certain] : LoggedTexts(code, first, others)) {
        tools::Places places;
        const tools::LineRow* row = tools::findLine(text, places);
        EXPECT_TRUE(row != nullptr || !certain) << file.path() << ": " << text;
        met.insert(row);
      }
    }
  }
  for (const std::string& text : ManualsLines()) {
    tools::Places places;
    EXPECT_NE(tools::findLine(text, places), nullptr) << text;
  }
  for (const auto rows : {tools::processLines(), tools::serviceLines(), tools::modemLines()})
    for (const tools::LineRow& row : rows) {
      EXPECT_TRUE(met.contains(&row)) << row.pattern;
      const auto places = std::count(row.pattern.begin(), row.pattern.end(), '%');
      EXPECT_LE(places, tools::kPlacesMax) << row.pattern;
      for (auto place = places; place <= 9; ++place)
        EXPECT_THAT(std::string(row.words), Not(HasSubstr(fmt::format("{{{}", place)))) << row.pattern;
    }
}

}  // namespace
}  // namespace kesext_test
