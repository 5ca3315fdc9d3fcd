// The call-processing and EVDO reports, from the modem's text to the parent's words.
#include <gmock/gmock.h>

#include <numeric>

#include "support/hook_process_test.h"

namespace kesext_test {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr uint32_t kCp = 0x02000011;
constexpr uint32_t kEvdo = 0x02000012;
constexpr uint16_t kEngineeringInfo = 0x0010;

class EngineeringDataTest : public ServingTest {
 protected:
  /// The modem answers with this text, of which it says that it has `length` characters.
  void ModemSays(std::string text, uint32_t length, uint32_t result = 0, uint32_t error = 0) {
    text.resize(1000, '\0');
    modem_.answer(Service::vendor, kEngineeringInfo,
                  concat(le32(result), le32(error), le32(length), handset::bytesOf(text)));
  }
  void ModemSays(const std::string& text) { ModemSays(text, static_cast<uint32_t>(text.size())); }

  /// The words of the report.
  std::vector<uint32_t> Report(uint32_t id) {
    const size_t count = id == kCp ? 78 : 36;
    const Bytes answer = Ask(cdmaRequest(id));
    EXPECT_EQ(answer.size(), 4 * count + 20);
    EXPECT_EQ(handset::getLe<uint32_t>(answer, 0), id);
    EXPECT_EQ(handset::getLe<uint32_t>(answer, 4), 4 * count);
    EXPECT_EQ(handset::getLe<uint32_t>(answer, 8), 0U);
    std::vector<uint32_t> words(count);
    for (size_t i = 0; i < count; ++i)
      words[i] = handset::getLe<uint32_t>(answer, 18 + 4 * i);
    return words;
  }
};

/// The bytes of a record count up, from a positive or a negative one, so each word tells where it comes from.
TEST_F(EngineeringDataTest, EveryFieldHasItsWordAndItsLine) {
  struct Case {
    uint32_t id;
    uint32_t kind;
    size_t size;
    uint8_t first;
    const char* golden;
  };
  for (const Case& c : {Case{kCp, 0, 164, 0x50, "cp_50"}, Case{kCp, 0, 164, 0xD0, "cp_D0"},
                        Case{kEvdo, 1, 52, 0x50, "evdo_50"}, Case{kEvdo, 1, 52, 0xD0, "evdo_D0"}}) {
    Bytes record(c.size);
    std::iota(record.begin(), record.end(), c.first);
    ModemSays(handset::toHex(record, ""));
    std::vector<std::string> lines;
    for (const uint32_t word : Report(c.id))
      lines.push_back("# word " + std::to_string(lines.size()) + ": " + handset::toHex(le32(word)));
    EXPECT_EQ(modem_.requests().back().body, le32(c.kind));
    for (const std::string& line : HandlerLogs())
      lines.push_back(line);
    ExpectGolden(lines, c.golden);
  }
}

TEST_F(EngineeringDataTest, AProtocolRevisionAboveFiveSetsItsFlag) {
  for (const uint8_t revision : {uint8_t{5}, uint8_t{6}}) {
    Bytes record(164);
    record[32] = revision;
    ModemSays(handset::toHex(record, ""));
    EXPECT_EQ(Report(kCp)[21], revision == 6 ? 1U : 0U);
  }
}

TEST_F(EngineeringDataTest, ShortOddAndMixedTextDecodesAsFarAsItGoes) {
  const std::pair<const char*, uint32_t> cases[] = {
      {"01000000", 1}, {"", 0}, {"aBCdfF", 0xFFCDAB}, {"012", 0x2001}, {"x1", 1}};
  for (const auto& [text, fer] : cases) {
    std::vector<uint32_t> words(78);
    words[0] = fer;
    ModemSays(text);
    EXPECT_EQ(Report(kCp), words) << text;
  }
}

TEST_F(EngineeringDataTest, AnInvalidCharacterRepeatsTheLastNibble) {
  ModemSays("01234g\xFF");
  EXPECT_EQ(Report(kCp)[0], 0x40442301U);
  const std::string invalid = "kesext_hook_sprint_hexstr_to_bin invalid char ";
  EXPECT_THAT(HandlerLogs(), Contains(E(invalid + "103 5")));
  EXPECT_THAT(HandlerLogs(), Contains(E(invalid + "255 6")));
  for (const char* text : {"1/", "1:", "1@", "1`", "1g", "1G"}) {
    ModemSays(text);
    EXPECT_EQ(Report(kCp)[0], 0x11U);
    EXPECT_THAT(HandlerLogs(), Contains(E(invalid + std::to_string(text[1]) + " 1")));
  }
}

TEST_F(EngineeringDataTest, TextBeyondTheRecordIsDumpedButNotDecoded) {
  const std::string text = handset::toHex(Bytes(164, 0x11), "") + std::string(672, 'z');
  ModemSays(text, 1000);
  EXPECT_EQ(Report(kCp)[77], 0x11111111U);
  EXPECT_THAT(HandlerLogs(), Not(Contains(HasSubstr("invalid char"))));
  EXPECT_THAT(HandlerLogs(), Contains(E("HexDump: Data " + handset::toHex(handset::bytesOf(text), ""))));
  for (const uint32_t length : {1001U, 0xFFFFFFFFU}) {
    ModemSays(text, length);
    EXPECT_EQ(Report(kEvdo)[35], 0x11U);
    EXPECT_THAT(HandlerLogs(), Contains(E("Successfully retrieved datalen " +
                                          std::to_string(static_cast<int32_t>(length)))));
    EXPECT_THAT(HandlerLogs(), Contains(E("HexDump: Data " + handset::toHex(handset::bytesOf(text), ""))));
  }
}

TEST_F(EngineeringDataTest, AModemFailureIsAReportOfZeros) {
  ModemSays("FF", 2, 3, 9);
  Record("refused", cdmaRequest(kCp), {"kes_qmi_sprint_get_engineering_info", "HexDump"});
  modem_.fail(Service::vendor, kEngineeringInfo, 77);
  Record("not sent", cdmaRequest(kEvdo), {"kes_qmi_sprint_get_engineering_info", "HexDump"});
  ExpectGolden(record_, "engineering_failures");
}

}  // namespace
}  // namespace kesext_test
