// Records back to their fields: what crosses the pipes, what a log has of it, and what is none.
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gmock/gmock.h>

#include <map>
#include <nlohmann/json.hpp>

#include "support/golden.h"
#include "support/sample_records.h"
#include "support/tool_test.h"
#include "tools/bench/modem_control.h"
#include "tools/bench/record_json.h"
#include "tools/bench/station.h"

namespace kesext_test {
namespace {

using handset::Bytes;
using nlohmann::ordered_json;
using ::testing::HasSubstr;
using tools::RecordKind;
using Decode = ToolTest;

std::vector<ordered_json> DecodeJson(std::vector<std::string> options, const std::string& input) {
  options.insert(options.begin(), {"decode", "--json"});
  return JsonLines(RunTool(options, input).out);
}

/// What stands in the pipes, as `send --json` shows it.
using Shown = std::map<RecordKind, std::vector<ordered_json>>;

ordered_json show(const tools::DecodedRecord& decoded, const Bytes& bytes) {
  EXPECT_FALSE(decoded.problem) << decoded.title << ": " << decoded.problem->text << "\n"
                                << handset::toHex(bytes);
  return tools::toJson(decoded, bytes);
}

void ExpectReadBack(const std::vector<std::string>& options, const std::vector<ordered_json>& records) {
  std::string lines;
  for (const ordered_json& record : records)
    lines += record["hex"].get<std::string>() + "\n";
  const std::vector<ordered_json> decoded = DecodeJson(options, lines);
  ASSERT_EQ(decoded.size(), records.size());
  for (size_t i = 0; i < records.size(); ++i) {
    EXPECT_EQ(decoded[i]["title"], records[i]["title"]);
    EXPECT_EQ(decoded[i]["fields"], records[i]["fields"]);
    EXPECT_FALSE(decoded[i].contains("problem"));
  }
}

TEST_F(Decode, WhatSendShowsAndTheProcessDumpsIsReadBack) {
  tools::Station station({.executable = KESEXT_BINARY});
  station.start();
  Shown shown;
  for (const tools::RequestRow& row : tools::requestTable()) {
    const Bytes request = SampleRequest(row);
    shown[RecordKind::request].push_back(show(tools::decodeRequest(request), request));
    const Bytes answer = station.ask(request).bytes;
    const ordered_json shown_answer = show(tools::decodeAnswer(request, answer), answer);
    if (row.bare_answer)
      ExpectReadBack({"--request", handset::toHex(request, "")}, {shown_answer});
    else
      shown[RecordKind::answer].push_back(shown_answer);
  }
  for (const char* indication :
       {"test", "pfp 1 2", "utility 0 0B01", "utility 2 0102", "utility 3 0102", "carrier-value 7",
        "lte-error 1 2 3", "coverage 0102", "tuner 810102", "data-plmn"}) {
    tools::modemOrder(tools::splitWords("indicate " + std::string(indication)))(station.modem());
    const Bytes message = station.process().nextUnsolicited().value_or(Bytes{});
    shown[RecordKind::unsolicited].push_back(show(tools::decodeUnsolicited(message), message));
  }
  for (const auto& [kind, records] : shown)
    ExpectReadBack({"--as", std::string(tools::nameOf(kind))}, records);
  EXPECT_EQ(station.end(), 0);

  // What the process says before each dump cannot change unnoticed.
  const std::string log = fmt::format("{}\n", fmt::join(station.process().logs(), "\n"));
  size_t dumps = 0;
  for (size_t at = 0; (at = log.find("HexDump: Data", at)) != std::string::npos; ++at)
    ++dumps;
  const std::vector<ordered_json> objects = DecodeJson({}, log);
  EXPECT_EQ(objects.size(), dumps);
  for (const ordered_json& object : objects)
    EXPECT_FALSE(object.contains("problem")) << object;
}

TEST_F(Decode, TheTableHasAllRequestsThatTheProcessServesAndNoOthers) {
  tools::Station station({.executable = KESEXT_BINARY});
  station.start();
  for (uint32_t id = 0x02000000; id <= 0x020000FF; ++id) {
    const Bytes answer = station.ask(cdmaRequest(id, Bytes(264))).bytes;
    const tools::RequestRow* row = tools::findRequest(tools::Family::cdma, id);
    const bool obsolete = row != nullptr && row->command.starts_with("obsolete");
    EXPECT_EQ(handset::getLe<uint32_t>(answer, 8) != 6, row != nullptr && !obsolete) << std::hex << id;
  }
  for (const uint32_t page : {0x030000U, 0x040000U, 0x050000U, 0x060000U, 0x0A0000U})
    for (uint32_t id = page; id < page + 0x100; ++id) {
      const Bytes answer = station.ask(genericRequest(id, Bytes(8))).bytes;
      const bool served = tools::findRequest(tools::Family::generic, id) != nullptr;
      EXPECT_EQ(!tools::isErrorReply(answer), served) << std::hex << id;
    }
  EXPECT_EQ(station.end(), 0);
}

TEST_F(Decode, OfALogTheDumpsAreReadByWhatTheLineBeforeSays) {
  const ToolResult result =
      RunTool({"decode", "--json"},
              "--------- beginning of main\r\n"
              "E RIL-KESEXT: Gen NV Write RdeId 4, rec num 0, offset 0, len 2. hexdump...\n"
              "E RIL-KESEXT: HexDump: Data 0700\r\n"
              "no tag at all\n"
              "E RIL-KESEXT: Dumping modem response for QMI_TUNER_REQ_V01...\n"
              "E RIL-KESEXT: HexDump=buffer overflow\n"
              "01-02 03:04:05.678  12  34 E RIL-KESEXT: HexDump: Data 07000002"
              "00000000 0500000000000000 00000000\n"
              "E RIL-KESEXT: HexDump: Data 07000002\n");
  EXPECT_EQ(result.status, 1);
  const std::vector<ordered_json> objects = JsonLines(result.out);
  ASSERT_EQ(objects.size(), 3U);
  EXPECT_EQ(objects[0]["kind"], "data");
  EXPECT_EQ(objects[0]["line"], 3);
  EXPECT_EQ(objects[0]["fields"][0]["hex"], "0700");
  EXPECT_EQ(objects[1]["kind"], "answer");
  EXPECT_EQ(objects[1]["line"], 7);
  EXPECT_FALSE(objects[1].contains("problem"));
  EXPECT_EQ(objects[2]["problem_offset"], 4);
}

/// Of an unsolicited carrier value and, with rows that repeat themselves, of a request.
TEST_F(Decode, RecordsAreReadAsToolsPrintThem) {
  for (const auto& [record, text] : GoldenCases("record_dumps")) {
    for (const std::string& input : {text, fmt::format("# twice\n{0}{0}", text)}) {
      const std::vector<ordered_json> records = DecodeJson({}, input);
      EXPECT_EQ(records.size(), input == text ? 1U : 2U) << input;
      for (const ordered_json& found : records) {
        EXPECT_EQ(handset::hex(found["hex"].get<std::string>()), handset::hex(record)) << text;
        EXPECT_FALSE(found.contains("problem")) << found["problem"];
      }
    }
    EXPECT_EQ(JsonLines(RunTool({"decode", "--json", text}).out).size(), 1U) << text;
  }
}

TEST_F(Decode, RecordsStandOnALineInSeveralWordsOrInBlocks) {
  const std::string plmn = "00 0A0006 00000004\n36017800\n";
  EXPECT_EQ(RunTool({"decode", "000A0006", "00000004", "3601 7800"}).status, 0);
  const std::vector<ordered_json> blocks = DecodeJson({"--blocks"}, "\n" + plmn + " \n\n" + plmn);
  ASSERT_EQ(blocks.size(), 2U);
  EXPECT_EQ(blocks[1]["line"], 6);
  EXPECT_EQ(blocks[1]["hex"], "000A00060000000436017800");
  EXPECT_EQ(DecodeJson({}, plmn).size(), 2U);
}

TEST_F(Decode, RecordsOfEveryKindAreReadUpToWhereTheyMakeNoSense) {
  ExpectGoldenRuns("decoded_records");
}

TEST_F(Decode, WhatIsNoRecordIsBoundedAndSaid) {
  const ToolResult endless = RunTool({"decode"}, std::string(200'000, '0'));
  EXPECT_EQ(endless.status, 1);
  EXPECT_THAT(endless.out, HasSubstr("131072  DOES NOT PARSE: in the text, more follows"));
  EXPECT_THAT(RunTool({"decode"}, "E TAG: nothing\n").err, HasSubstr("there is no record: 1 lines"));
}

}  // namespace
}  // namespace kesext_test
