// Requests by name: what is sent for them, and what is shown of them.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "handset/bytes.h"
#include "support/golden.h"
#include "support/schema.h"
#include "support/tool_test.h"
#include "tools/text/words.h"

namespace kesext_test {
namespace {

using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::Not;
using Send = ToolTest;

nlohmann::json sendJson(std::vector<std::string> words) {
  words.insert(words.begin(), {"send", "--json"});
  const ToolResult result = RunTool(words);
  EXPECT_EQ(result.status, 0) << result.err;
  return nlohmann::json::parse(result.out, nullptr, false);
}

TEST_F(Send, WhatScriptsGetIsTypedAndHasTheShapeOfTheSchema) {
  const auto fits = [](const char* shape, const std::vector<std::string>& words) {
    const std::string out = RunTool(words).out;
    EXPECT_FALSE(out.starts_with('\n'));
    nlohmann::json value = nlohmann::json::parse(out, nullptr, false);
    EXPECT_EQ(SchemaMisfit(shape, value), "") << words[0];
    return value;
  };
  const nlohmann::json sent =
      fits("send", {"send", "--json", "--log", "--trace", "--times", "--messages", "0.1", "--modem",
                    "indicate lte-error 1 2 3", "--modem", "silent pfp", "sid-nid", "read"});
  EXPECT_EQ(sent["answer"]["id"], 0x02000003);
  EXPECT_EQ(sent["answer"]["name"], "reads the SID/NID pairs");
  EXPECT_EQ(sent["answer"]["status_name"], "failure");
  EXPECT_EQ(sent["messages"][0]["fields"][6]["value"], 1);
  EXPECT_TRUE(sent["log"][0]["time"].is_number());
  const nlohmann::json named = fits("send", {"send", "--json", "plmn", "310", "120"})["answer"];
  EXPECT_EQ(named["fields"][3]["value"], "Testnet");
  EXPECT_EQ(named["status"], 0);
  const nlohmann::json refused = fits("send", {"send", "--json", "raw", "00050077", "00000000"});
  EXPECT_EQ(refused["request"]["name"], nullptr);
  EXPECT_EQ(refused["answer"]["status_name"], "not supported");
  const std::string crash = KESEXT_SCENARIOS "/modem_crash.json";
  fits("play", {"play", "--json", "--show", "--trace", "--times", crash});
  fits("playSeveral", {"play", "--json", crash, KESEXT_SCENARIOS "/tour/11_reports.json"});
  const nlohmann::json cut =
      fits("decode", {"decode", "--json", "BD000002", "04000000", "00000000", "000000000000", "1E00"});
  EXPECT_EQ(cut["problem_offset"], 20);
}

TEST_F(Send, ArgumentsStandInTheRequestByOrderOrName) {
  for (const auto& [words, bytes] : GoldenCases("requests_by_name")) {
    const nlohmann::json sent = sendJson(tools::splitWords(words));
    EXPECT_EQ(sent["request"]["hex"], handset::toHex(handset::hex(bytes), "")) << words;
    EXPECT_FALSE(sent["answer"]["hex"].get<std::string>().empty()) << words;
  }
}

TEST_F(Send, AModemThatRefusesSaysSoInTheMessagesOwnLayout) {
  const ToolResult result = RunTool({"shell"},
                                    "modem refuse rde-read 7\nmodem refuse bsr-timer-read 8\n"
                                    "modem refuse factory-reset 9\nmodem refuse profile-switch 10\n"
                                    "modem refuse pfp 11\nrde read 38\nbsr-timer get\nfactory-reset\n"
                                    "profile set 1\npfp\nlog since\n");
  for (const char* logged :
       {"NV Read fail - 0, result - 1, error - 7", "Get BSR timer failed (8)", "failed (0), result (0)",
        "kes_qmi_sprint_switch_proflie: failed.", "MyPfp: returned rc=0 result =1"})
    EXPECT_THAT(result.out, HasSubstr(logged));
}

TEST_F(Send, TheStatusCanBeTheAnswers) {
  EXPECT_EQ(RunTool({"send", "--check", "bsr-timer", "set", "4"}).status, 0);
  for (const std::string request : {"raw 00050077 00000000", "bsr-timer set 4", "sysinfo-filter 1"}) {
    std::vector<std::string> arguments =
        tools::splitWords("send --check --modem 'fail utility 3' " + request);
    arguments.insert(arguments.end() - 1, {"--modem", "refuse bsr-timer-write 3"});
    EXPECT_EQ(RunTool(arguments).status, 1) << request;
  }
}

TEST_F(Send, WhatTheProcessSaysAndReportsIsShownWithItsTime) {
  const std::vector<std::string> arguments{"--log",      "--times",
                                           "--messages", "0.2",
                                           "--modem",    "delay bsr-timer-read 2200",
                                           "--modem",    "indicate carrier-value 7",
                                           "bsr-timer",  "get"};
  std::vector<std::string> shown = arguments;
  shown.insert(shown.begin(), "send");
  const ToolResult result = RunTool(shown);
  EXPECT_EQ(result.err,
            "hookctl: still waiting, after 2 s: the modem has not answered bsr-timer-read; the "
            "process gives it 15 s\n");
  EXPECT_THAT(result.out, MatchesRegex(" +0\\.[0-9]{3}  request  .*\n"
                                       " +0\\.[0-9]{3}  message  .*: carrier value .*\n"
                                       " +2\\.[0-9]{3}  E RIL-KESEXT: Get BSR timer result - 300\n.*\n"
                                       " +2\\.[0-9]{3}  answer   .*\\(24 bytes, 22[0-9]{2}\\.[0-9] ms\\)\n"
                                       " {17}0  BC 00 00 02 .*"));
  const nlohmann::json all = sendJson(arguments);
  ASSERT_EQ(all["messages"].size(), 1U);
  EXPECT_LT(all["messages"][0]["time"], all["answer"]["time"]);
  EXPECT_THAT(all["log"].dump(), HasSubstr("E RIL-KESEXT: Read 18 bytes from pipe"));
  EXPECT_LT(all["request"]["time"], all["answer"]["time"]);
  EXPECT_GT(all["answer"]["took_ms"], 2200);
}

TEST_F(Send, WhatCrossesTheModemLinkIsTracedInWords) {
  const ToolResult result = RunTool({"shell", "--trace"},
                                    "modem fail utility 71\nmodem refuse bsr-timer-read 16\n"
                                    "modem delay rde-read 100\nsysinfo-filter 1\nrde write 10017 0102030400\n"
                                    "rde read 10017\nrde read 5\nbsr-timer get\nfactory-reset\ntrace off\n"
                                    "pfp\ntrace on\nmodem indicate pfp 1 2\nplmn 310 120\n");
  EXPECT_THAT(result.out, Not(HasSubstr("modem    pfp")));
  for (const char* traced :
       {"    modem    utility: type 5, len 1, req_data 01\n             refused with code 71 (",
        "(an unknown message) in 0.",
        "rde-write: rde_index 10017 (0x2721), record_num 0, offset 0, length 5, data_len 5, data 01 02",
        " 03 04 00\n             success in 0.", " ms: length 5, data_len 5, data 01 02 03 04 00\n",
        "failure in 10", " ms: error 16 (no such element)\n", "bsr-timer-read\n             failure in 0.",
        " ms: error 16, timer 0\n", "factory-reset: reset_flag 0xFF\n             success in 0.",
        "modem    indicates pfp: rat 1, tbl_idx 2\n",
        "short_name_length 7, short_name 54 65 73 74 6E 65 74\n"})
    EXPECT_THAT(result.out, HasSubstr(traced));
  const nlohmann::json trace = sendJson(
      {"--trace", "--modem", "silent rde-read", "--modem", "indicate test", "bsr-timer", "get"})["trace"];
  ASSERT_EQ(trace.size(), 2U);
  EXPECT_EQ(trace[0]["indication"], "test");
  EXPECT_EQ(trace[1]["message"], "bsr-timer-read");
  EXPECT_EQ(trace[1]["outcome"], "success");
  EXPECT_EQ(trace[1]["response"]["hex"], "01000000000000002C010000");
}

TEST_F(Send, AProcessThatEndsBadlyBehindItsAnswerIsNoSuccess) {
  const std::string executable = Write("process", "#!/bin/sh\n" KESEXT_BINARY " \"$@\"\nexit 3\n");
  const ToolResult late = RunTool({"--executable", executable, "send", "nam", "read"});
  EXPECT_EQ(late.status, 1);
  EXPECT_THAT(late.err, HasSubstr("the process ended badly: the process has ended with status 3"));
}

}  // namespace
}  // namespace kesext_test
