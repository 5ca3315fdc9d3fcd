// NAM programming, SID/NID pairs and protocol revision, from the parent to the modem's elements and back.
#include <gmock/gmock.h>

#include <algorithm>

#include "nam/nam_info.h"
#include "support/hook_process_test.h"

namespace kesext_test {
namespace {

using ::testing::Contains;

constexpr uint32_t kGet = 0x02000001;
constexpr uint32_t kSet = 0x02000002;

/// The items in the order of their steps.
constexpr uint32_t kItems[] = {8, 25, 26, 21, 22, 15, 36, 16, 17, 29, 31, 30, 20, 18, 2};

template <size_t Size>
void put(uint8_t (&field)[Size], std::string_view text) {
  std::fill(std::begin(field), std::end(field), uint8_t{0});
  std::copy_n(text.begin(), std::min(text.size(), Size), field);
}

/// Well formed in every field, with the code 000000.
kesext::NamInfo exampleNam() {
  const auto put = [](auto& field, std::string_view text) { std::copy(text.begin(), text.end(), field); };
  kesext::NamInfo info{};
  put(info.mdn, "5551234560");
  put(info.min, "6195551234");
  info.homeSid = 4183;
  info.homeNid = 65535;
  info.scm = 0xAA;
  put(info.imsi11_12, "12");
  put(info.mcc, "310");
  info.pChannelA = 283;
  info.pChannelB = 384;
  info.sChannelA = 691;
  info.sChannelB = 777;
  info.vocoder = 3;
  put(info.imsiT, "310120123456789");
  info.accessOverloadClass = 4;
  put(info.newSpc, "000000");
  return info;
}

class NamProgrammingTest : public ServingTest {
 protected:
  static Bytes WriteRequest(const kesext::NamInfo& info, std::string_view spc = "000000") {
    Bytes request = cdmaRequest(kSet, handset::recordBytes(info));
    std::copy(spc.begin(), spc.end(), request.begin() + 12);
    return request;
  }
  /// Writes the record and gives the status; the code goes back.
  uint32_t Write(const kesext::NamInfo& info) {
    const Bytes answer = Ask(WriteRequest(info));
    EXPECT_EQ(answer.size(), 20U);
    const auto status = handset::getLe<uint32_t>(answer, 8);
    Bytes expected = cdmaResponse(kSet, status);
    std::fill_n(expected.begin() + 12, 6, uint8_t{'0'});
    EXPECT_EQ(answer, expected);
    return status;
  }
  /// The handler's own lines: without those of the element accesses.
  std::vector<std::string> NamLogs() {
    std::vector<std::string> lines = HandlerLogs();
    std::erase_if(lines, [](const std::string& line) {
      for (const char* access : {"NV Read", "NV Write", "HexDump: ", "kes_qmi_sprint_rde_write: ",
                                 "READ NV VALUE", "WRITE NV VALUE"})
        if (line.find(access) != std::string::npos) return true;
      return false;
    });
    return lines;
  }
  /// Makes every element exist, so that reads succeed.
  void FillElements() {
    for (const uint32_t item : kItems)
      modem_.setElement(item, pattern(100, 0x90));
  }
  /// The modem refuses reads, or writes, of these elements.
  void ModemRefuses(uint16_t message, const std::vector<uint32_t>& items) {
    modem_.handle(Service::vendor, message, [this, message, items](handset::ByteView body) {
      if (std::find(items.begin(), items.end(), handset::getLe<uint32_t>(body, 0)) != items.end())
        return handset::Reply{0, concat(le32(1), le32(9), Bytes(message == kRdeReadId ? 532 : 0))};
      return modem_.ownReply(Service::vendor, message, body);
    });
  }
};

TEST_F(NamProgrammingTest, AWriteSetsItsBytesAndKeepsTheOthers) {
  FillElements();
  const Bytes old = pattern(100, 0x90);
  const auto kept = [&old](size_t from, size_t to) {
    return Bytes(old.begin() + static_cast<ptrdiff_t>(from), old.begin() + static_cast<ptrdiff_t>(to));
  };
  EXPECT_EQ(Write(exampleNam()), 0U);
  const std::pair<uint32_t, Bytes> expected[] = {
      {8, hex("00 0A 05 05 05 01 02 03 04 05 06 0A 00 00 00 00 00")},
      {25, concat(hex("00"), kept(1, 5), hex("7B 04 6F 00"))},
      {26, concat(hex("00"), kept(1, 3), hex("FC 01"))},
      {21, concat(hex("00"), kept(1, 5), le32(3840678))},
      {22, concat(hex("00"), kept(1, 3), handset::le16(901))},
      {15, concat(hex("00 57 10 FF FF"), kept(5, 81))},
      {36, hex("AA")},
      {16, hex("00 01")},
      {17, hex("00 D1 00")},
      {29, hex("00 1B 01 80 01")},
      {31, hex("00 B3 02 09 03")},
      {30, concat(kept(0, 4), hex("02 00"), kept(6, 8))},
      {20, hex("00 D1 00")},
      {18, hex("00 01")},
      {2, concat(hex("00"), kept(1, 2), hex("04"))},
  };
  for (const auto& [item, record] : expected)
    EXPECT_EQ(modem_.element(item), concat(record, kept(record.size(), 100))) << item << " in its own length";
}

TEST_F(NamProgrammingTest, WhatWasWrittenIsReadBackAndEveryAccessAndValueLogged) {
  kesext::NamInfo info = exampleNam();
  put(info.mdn, "50");
  EXPECT_EQ(Write(info), 0U);
  EXPECT_EQ(modem_.requests().size(), 22U);
  ExpectGolden(HandlerLogs(), "nam_write");
  put(info.mccT, "310");
  put(info.newSpc, "");
  EXPECT_EQ(Ask(cdmaRequest(kGet)), cdmaResponse(kGet, 0, handset::recordBytes(info)));
  ExpectGolden(HandlerLogs(), "nam_read");
}

TEST_F(NamProgrammingTest, ValuesAreCutAndOddOnesConverted) {
  kesext::NamInfo info = exampleNam();
  put(info.mdn, "1234567890123456");
  info.homeSid = 0x12345;
  info.homeNid = 0x2FFFF;
  info.pChannelA = 0x1F001;
  info.pChannelB = 0x1F002;
  info.sChannelA = 0x1F003;
  info.sChannelB = 0x1F004;
  info.scm = 0x1FF;
  info.vocoder = 7;
  info.accessOverloadClass = 0xABCD;
  Record("cut", WriteRequest(info), {"SET NAM ", "HexDump", "mdn"});
  Record("read back", cdmaRequest(kGet), {"GET NAM VALUE"});
  put(info.mdn, "");
  Record("no number", WriteRequest(info), {"SET NAM ", "HexDump", "mdn"});
  put(info.mdn, "\xFF");
  Record("no digit", WriteRequest(info), {"SET NAM ", "HexDump", "mdn"});
  ExpectGolden(record_, "nam_odd_values");
}

TEST_F(NamProgrammingTest, AnotherCodeOfDigitsIsChangedAfterTheItems) {
  kesext::NamInfo info = exampleNam();
  put(info.newSpc, "000001");
  const std::vector<std::string> only = {"> dms",         "Spc",      "write_spc",
                                         "Write success", "COMPLETE", "ERROR FOUND"};
  Record("changed", WriteRequest(info), only);
  modem_.answer(Service::dms, 0x0052, concat(le32(1), le32(12)));
  Record("refused", WriteRequest(info), only);
  modem_.fail(Service::dms, 0x0052, 77);
  Record("not sent", WriteRequest(info), only);
  ModemRefuses(kRdeWriteId, {2});
  Record("sent all the same after an item that was refused", WriteRequest(info), only);
  ExpectGolden(record_, "nam_code");
}

TEST_F(NamProgrammingTest, AWriteTakesTheWholeRecordWhateverItsLength) {
  EXPECT_EQ(Ask(cdmaRequest(kSet, handset::recordBytes(exampleNam()), 1)), cdmaResponse(kSet, 0));
  EXPECT_EQ(modem_.element(2), hex("00 00 04"));
  Bytes cut = cdmaRequest(kSet, handset::recordBytes(exampleNam()));
  cut.resize(18 + 20);
  EXPECT_EQ(Ask(cut), cdmaResponse(kSet, 0));
  EXPECT_EQ(modem_.element(2), hex("00 00 00"));
  // The digits after "6195" are zero bytes: groups of 207, and a thousands code below zero.
  EXPECT_THAT(NamLogs(), Contains(E("kesext_hook_sprint_set_nam_info:  SET NAM MIN1 4294924737 MIN2 508 ")));
}

TEST_F(NamProgrammingTest, AnswersWithAFreshHeaderCarryNoCode) {
  FillElements();
  modem_.setElement(28, hex("06"));
  for (const bool fails : {false, true}) {
    if (fails) modem_.fail(Service::vendor, kRdeReadId, 77);
    for (const uint32_t id : {0x02000001U, 0x02000003U, 0x02000007U, 0x02000011U, 0x02000012U}) {
      Bytes request = cdmaRequest(id);
      std::fill_n(request.begin() + 12, 6, uint8_t{'7'});
      const Bytes answer = Ask(request);
      ASSERT_GE(answer.size(), 20U);
      EXPECT_EQ(Bytes(answer.begin() + 12, answer.begin() + 18), Bytes(6)) << std::hex << id;
      EXPECT_THAT(LogsOfLastRequest(), Contains(E("kesext_hook_sprint_send_response: BYTE ARRAY NOT NULL ")));
    }
  }
}

TEST_F(NamProgrammingTest, ACodeThatIsNotSixDigitsIsNotChanged) {
  using namespace std::string_view_literals;
  const std::pair<std::string_view, std::string_view> codes[] = {{"000000", "12:456"},
                                                                 {"000000", "12/456"},
                                                                 {"000000", ""},
                                                                 {"000000", "1234\xC3\xA9"},
                                                                 {"1\0aabc"sv, "1\0bdef"sv}};
  for (const auto& [spc, new_spc] : codes) {
    kesext::NamInfo info = exampleNam();
    put(info.newSpc, new_spc);
    EXPECT_EQ(Ask(WriteRequest(info, spc)).at(8), 0U);
    EXPECT_EQ(modem_.takeRequests().size(), 22U) << "the items, and no change";
    for (const std::string& line : HandlerLogs())
      if (line.find("Spc") != std::string::npos || line.find("SPC") != std::string::npos)
        record_.push_back(line);
  }
  ExpectGolden(record_, "nam_code_of_no_digits");
}

TEST_F(NamProgrammingTest, EveryWriteStepThatFailsIsNamedAndStopsNothing) {
  for (uint32_t step = 0; step < std::size(kItems); ++step) {
    modem_.takeRequests();
    ModemRefuses(kRdeWriteId, {kItems[step]});
    EXPECT_EQ(Write(exampleNam()), 5U);
    EXPECT_EQ(NamLogs().back(),
              E("kesext_hook_sprint_set_nam_block_request_info:  ERROR FOUND " + std::to_string(step) + " "));
    EXPECT_EQ(modem_.requests().size(), 22U);
  }
  ModemRefuses(kRdeWriteId, {kItems[3], kItems[9]});
  EXPECT_EQ(Write(exampleNam()), 5U);
  EXPECT_EQ(NamLogs().back(), E("kesext_hook_sprint_set_nam_block_request_info:  ERROR FOUND 3 "));
}

TEST_F(NamProgrammingTest, AFailedReadWritesZerosWhereItWouldHaveKept) {
  FillElements();
  ModemRefuses(kRdeReadId, {15});
  EXPECT_EQ(Write(exampleNam()), 0U);
  const Bytes pairs = modem_.element(15).value();
  EXPECT_EQ(Bytes(pairs.begin(), pairs.begin() + 81), concat(hex("00 57 10 FF FF"), Bytes(76)));
}

TEST_F(NamProgrammingTest, EveryReadStepThatFailsLeavesTheRecordZero) {
  Write(exampleNam());
  for (const uint32_t item : kItems) {
    ModemRefuses(kRdeReadId, {item});
    Record("without item " + std::to_string(item), cdmaRequest(kGet), {"ERROR FOUND", "COMPLETE", "VALUE M"});
    EXPECT_EQ(modem_.requests().size(), 15U);
  }
  ExpectGolden(record_, "nam_read_steps");
}

TEST_F(NamProgrammingTest, OddItemsReadWithoutError) {
  Write(exampleNam());
  const std::pair<const char*, const char*> numbers[] = {
      {"no digits", "00 00 05 05"},
      {"ends at a zero byte", "00 03 05 00 05"},
      {"8-bit addition", "00 03 F0 93 79"},
      {"15 digits", "00 FF 01 02 03 04 05 06 07 08 09 0A 01 02 03 04 05 06 07"},
      {"a short record", "00"},
  };
  for (const auto& [title, item] : numbers) {
    modem_.setElement(8, hex(item));
    Record(title, cdmaRequest(kGet), {"mdn_number", "MDN"});
  }
  for (const uint32_t item : {25U, 21U})
    modem_.setElement(item, Bytes(9, 0xFF));
  modem_.setElement(30, hex("00 00 00 00 08 80"));
  Record("codes of four bytes, and an unknown service option", cdmaRequest(kGet),
         {"VALUE M", "VALUE I", "VOCODER"});
  ExpectGolden(record_, "nam_odd_items");
}

TEST_F(NamProgrammingTest, SidNidPairsAreWordsToTheParent) {
  Bytes words, widened;
  Bytes item = hex("00");
  for (uint32_t i = 0; i < 40; ++i) {
    words = concat(words, le32(0xABC0FF00 + i * 3));
    widened = concat(widened, le32(0xFF00 + i * 3));
    item = concat(item, handset::le16(static_cast<uint16_t>(0xFF00 + i * 3)));
  }
  Bytes write = cdmaRequest(0x02000004, words);
  write[12] = '7';
  Record("the code goes back", write);
  EXPECT_EQ(modem_.element(15), item);
  EXPECT_EQ(Ask(cdmaRequest(0x02000003)), cdmaResponse(0x02000003, 0, widened));
  Record("read", cdmaRequest(0x02000003));
  ModemRefuses(kRdeReadId, {15});
  ModemRefuses(kRdeWriteId, {15});
  Record("not to be read", cdmaRequest(0x02000003));
  Record("not to be written", cdmaRequest(0x02000004, words));
  ExpectGolden(record_, "sid_nid_pairs");
}

TEST_F(NamProgrammingTest, TheProtocolRevisionIsTheFirstByteOfItem28) {
  modem_.setElement(28, hex("F6 01 02 03"));
  Record("read", cdmaRequest(0x02000007));
  modem_.change([](handset::ModemState& state) { state.elements.erase({28, 0}); });
  Record("missing", cdmaRequest(0x02000007));
  ExpectGolden(record_, "protocol_revision");
}

}  // namespace
}  // namespace kesext_test
