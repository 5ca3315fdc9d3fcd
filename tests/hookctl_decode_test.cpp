// Records back to their fields: what crosses the pipes, what a log has of it, and what is none.
#include <fmt/format.h>
#include <gmock/gmock.h>

#include <map>
#include <nlohmann/json.hpp>
#include <sstream>

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

std::vector<ordered_json> Objects(const ToolResult& result) {
  std::vector<ordered_json> objects;
  std::istringstream lines(result.out);
  for (std::string line; std::getline(lines, line);)
    objects.push_back(ordered_json::parse(line, nullptr, false));
  return objects;
}

std::vector<ordered_json> DecodeJson(std::vector<std::string> options, const std::string& input) {
  options.insert(options.begin(), {"decode", "--json"});
  return Objects(RunTool(options, input));
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

TEST_F(Decode, WhatSendShowsIsReadBackToTheSameFields) {
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
  const std::vector<ordered_json> objects = Objects(result);
  ASSERT_EQ(objects.size(), 3U);
  EXPECT_EQ(objects[0]["kind"], "data");
  EXPECT_EQ(objects[0]["line"], 3);
  EXPECT_EQ(objects[0]["fields"][0]["hex"], "0700");
  EXPECT_EQ(objects[1]["kind"], "answer");
  EXPECT_EQ(objects[1]["line"], 7);
  EXPECT_FALSE(objects[1].contains("problem"));
  EXPECT_EQ(objects[2]["problem_offset"], 4);
}

/// The process's own lines, so that what it says before each dump cannot change unnoticed.
TEST_F(Decode, EveryDumpInTheProcessesLogIsAnnounced) {
  tools::Station station({.executable = KESEXT_BINARY});
  station.start();
  for (const tools::RequestRow& row : tools::requestTable())
    station.ask(SampleRequest(row));
  EXPECT_EQ(station.end(), 0);
  std::string log;
  size_t dumps = 0;
  for (const std::string& line : station.process().logs()) {
    log += line + "\n";
    dumps += line.find("HexDump: Data") != std::string::npos ? 1 : 0;
  }
  const std::vector<ordered_json> objects = DecodeJson({}, log);
  EXPECT_EQ(objects.size(), dumps);
  for (const ordered_json& object : objects)
    EXPECT_FALSE(object.contains("problem")) << object;
}

/// Of an unsolicited carrier value and, with rows that repeat themselves, of a request.
TEST_F(Decode, RecordsAreReadAsToolsPrintThem) {
  const std::string value = "0000000014000000B001000204000000000000000000000000000700000000 00";
  const std::string utility = "1E0000020801000000000000" + std::string(540, '0');
  const auto plain = [](std::string digits) {
    std::erase(digits, ' ');
    return digits;
  };
  struct Case {
    const char* text;
    const std::string& record;
  };
  const Case cases[] = {
      // hexdump -C, whose characters are digits in part
      {"00000000  00 00 00 00 14 00 00 00  b0 01 00 02 04 00 00 00  |....ab cd ef 12.|\n"
       "00000010  00 00 00 00 00 00 00 00  00 00 07 00 00 00 00 00  |................|\n00000020\n",
       value},
      // xxd, xxd -g1 -c12, xxd -p and od -An -t x1
      {"00000000: 0000 0000 1400 0000 b001 0002 0400 0000  ab cd ..........\n"
       "00000010: 0000 0000 0000 0000 0000 0700 0000 0000  ................\n",
       value},
      {"00000000: 00 00 00 00 14 00 00 00 b0 01 00 02  00 00 ..#. |..\n"
       "0000000c: 04 00 00 00 00 00 00 00 00 00 00 00  ............\n"
       "00000018: 00 00 07 00 00 00 00 00              ........\n",
       value},
      {"0000000014000000b0010002040000000000000000000000000007000000\n0000\n", value},
      {" 00 00 00 00 14 00 00 00 b0 01 00 02 04 00 00 00\n 00 00 00 00 00 00 00 00 00 00 07 00 00 00 00 00\n",
       value},
      // od -A x -t x1, od -t x1, od -A d -t x1z, od -x
      {"000000 00 00 00 00 14 00 00 00 b0 01 00 02 04 00 00 00\n"
       "000010 00 00 00 00 00 00 00 00 00 00 07 00 00 00 00 00\n000020\n",
       value},
      {"0000000 00 00 00 00 14 00 00 00 b0 01 00 02 04 00 00 00\n"
       "0000020 00 00 00 00 00 00 00 00 00 00 07 00 00 00 00 00\n0000040\n",
       value},
      {"0000000 00 00 00 00 14 00 00 00 b0 01 00 02 04 00 00 00  >....a b.........<\n"
       "0000016 00 00 00 00 00 00 00 00 00 00 07 00 00 00 00 00  >................<\n0000032\n",
       value},
      {"0000000 0000 0000 0014 0000 01b0 0200 0004 0000\n0000020 0000 0000 0000 0000 0000 0007 0000 0000\n",
       value},
      // other tools' columns, source text and digits in a row
      {"0000   00 00 00 00 14 00 00 00 b0 01 00 02 04 00 00 00   ....ab..........\n"
       "0010   00 00 00 00 00 00 00 00 00 00 07 00 00 00 00 00   ................\n",
       value},
      {"0x00, 0x00, 0x00, 0x00, 0x14, 0x00, 0x00, 0x00, 0xB0, 0x01, 0x00, 0x02,  # a value\n"
       "  0x04, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,\n"
       "  0x00,0x00,0x07,0x00,0x00,0x00,0x00,0x00\n",
       value},
      {"00:00:00:00:14:00:00:00:b0:01:00:02:04:00:00:00:00:00:00:00:00:00:00:00:00:00:07:00:00:00:00:00\n",
       value},
      {"0000  00 00 00 00 14 00 00 00  b0 01 00 02 04 00 00 00   ........ ..ab cd.\n"
       "0010  00 00 00 00 00 00 00 00  00 00 07 00 00 00 00 00   ........ ........\n",
       value},
      {"unsigned char answer[] = {\n"
       "  0, 0, 0, 0, 0x14, 0x0, 0x0, 0x0, 0xb0, 0x01, 0x00, 0x02, 0x04, 0, 0, 0, 0, 0, 0, 0,\n"
       "  0, 0, 0, 0, 0, 0, 7, 0, 0, 0, 0, 0\n};\nunsigned int answer_len = 32;\n",
       value},
      {"00-00-00-00-14-00-00-00-B0-01-00-02-04-00-00-00-00-00-00-00-00-00-00-00-00-00-07-00-00-00-00-00\n",
       value},
      {"\"\\x00\\x00\\x00\\x00\\x14\\x00\\x00\\x00\\xb0\\x01\\x00\\x02\\x04\\x00\\x00\\x00\\x00\\x00\\x00"
       "\\x00\\x00\\x00\\x00\\x00\\x00\\x00\\x07\\x00\\x00\\x00\\x00\\x00\";\n",
       value},
      // rows that are the same
      {"00000000  1e 00 00 02 08 01 00 00  00 00 00 00 00 00 00 00  |................|\n"
       "00000010  00 00 00 00 00 00 00 00  00 00 00 00 00 00 00 00  |................|\n*\n"
       "00000110  00 00 00 00 00 00 00 00  00 00                    |..........|\n0000011a\n",
       utility},
      {"0000000 1e 00 00 02 08 01 00 00 00 00 00 00 00 00 00 00\n"
       "0000020 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00\n*\n"
       "0000420 00 00 00 00 00 00 00 00 00 00\n0000432\n",
       utility},
  };
  for (const Case& c : cases) {
    const std::string text = c.text;
    for (const std::string& input : {text, fmt::format("# twice\n{0}{0}", text)}) {
      const std::vector<ordered_json> records = DecodeJson({}, input);
      EXPECT_EQ(records.size(), input == text ? 1U : 2U) << input;
      for (const ordered_json& record : records) {
        EXPECT_EQ(record["hex"], plain(c.record)) << text;
        EXPECT_FALSE(record.contains("problem")) << record["problem"];
      }
    }
    EXPECT_EQ(Objects(RunTool({"decode", "--json", text})).size(), 1U) << text;
  }
}

TEST_F(Decode, ALogMayHaveAnyForm) {
  const std::string dump = "HexDump: Data BC0000020400000000000000000000000000070000000000";
  for (const std::string& line : std::vector<std::string>{
           "E/RIL-KESEXT(   77): " + dump, "03-14 09:30:00.100   77   78 E RIL-KESEXT: " + dump,
           "03-14 09:30:00.100 E/RIL-KESEXT(   77): " + dump,
           "[ 03-14 09:30:00.100    77:   78 E/RIL-KESEXT ]\n" + dump,
           "[ 03-14 09:30:00.100    12:   12 I/Other ]\nabcd\n\n[ 03-14 09:30:00.100    77:   78 "
           "E/RIL-KESEXT "
           "]\n" +
               dump,
           "\x1b[38;5;196m03-14 09:30:00.100  77  78 E RIL-KESEXT: " + dump + "\x1b[0m",
           "03-14 09:30:00.100  77  78 I Other: 0102\n" + dump}) {
    const std::vector<ordered_json> records = DecodeJson({}, line + "\n");
    ASSERT_EQ(records.size(), 1U) << line;
    EXPECT_EQ(records[0]["fields"][4]["value"], 7) << line;
    EXPECT_FALSE(records[0].contains("problem")) << line;
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
  EXPECT_THAT(RunTool({"decode", "0006000100000000"}).out, HasSubstr("it can be answer as well"));
}

TEST_F(Decode, WhatIsNoRecordIsSaid) {
  struct Case {
    std::vector<std::string> words;
    std::string input;
    int status;
    const char* said;
  };
  const Case cases[] = {
      {{"00 0G"}, "", 1, "    4  DOES NOT PARSE: in the text, \"G\" is no hexadecimal digit"},
      {{"000"}, "", 1, "    3  DOES NOT PARSE: in the text, the last byte lacks its second digit"},
      {{}, std::string(200'000, '0'), 1, "131072  DOES NOT PARSE: in the text, more follows"},
      {{"BD0000020400000000000000000000000000"}, "", 1, "   18  DOES NOT PARSE: the record ends here"},
      {{"B60000020000000000000000000000000000"}, "", 0, "resets to what the factory set"},
      {{"FF0000020000000000000000000000000000"}, "", 0, "CDMA request 0x020000FF, an unknown id"},
      {{}, "", 1, "there is no record: 0 lines"},
      {{}, "E TAG: nothing\n", 1, "there is no record: 1 lines"},
      {{"--request", "data-plnm", "00"}, "", 2, "did you mean data-plmn?"},
      {{"--request", "data-plmn", "--as", "request", "00"}, "", 2, "leave out --as or say --as answer"},
      {{"--as", "reply", "00"}, "", 2, "reply"},
  };
  for (const Case& c : cases) {
    std::vector<std::string> words = c.words;
    words.insert(words.begin(), "decode");
    const ToolResult result = RunTool(words, c.input);
    EXPECT_EQ(result.status, c.status) << c.said;
    EXPECT_THAT(result.out + result.err, HasSubstr(c.said));
  }
}

}  // namespace
}  // namespace kesext_test
