// What decoding makes of records that are whole, cut, wrong or nothing at all.
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
using handset::concat;
using handset::hex;
using ::testing::HasSubstr;
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

TEST(RecordDecoding, TheFirstPlaceThatMakesNoSenseIsTold) {
  struct Case {
    tools::RecordKind kind;
    Bytes record;
    size_t offset;
    const char* text;
  };
  const Bytes word = hex("01020304");
  const Case cases[] = {
      {request, hex("070000"), 3, "none has less than 8 bytes"},
      {request, hex("0700000200000000 0000"), 10, "ends here, inside status"},
      {request, cdmaRequest(0x020000BD, word, 9), 22, "msgLen says 9 bytes of payload, 4 are there"},
      {request, cdmaRequest(0x020000BD, concat(word, Bytes(3)), 4), 22, "should end here; msgLen says 4"},
      {request, cdmaRequest(0x020000BD, word, -1), 18, "msgLen says -1"},
      {request, cdmaRequest(0x020000BD, hex("0102")), 20, "the payload ends here, inside timer"},
      {request, cdmaRequest(0x020000BD, Bytes(5)), 22, "should end here, behind timer"},
      {request, cdmaRequest(0x02000015, concat(Bytes(12), hex("0500000001"))), 35, "length says 5 bytes, 1"},
      {request, cdmaRequest(0x02000015, concat(Bytes(12), hex("010000000102"))), 35, "data should end here"},
      {request, genericRequest(0x03050019), 0, "no record that parses begins"},
      {request, genericReply(0x0A0006, word), 12, "msgLen says 67108864"},
      {answer, concat(cdmaResponse(0x020000BC, 0, word), Bytes(1)), 24, "should end here; msgLen says 4"},
      {answer, concat(cdmaRequest(0x020000BC, word), hex("0001")), 23, "zeros belong here"},
      {answer, cdmaResponse(0x02000007, 0, hex("01000200")), 20, "zeros belong here"},
      {answer, genericReply(0x05001E, {}), 8, "the payload ends here, before status"},
      {unsolicited, concat(hex("02000000"), Bytes(40)), 0, "hookType is 0 or 1"},
      {unsolicited, concat(Bytes(8), cdmaResponse(1111, 0, Bytes(22))), 4, "headerSize is 20"},
      {unsolicited, concat(hex("0000000014000000"), cdmaResponse(1111, 5, Bytes(22))), 16, "zeros belong"},
      {unsolicited, hex("0100000008000000 0002000600000000 00000000"), 20, "ends here, inside end"},
  };
  for (const Case& c : cases) {
    const DecodedRecord decoded = decodeAs(c.kind, c.record);
    ASSERT_TRUE(decoded.problem) << c.text;
    EXPECT_EQ(decoded.problem->offset, c.offset) << decoded.problem->text;
    EXPECT_THAT(decoded.problem->text, HasSubstr(c.text));
  }
}

TEST(RecordDecoding, KindsAreToldApartByIdsLengthsAndZeros) {
  struct Case {
    Bytes record;
    tools::RecordKind kind;
    std::optional<tools::RecordKind> other;
  };
  const Case cases[] = {
      {cdmaRequest(0x020000BD, Bytes(4)), request, std::nullopt},
      {cdmaResponse(0x020000BC, 0, Bytes(4)), answer, std::nullopt},
      {genericRequest(0x0A0006, Bytes(4)), request, std::nullopt},
      {genericReply(0x0A0006, Bytes(4)), answer, std::nullopt},
      {genericErrorReply(0x03050019), answer, std::nullopt},
      {genericErrorReply(0x07000002), answer, std::nullopt},
      {cdmaUnsolicited(1111, Bytes(22)), unsolicited, std::nullopt},
      {genericUnsolicited(1, 0x040003, Bytes(32)), unsolicited, std::nullopt},
      {genericRequest(0x060001), request, answer},
      {cdmaRequest(0x02000003, Bytes(1), 4), request, answer},
      {hex("0300000204000000050000000000"), answer, request},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(guessKind(c.record).kind, c.kind) << handset::toHex(c.record);
    EXPECT_EQ(guessKind(c.record).other, c.other) << handset::toHex(c.record);
  }
}

TEST(RecordDecoding, AnAnswerIsReadByWhatItIsMadeOf) {
  const auto last = [](const DecodedRecord& decoded, size_t from_end) {
    const tools::DecodedField& field = decoded.fields[decoded.fields.size() - from_end];
    return field.name + " " + field.value;
  };
  // A failed request whose payload is the answer's all the same, one whose payload is not, and one that says
  // nothing but its status.
  EXPECT_EQ(last(decodeAs(answer, cdmaResponse(0x02000003, 5, Bytes(160))), 2), "pairs zeros");
  EXPECT_EQ(last(decodeAs(answer, cdmaResponse(0x02000003, 5, Bytes(3))), 2), "payload 3 bytes");
  EXPECT_EQ(last(decodeAs(answer, genericReply(0x0A0006, hex("05"))), 1), "status 5 (failure)");
  EXPECT_THAT(decodeAs(answer, cdmaResponse(0x020000FE, 6)).title, HasSubstr("unknown id"));
  const DecodedRecord bare = decodeAs(answer, hex("0102"), genericRequest(0x060001));
  EXPECT_EQ(last(bare, 1), "record 2 bytes");
  EXPECT_FALSE(bare.problem);
  const DecodedRecord foreign =
      decodeAs(answer, cdmaResponse(0x020000BC, 0, Bytes(4)), cdmaRequest(0x020000BD));
  EXPECT_EQ(foreign.problem->offset, 0U);
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
