// Records of every row of the tables, between words and the real process.
#include <gmock/gmock.h>

#include <map>
#include <nlohmann/json.hpp>
#include <sstream>

#include "handset/message_table.h"
#include "support/sample_records.h"
#include "support/tool_test.h"
#include "tools/bench/modem_control.h"
#include "tools/bench/question.h"
#include "tools/bench/record_json.h"
#include "tools/bench/station.h"

namespace kesext_test {
namespace {

using handset::Bytes;
using nlohmann::ordered_json;
using tools::RecordKind;
using Decode = ToolTest;

/// What stands in the pipes, as `send --json` shows it.
using Shown = std::map<RecordKind, std::vector<ordered_json>>;

ordered_json show(const tools::DecodedRecord& decoded, const Bytes& bytes) {
  EXPECT_FALSE(decoded.problem) << decoded.title << ": " << decoded.problem->text << "\n"
                                << handset::toHex(bytes);
  return tools::toJson(decoded, bytes);
}

void ExpectReadBack(const std::string& option, const std::string& value,
                    const std::vector<ordered_json>& records) {
  std::string lines;
  for (const ordered_json& record : records)
    lines += record["hex"].get<std::string>() + "\n";
  const auto decoded = JsonLines(RunTool({"decode", "--json", option, value}, lines).out);
  ASSERT_EQ(decoded.size(), records.size());
  for (size_t i = 0; i < records.size(); ++i) {
    EXPECT_EQ(decoded[i]["title"], records[i]["title"]);
    EXPECT_EQ(decoded[i]["fields"], records[i]["fields"]);
    EXPECT_FALSE(decoded[i].contains("problem"));
  }
}

TEST_F(Decode, WhatSendShowsIsReadBack) {
  tools::Station station({.executable = KESEXT_BINARY});
  station.start();
  Shown shown;
  for (const tools::RequestRow& row : tools::requestTable()) {
    const Bytes request = SampleRequest(row);
    shown[RecordKind::request].push_back(show(tools::decodeRequest(request), request));
    const Bytes answer = station.ask(request).bytes;
    const ordered_json shown_answer = show(tools::decodeAnswer(request, answer), answer);
    if (row.bare_answer)
      ExpectReadBack("--request", handset::toHex(request, ""), {shown_answer});
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
    ExpectReadBack("--as", std::string(tools::nameOf(kind)), records);
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

TEST(Question, IsWrittenInTheShortestWordsThatItIsReadFrom) {
  std::istringstream lines(FileText(KESEXT_GOLDEN "/questions.txt"));
  size_t count = 0;
  for (std::string line; std::getline(lines, line); ++count) {
    const tools::Question question = tools::readQuestion(line);
    const handset::Received asked{.service = question.row->service,
                                  .id = question.row->id,
                                  .body = question.body.value_or(handset::Bytes{})};
    EXPECT_EQ(tools::writeQuestion(asked), line);
    EXPECT_THAT(tools::compareQuestion(question, asked), ::testing::IsEmpty());
  }
  EXPECT_EQ(count, 17);
}

}  // namespace
}  // namespace kesext_test
