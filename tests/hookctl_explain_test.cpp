// Logs told as stories: every form of a log, what took long or failed, and that no line of the process is
// unknown.
#include <fmt/format.h>
#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

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

/// A line of the process, so many milliseconds after 23:59:40 of the last day of a year.
struct Said {
  int after;
  const char* text;
};

constexpr Said kSilentModem[] = {
    {0, "Starting kesext_client"},
    {1, "readfd=3, writefd=4, writeunsolfd=5 kes_ext_instance_id=0"},
    {2, "sprint_client_init: wait for server to come up."},
    {1250, "qmi_kesext_hook_client_init Succeeded"},
    {1300, "Child process waiting for data"},
    {2000, "Read 18 bytes from pipe"},
    {2001, "msg Id is 0x20000bc, type is 0. "},
    {8000, "qmi_kesext_hook_ind_cb: msg_id=0x12 buf_len=2 cb_data=(nil)"},
    {8001, "Handling unsol msg 18"},
    {17000, "kes_qmi_sprint_get_bsr_timer: qmi_client_send_msg_sync failed (-3)."},
    {17001, "Get BSR timer result - 0"},
    {17002, "Child process waiting for data"},
    {30000, "adam_create_new_log: create new /data/adam/adam_1.log."},
    {30001, "adam_update_current_log: Unable to write /data/adam/adam_1.log, errno 28"},
};

std::string TimeOf(const Said& said) {
  const int millis = 40'000 + said.after;
  const bool next = millis >= 60'000;
  return fmt::format("{} {}:{:02}.{:03}", next ? "01-01" : "12-31", next ? "00:00" : "23:59",
                     millis / 1000 % 60, millis % 1000);
}

/// Lines with {0} for the time and {1} for the text, among those of another process.
std::string LogOf(fmt::string_view form, fmt::string_view other) {
  std::string log = "--------- beginning of radio\n";
  for (const Said& said : kSilentModem)
    log += fmt::format(fmt::runtime(other), TimeOf(said), "E RIL-KESEXT: not the process's") +
           fmt::format(fmt::runtime(form), TimeOf(said), said.text);
  return log;
}

std::vector<ordered_json> Events(const std::string& log, std::vector<std::string> options = {}) {
  options.insert(options.begin(), {"explain", "--json"});
  std::istringstream lines(RunTool(options, log).out);
  std::vector<ordered_json> events;
  for (std::string line; std::getline(lines, line);)
    events.push_back(ordered_json::parse(line, nullptr, false));
  return events;
}

std::string Bench(std::initializer_list<const char*> texts) {
  std::string log;
  for (const char* text : texts)
    log += fmt::format("E RIL-KESEXT: {}\n", text);
  return log;
}

TEST_F(Explain, TheStoryHasTimesAndPointsOutASilentModem) {
  const ToolResult told = RunTool({"explain"}, LogOf("{0}   77    78 E RIL-KESEXT: {1}\r\n", ""));
  EXPECT_EQ(told.status, 0) << told.err;
  EXPECT_EQ(told.out, R"(
12-31
       2      77  23:59:40.000     1.3 s  start-up              ready; instance 0; the modem's services were there after 1.2 s; waited once for one, up to 1 s each
       9      77  23:59:48.000            modem: carrier-value  2 bytes
       7      77  23:59:42.000    15.0 s  bsr-timer get         answered with zeros; THE MODEM LET 15 s PASS; the timer could not be read: code -3 (line 11); timer 0

01-01
      14      77  00:00:10.000            modem log             /data/adam/adam_1.log begun
      15      77  00:00:10.001            modem log             cannot write /data/adam/adam_1.log: No space left on device (errno 28)

Requests                number    failed    longest       mean
bsr-timer get                1         1     15.0 s     15.0 s

Slowest
bsr-timer get           15.0 s  line 7

15 lines, 14 of the process, which started once
The modem let 15 s pass once.
Something went wrong once outside of requests.
)");
}

TEST_F(Explain, EveryFormOfALogTellsTheSame) {
  struct Form {
    const char* line;
    const char* other;
    bool timed;
    bool has_process;
  };
  const Form forms[] = {
      {"{0}  77  78 E RIL-KESEXT: {1}\n", "{0}  79  79 I Other   : {1}\n", true, true},
      {"2026-{0}456 +0000  radio  77  78 E RIL-KESEXT: {1}\n", "{0} +0000 radio 79 79 E RIL-KESEXT2: x\n",
       true, true},
      {"{0} E/RIL-KESEXT(   77): {1}\n", "{0} W/Other(   77): {1}\n", true, true},
      {"E/RIL-KESEXT(   77): {1}\n", "W/Other(   77): {1}\n", false, true},
      {"[ {0}    77:   78 E/RIL-KESEXT ]\n{1}\n\n", "[ {0}    79:   79 E/Other ]\n{1}\n\n", true, true},
      {"[ {0} 12345:12346 E/RIL-KESEXT ]\n{1}\n\n", "\n", true, true},
      {"\x1b[38;5;196m{0}  77  78 E RIL-KESEXT: {1}\x1b[0m\n", "\x1b[32m{0} 7 8 D Other: {1}\x1b[0m\n", true,
       true},
      {"E RIL-KESEXT: {1}\n", "Other: {1}\n", false, false},
  };
  const auto story = [](const std::vector<ordered_json>& events) {
    std::string text;
    for (const ordered_json& event : events)
      text += fmt::format("{}, {}, {}\n", event["event"].dump(), event.value("name", ""),
                          event.value("result", ""));
    return text;
  };
  const auto expected = Events(LogOf(forms[0].line, forms[0].other));
  ASSERT_EQ(expected.size(), 6U);
  for (const Form& form : forms) {
    const auto events = Events(LogOf(form.line, form.other));
    ASSERT_EQ(events.size(), expected.size()) << form.line;
    EXPECT_EQ(events[2].contains("took_ms"), form.timed) << form.line;
    EXPECT_EQ(events[2].contains("process"), form.has_process) << form.line;
    EXPECT_EQ(events.back()["unknown"], 0) << events.back();
    EXPECT_EQ(story(events), story(expected)) << form.line;
    EXPECT_EQ(events[2].value("silences", 0), form.timed || !form.has_process ? 1 : 0) << form.line;
  }
}

TEST_F(Explain, OnlyWhatIsAskedForIsTold) {
  const std::string log = LogOf("{0} 77 78 E RIL-KESEXT: {1}\n", "");
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
  const ToolResult wrong = RunTool({"explain", "--only", "bsr-timr"}, log);
  EXPECT_EQ(wrong.status, 2);
  EXPECT_THAT(wrong.err, HasSubstr("did you mean bsr-timer"));
}

TEST_F(Explain, HowARequestEndsIsWhatItsLinesTell) {
  struct Case {
    std::initializer_list<const char*> lines;
    const char* result;
    const char* told;
  };
  const Case cases[] = {
      {{"msg Id is 0x200001d, type is 0. ", "NV Read RdeId 38", "Child process waiting for data"},
       "failed",
       "the modem did not give element 38 (0x26)"},
      {{"msg Id is 0x2000015, type is 0. ", "NV Read with RDE index (7), recordNum(0), offset(0).",
        "NV Read 7, length 2, data length 2, grde - 0102", "Child process waiting for data"},
       "answered",
       "read element 7 (0x7): 0102"},
      {{"msg Id is 0x2000015, type is 0. ", "NV Read with RDE index (7), recordNum(0), offset(0).",
        "NV Read fail - 0, result - 1, error - 16", "RDE Read error", "Child process waiting for data"},
       "failed",
       "the modem does not give element 7 (0x7): error 16"},
      {{"msg Id is 0x20000bd, type is 0. ", "Set BSR timer result - 1", "Read 18 bytes from pipe"},
       "cut",
       "no answer in the log: the next one came"},
      {{"msg Id is 0x5001e, type is 1. ", "sys_info filter: sending requ"},
       "cut",
       "no answer in the log: the log ends"},
      {{"msg Id is 0x20000ff, type is 0. ", "0x20000ff not supported", "Child process waiting for data"},
       "not served",
       "id 0x020000FF"},
      {{"msg Id is 0x200001e, type is 0. ", "handleNvRsp: response hexdump for p_respHdr->msgId 0x200001e...",
        "HexDump: Data 0", "Child process waiting for data"},
       "answered",
       "[]"},
  };
  for (const Case& c : cases) {
    const auto events = Events("E RIL-KESEXT: Read 18 bytes from pipe\n" + Bench(c.lines));
    ASSERT_GE(events.size(), 2U) << c.told;
    EXPECT_EQ(events[0]["result"], c.result) << events[0];
    EXPECT_THAT(events[0].dump(), HasSubstr(c.told));
  }
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
  EXPECT_EQ(RunTool({"explain", "/no/such/log"}).status, 2);
}

TEST_F(Explain, EveryShippedScenarioGoesAsItSaysAndLogsNoUnknownLine) {
  const std::string process = temporary_ + "/process";
  const std::string log = temporary_ + "/log";
  std::ofstream(process) << "#!/bin/bash\nexec " KESEXT_BINARY " \"$@\" 2> >(exec tee -a " << log
                         << " >&2)\n";
  fs::permissions(process, fs::perms::all);
  const ToolResult played = RunTool({"--executable", process, "play", KESEXT_SCENARIOS});
  EXPECT_EQ(played.status, 0) << played.out << played.err;
  const ToolResult told = RunTool({"explain", log});
  EXPECT_THAT(told.out,
              AllOf(HasSubstr("nam write "), HasSubstr("tot-order set "), Not(HasSubstr("cut or not known")),
                    Not(HasSubstr(": code 0"))));  // which is no failure
  fs::remove(process);
  fs::remove(log);
}

TEST_F(Explain, NoLineOfTheTestsOfTheProcessIsUnknown) {
  constexpr std::string_view kTag = "RIL-KESEXT: ";
  for (const auto& file : fs::directory_iterator(KESEXT_GOLDEN)) {
    std::ifstream lines(file.path());
    for (std::string line; std::getline(lines, line);) {
      std::string_view text = line;
      // What begins otherwise is not logged: titles, answers, what the modem was sent, files.
      if (text.starts_with('#') || text.starts_with('>') || text.empty()) continue;
      if (text.starts_with("E ") || text.starts_with("D ")) text.remove_prefix(2);
      if (text.starts_with(kTag)) text.remove_prefix(kTag.size());
      tools::Places places;
      EXPECT_NE(tools::findLine(text, places), nullptr) << file.path() << ": " << text;
    }
  }
}

}  // namespace
}  // namespace kesext_test
