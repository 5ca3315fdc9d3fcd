// What decoding makes of records that are whole, cut or any bytes, and of values.
#include <gmock/gmock.h>

#include <algorithm>
#include <random>

#include "support/sample_records.h"
#include "tools/records/engineering_screen.h"
#include "tools/records/field_value.h"

namespace kesext_test {
namespace {

using handset::Bytes;
using handset::ByteView;
using handset::hex;
using tools::decodeAs;
using tools::DecodedRecord;
using tools::FieldKind;
using tools::guessKind;
using enum tools::RecordKind;

/// The fields one after the other are the record, and whatever it is has a name.
void ExpectWhole(const DecodedRecord& decoded, ByteView record) {
  size_t at = 0;
  for (const tools::DecodedField& field : decoded.fields) {
    ASSERT_EQ(field.offset, at) << handset::toHex(record);
    at += field.size;
  }
  ASSERT_EQ(at, record.size()) << handset::toHex(record);
  ASSERT_NE(decoded.title, "");
}

TEST(RecordDecoding, EveryRecordParsesAndNoneThatIsCutDoes) {
  for (const SampleRecord& record : SampleRecords()) {
    const DecodedRecord whole = decodeAs(record.kind, record.bytes);
    EXPECT_FALSE(whole.problem) << whole.title << ": " << whole.problem->text;
    const tools::KindGuess guess = guessKind(record.bytes);
    EXPECT_TRUE(guess.kind == record.kind || guess.other == record.kind) << whole.title;
    for (size_t size = 0; size < record.bytes.size(); ++size) {
      const ByteView cut = ByteView(record.bytes).first(size);
      const DecodedRecord decoded = decodeAs(record.kind, cut);
      ExpectWhole(decoded, cut);
      ASSERT_TRUE(decoded.problem) << whole.title << " of " << size << " bytes";
      ASSERT_LE(decoded.problem->offset, size);
      ExpectWhole(decodeAs(guessKind(cut).kind, cut), cut);
    }
  }
}

TEST(RecordDecoding, AnyBytesAreReadToTheirEnd) {
  std::mt19937 random(1);  // NOLINT(cert-msc51-cpp): the same bytes in every run
  const std::vector<SampleRecord> records = SampleRecords();
  for (int round = 0; round < 4000; ++round) {
    Bytes bytes = records[random() % records.size()].bytes;
    if (round % 4 == 0) bytes.assign(random() % 80, 0);
    for (size_t changes = 1 + random() % (round % 4 == 0 ? 80 : 4); changes > 0 && !bytes.empty(); --changes)
      bytes[random() % std::min<size_t>(bytes.size(), 40)] = static_cast<uint8_t>(random());
    for (const tools::RecordKind kind : {request, answer, unsolicited, guessKind(bytes).kind})
      ExpectWhole(decodeAs(kind, bytes), bytes);
  }
}

TEST(RecordDecoding, EveryFieldOfTheReportsIsOnTheScreens) {
  const auto report = [](uint32_t id) {
    const tools::RequestRow& row = *tools::findRequest(tools::Family::cdma, id);
    return tools::EngineeringReport{decodeAs(answer, SampleAnswer(row)), ""};
  };
  const tools::EngineeringReport reports[] = {report(0x02000011), report(0x02000012)};
  for (const bool aligned : {false, true}) {
    std::string screen;
    for (const std::string& row : tools::engineeringRows(reports[0], reports[1], 60, aligned)) {
      EXPECT_LE(row.size(), 60U);
      screen += row + "\n";
    }
    for (const tools::EngineeringReport& shown : reports)
      for (size_t i = 4; i + 1 < shown.answer.fields.size(); ++i) {
        const std::string& name = shown.answer.fields[i].name;
        EXPECT_TRUE(name == "reserved" || screen.find(name + ' ') != std::string::npos) << name;
      }
  }
}

TEST(RecordDecoding, ValuesShowWhatStandsInTheBytes) {
  struct Case {
    FieldKind kind;
    const char* bytes;
    const char* value;
  };
  const Case cases[] = {
      {FieldKind::signedNumber, "FEFF", "-2"},
      {FieldKind::text, "61225C1B6200", R"("a\"\\\x1Bb")"},
      {FieldKind::text, "61006200", "\"a\", and other bytes behind its zero"},
      {FieldKind::zeroEndedText, "6162", "\"ab\" without a zero at its end"},
      {FieldKind::utf8, "C3A4E282ACF09F9880", "\"\u00e4\u20ac\U0001F600\""},
      {FieldKind::utf8, "C31BC080EDA080C29B41", R"("\xC3\x1B\xC0\x80\xED\xA0\x80\xC2\x9BA")"},
      {FieldKind::code, "310032333435", R"("1\x002345")"},
      {FieldKind::words, "010000000000000002000000", "1, 0, 2"},
      {FieldKind::words, "01000000000000000000", "1, zeros, 2 bytes"},
  };
  for (const Case& c : cases)
    EXPECT_EQ(tools::valueOf(c.kind, hex(c.bytes)), c.value);
}

}  // namespace
}  // namespace kesext_test
