// NAM programming, SID/NID pairs and protocol revision, from the parent to the modem's elements and back.
#include <gmock/gmock.h>

#include <algorithm>
#include <random>

#include "handset/example_nam.h"
#include "nam/nam_info.h"
#include "support/hook_process_test.h"

namespace kesext_test {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr uint32_t kGet = 0x02000001;
constexpr uint32_t kSet = 0x02000002;

/// The items in the order of their steps.
constexpr uint32_t kItems[] = {8, 25, 26, 21, 22, 15, 36, 16, 17, 29, 31, 30, 20, 18, 2};

template <size_t Size>
void put(uint8_t (&field)[Size], std::string_view text) {
  std::fill(std::begin(field), std::end(field), uint8_t{0});
  std::copy_n(text.begin(), std::min(text.size(), Size), field);
}

class NamProgrammingTest : public ServingTest {
 protected:
  /// Writes the record under the code and gives the status.
  uint32_t Write(const kesext::NamInfo& info, const std::string& spc = "000000") {
    Bytes request = cdmaRequest(kSet, handset::recordBytes(info));
    std::copy(spc.begin(), spc.end(), request.begin() + 12);
    const Bytes answer = Ask(request);
    EXPECT_EQ(answer.size(), 20U);
    EXPECT_EQ(handset::getLe<uint32_t>(answer, 0), kSet);
    EXPECT_EQ(handset::getLe<uint32_t>(answer, 4), 0U);
    EXPECT_TRUE(std::equal(spc.begin(), spc.end(), answer.begin() + 12)) << "the code goes back";
    return handset::getLe<uint32_t>(answer, 8);
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
      modem_.rde().set(item, pattern(100, 0x90));
  }
  /// The modem refuses reads, or writes, of these elements.
  void ModemRefuses(uint16_t message, const std::vector<uint32_t>& items) {
    modem_.handle(Service::vendor, message, [this, message, items](handset::ByteView body) {
      if (std::find(items.begin(), items.end(), handset::getLe<uint32_t>(body, 0)) != items.end())
        return handset::Reply{0, concat(le32(1), le32(9), Bytes(message == kRdeReadId ? 532 : 0))};
      return handset::Reply{0, message == kRdeReadId ? modem_.rde().read(body) : modem_.rde().write(body)};
    });
  }
};

TEST_F(NamProgrammingTest, AWriteSetsItsBytesAndKeepsTheOthers) {
  FillElements();
  const Bytes old = pattern(100, 0x90);
  const auto kept = [&old](size_t from, size_t to) {
    return Bytes(old.begin() + static_cast<ptrdiff_t>(from), old.begin() + static_cast<ptrdiff_t>(to));
  };
  EXPECT_EQ(Write(handset::exampleNam()), 0U);
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
  for (const auto& [item, record] : expected) {
    const Bytes element = modem_.rde().get(item).value();
    EXPECT_EQ(Bytes(element.begin(), element.begin() + static_cast<ptrdiff_t>(record.size())), record)
        << item;
    EXPECT_EQ(Bytes(element.begin() + static_cast<ptrdiff_t>(record.size()), element.end()),
              kept(record.size(), 100))
        << item << " is written in its own length";
  }
}

TEST_F(NamProgrammingTest, WhatWasWrittenIsReadBackAndEveryAccessAndValueLogged) {
  kesext::NamInfo info = handset::exampleNam();
  put(info.mdn, "50");
  EXPECT_EQ(Write(info), 0U);
  EXPECT_EQ(modem_.requestCount(), 22U);
  ExpectGolden(HandlerLogs(), "nam_write");
  put(info.mccT, "310");
  put(info.newSpc, "");
  EXPECT_EQ(Ask(cdmaRequest(kGet)), cdmaResponse(kGet, 0, handset::recordBytes(info)));
  ExpectGolden(HandlerLogs(), "nam_read");
}

TEST_F(NamProgrammingTest, ValuesAreCutAndOddOnesConverted) {
  kesext::NamInfo info = handset::exampleNam();
  put(info.mdn, "1234567890123456");
  info.homeSid = 0x12345;
  info.homeNid = 0x2FFFF;
  info.pChannelA = 0x10001;
  info.pChannelB = 0x10002;
  info.sChannelA = 0x10003;
  info.sChannelB = 0x10004;
  info.scm = 0x1FF;
  info.vocoder = 7;
  info.accessOverloadClass = 0xABCD;
  EXPECT_EQ(Write(info), 0U);
  EXPECT_EQ(modem_.rde().get(8), hex("00 0F 01 02 03 04 05 06 07 08 09 0A 01 02 03 04 05"));
  EXPECT_EQ(handset::getLe<uint16_t>(modem_.rde().get(15).value(), 1), 0x2345);
  EXPECT_EQ(modem_.rde().get(36), hex("FF"));
  const std::string set = "kesext_hook_sprint_set_nam_info:  SET NAM ";
  for (const char* value :
       {"SID 9029 NID 65535 ", "pChannelA 1 pChannelB 2 sChannelA sChannelB ",
        "sChannelA 3 sChannelB 4 sChannelA sChannelB ", "SCM 255 ", "Vocoder 32768 ", "AccessOverload 205 "})
    EXPECT_THAT(NamLogs(), Contains(E(set + value)));
  EXPECT_EQ(handset::getLe<uint16_t>(modem_.rde().get(30).value(), 4), 0x8000);
  EXPECT_EQ(modem_.rde().get(2), hex("00 00 CD"));
  put(info.mdn, "");
  EXPECT_EQ(Write(info), 0U);
  EXPECT_EQ(modem_.rde().get(8), Bytes(17));
  put(info.mdn, "\xFF");
  EXPECT_EQ(Write(info), 0U);
  EXPECT_EQ(modem_.rde().get(8).value()[2], 0xFF - '0');
  EXPECT_THAT(NamLogs(), Contains(E("kesext_hook_sprint_set_mdn_to_nv:  mdn_number 255 ")));
  EXPECT_THAT(NamLogs(), Contains(E("kesext_hook_sprint_read_mdn_from_nv:  nv output 207 ")));
}

TEST_F(NamProgrammingTest, AnotherCodeOfDigitsIsChangedAfterTheItems) {
  kesext::NamInfo info = handset::exampleNam();
  put(info.newSpc, "000001");
  EXPECT_EQ(Write(info), 0U);
  EXPECT_THAT(NamLogs(), Contains(E("isSpcChanged = 1, (000000 ~ 000001)")));
  ASSERT_EQ(modem_.requestCount(), 23U);
  EXPECT_EQ(modem_.requests().back().service, Service::dms);
  EXPECT_EQ(modem_.requests().back().body, handset::bytesOf("000000000001"));

  modem_.answer(Service::dms, 0x0052, concat(le32(1), le32(12)));
  EXPECT_EQ(Write(info), 5U);
  EXPECT_EQ(NamLogs().back(), E("kesext_hook_sprint_set_nam_block_request_info:  ERROR FOUND 19 "));
  const auto logs = NamLogs();
  EXPECT_EQ(logs[logs.size() - 4], E("kes_qmi_sprint_write_spc entered "))
      << "before the end of the block is logged";
  EXPECT_EQ(logs[logs.size() - 3], E("kes_qmi_sprint_write_spc Error = 12"));
  ModemRefuses(kRdeWriteId, {2});
  modem_.clearRequests();
  EXPECT_EQ(Write(info), 5U);
  EXPECT_EQ(NamLogs().back(), E("kesext_hook_sprint_set_nam_block_request_info:  ERROR FOUND 14 "));
  EXPECT_EQ(modem_.requests().back().service, Service::dms) << "changed all the same";
  modem_.restore(Service::vendor, kRdeWriteId);
  modem_.fail(Service::dms, 0x0052, 77);
  EXPECT_EQ(Write(info), 5U);
  EXPECT_EQ(NamLogs().back(), E("kesext_hook_sprint_set_nam_block_request_info:  ERROR FOUND 19 "));
  EXPECT_THAT(NamLogs(), Contains(E("kes_qmi_sprint_write_spc: qmi_client_send_msg_sync (77).")));
}

TEST_F(NamProgrammingTest, AWriteTakesTheWholeRecordWhateverItsLength) {
  EXPECT_EQ(Ask(cdmaRequest(kSet, handset::recordBytes(handset::exampleNam()), 1)), cdmaResponse(kSet, 0));
  EXPECT_EQ(modem_.rde().get(2), hex("00 00 04"));
  Bytes cut = cdmaRequest(kSet, handset::recordBytes(handset::exampleNam()));
  cut.resize(18 + 20);
  EXPECT_EQ(Ask(cut), cdmaResponse(kSet, 0));
  EXPECT_EQ(modem_.rde().get(2), hex("00 00 00"));
  // The digits after "6195" are zero bytes: groups of 207, and a thousands code below zero.
  const uint32_t group = 207 * 111;
  EXPECT_THAT(NamLogs(), Contains(E("kesext_hook_sprint_set_nam_info:  SET NAM MIN1 " +
                                    std::to_string(((4 * 100 + 207 * 11) << 14) | (0U - 48U) << 10 | group) +
                                    " MIN2 508 ")));
}

TEST_F(NamProgrammingTest, AnswersWithAFreshHeaderCarryNoCode) {
  FillElements();
  modem_.rde().set(28, hex("06"));
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
  struct Case {
    std::string spc, new_spc, logged;
    int bad_byte;  // -1: the codes do not differ
  };
  const std::string zeros(6, '\0');
  for (const Case& c :
       {Case{"000000", "12:456", "1, (000000 ~ 12:456)", 2},
        Case{"000000", "12/456", "1, (000000 ~ 12/456)", 2}, Case{"000000", zeros, "1, (000000 ~ )", 0},
        Case{"000000", "12345\xFF", "1, (000000 ~ 12345\xFF)", 5},
        Case{std::string("1\0a", 3) + "abc", std::string("1\0b", 3) + "def", "0, (1 ~ 1)", -1}}) {
    kesext::NamInfo info = handset::exampleNam();
    std::copy(c.new_spc.begin(), c.new_spc.end(), info.newSpc);
    modem_.clearRequests();
    EXPECT_EQ(Write(info, c.spc), 0U);
    EXPECT_THAT(NamLogs(), Contains(E("isSpcChanged = " + c.logged)));
    if (c.bad_byte >= 0) {
      EXPECT_THAT(NamLogs(), Contains(E("Byte (" + std::to_string(c.bad_byte) + ") of SPC is not digit.")));
    } else {
      EXPECT_THAT(NamLogs(), Not(Contains(HasSubstr("of SPC is not digit"))));
    }
    EXPECT_EQ(modem_.requestCount(), 22U) << "the items, and no change";
  }
}

TEST_F(NamProgrammingTest, EveryWriteStepThatFailsIsNamedAndStopsNothing) {
  for (uint32_t step = 0; step < std::size(kItems); ++step) {
    modem_.clearRequests();
    ModemRefuses(kRdeWriteId, {kItems[step]});
    EXPECT_EQ(Write(handset::exampleNam()), 5U);
    EXPECT_EQ(NamLogs().back(),
              E("kesext_hook_sprint_set_nam_block_request_info:  ERROR FOUND " + std::to_string(step) + " "));
    EXPECT_EQ(modem_.requestCount(), 22U);
  }
  ModemRefuses(kRdeWriteId, {kItems[3], kItems[9]});
  EXPECT_EQ(Write(handset::exampleNam()), 5U);
  EXPECT_EQ(NamLogs().back(), E("kesext_hook_sprint_set_nam_block_request_info:  ERROR FOUND 3 "));
}

TEST_F(NamProgrammingTest, AFailedReadWritesZerosWhereItWouldHaveKept) {
  FillElements();
  ModemRefuses(kRdeReadId, {15});
  EXPECT_EQ(Write(handset::exampleNam()), 0U);
  const Bytes pairs = modem_.rde().get(15).value();
  EXPECT_EQ(Bytes(pairs.begin(), pairs.begin() + 81), concat(hex("00 57 10 FF FF"), Bytes(76)));
}

TEST_F(NamProgrammingTest, AnyWellFormedRecordIsReadBack) {
  std::mt19937 random(11);
  const auto digits = [&random](size_t count) {
    std::string text(count, '0');
    for (char& digit : text)
      digit = static_cast<char>('0' + random() % 10);
    return text;
  };
  for (int round = 0; round < 25; ++round) {
    kesext::NamInfo info{};
    put(info.mdn, digits(random() % 16));
    put(info.min, digits(10));
    put(info.imsi11_12, digits(2));
    put(info.mcc, digits(3));
    const std::string imsi_t = digits(15);
    put(info.imsiT, imsi_t);
    put(info.newSpc, "000000");
    info.homeSid = random() % 0x10000;
    info.homeNid = random() % 0x10000;
    info.scm = random() % 0x100;
    info.pChannelA = random() % 0x10000;
    info.pChannelB = random() % 0x10000;
    info.sChannelA = random() % 0x10000;
    info.sChannelB = random() % 0x10000;
    info.vocoder = static_cast<int32_t>(random() % 7);
    info.accessOverloadClass = random() % 0x100;
    ASSERT_EQ(Write(info), 0U);
    put(info.mccT, imsi_t.substr(0, 3));
    put(info.newSpc, "");
    ASSERT_EQ(Ask(cdmaRequest(kGet)), cdmaResponse(kGet, 0, handset::recordBytes(info)));
  }
}

TEST_F(NamProgrammingTest, EveryReadStepThatFailsLeavesTheRecordZero) {
  Write(handset::exampleNam());
  for (uint32_t step = 0; step < std::size(kItems); ++step) {
    modem_.clearRequests();
    ModemRefuses(kRdeReadId, {kItems[step]});
    EXPECT_EQ(Ask(cdmaRequest(kGet)), cdmaResponse(kGet, 5, Bytes(104)));
    EXPECT_EQ(NamLogs().back(),
              E("kesext_hook_sprint_get_nam_block_request_info:  ERROR FOUND " + std::to_string(step) + " "));
    EXPECT_EQ(modem_.requestCount(), 15U);
    const std::string mdn_complete =
        E("kesext_hook_sprint_read_mdn_from_nv:  READ NV_DIR_NUMBER_PCS_I COMPLETE 5551234560 ");
    const std::string value = "kesext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE ";
    EXPECT_THAT(NamLogs(), Contains(mdn_complete).Times(step == 0 ? 0 : 1));
    EXPECT_THAT(NamLogs(), Contains(E(value + (step == 0 ? "MDN   " : "MDN  5551234560 "))));
    EXPECT_THAT(NamLogs(), Contains(E(value + (step == 1 ? "MIN1  0 " : "MIN1  7275643 "))));
  }
}

TEST_F(NamProgrammingTest, OddItemsReadWithoutError) {
  Write(handset::exampleNam());
  const auto mdn_of = [this](const char* item) {
    modem_.rde().set(8, hex(item));
    const Bytes answer = Ask(cdmaRequest(kGet));
    EXPECT_EQ(handset::getLe<uint32_t>(answer, 8), 0U);
    return Bytes(answer.begin() + 18, answer.begin() + 34);
  };
  const auto field = [](std::string_view text) { return sized(handset::bytesOf(text), 16); };
  EXPECT_EQ(mdn_of("00 00 05 05"), Bytes(16)) << "no digits";
  EXPECT_EQ(mdn_of("00 03 05 00 05"), field("5")) << "ends at a zero byte";
  EXPECT_EQ(mdn_of("00 03 F0 0B 60"), field(" ;\x90")) << "8-bit addition";
  const std::string digit = "kesext_hook_sprint_read_mdn_from_nv:  mdn_number ";
  for (const char* text : {"240 ", "incremented by 0 32 ", "96 ", "incremented by 0 144 "})
    EXPECT_THAT(NamLogs(), Contains(E(digit + text)));
  EXPECT_EQ(mdn_of("00 FF 01 02 03 04 05 06 07 08 09 0A 01 02 03 04 05 06 07"), field("123456789012345"));
  EXPECT_EQ(mdn_of("00"), Bytes(16)) << "a short record";
  modem_.rde().set(25, Bytes(9, 0xFF));
  modem_.rde().set(21, Bytes(9, 0xFF));
  modem_.rde().set(30, hex("00 00 00 00 08 80"));
  const Bytes answer = Ask(cdmaRequest(kGet));
  EXPECT_EQ(handset::getLe<uint32_t>(answer, 18 + 68), 0xFFFFFFFF) << "an unknown service option";
  const std::string value = "kesext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE ";
  EXPECT_THAT(NamLogs(), Contains(E(value + "MIN1  4294967295 ")));
  EXPECT_THAT(NamLogs(), Contains(E(value + "IMSI_T_S1  4294967295 ")));
}

TEST_F(NamProgrammingTest, SidNidPairsAreWordsToTheParent) {
  Bytes words;
  Bytes item = hex("00");
  for (uint32_t i = 0; i < 40; ++i) {
    words = concat(words, le32(0xABC0FF00 + i * 3));
    item = concat(item, handset::le16(static_cast<uint16_t>(0xFF00 + i * 3)));
  }
  Bytes request = cdmaRequest(0x02000004, words);
  request[12] = '7';
  Bytes expected = cdmaResponse(0x02000004, 0);
  expected[12] = '7';
  EXPECT_EQ(Ask(request), expected);
  EXPECT_THAT(NamLogs(), Contains(E("kesext_hook_sprint_set_sid_nid_pairs:  SET SID/NID PAIRS  0 ")));
  EXPECT_EQ(HandlerLogs().back(), E("kesext_hook_sprint_set_nam_item: WRITE NV VALUE 0 "));
  EXPECT_EQ(modem_.rde().get(15), item);
  Bytes widened;
  for (uint32_t i = 0; i < 40; ++i)
    widened = concat(widened, le32(0xFF00 + i * 3));
  EXPECT_EQ(Ask(cdmaRequest(0x02000003)), cdmaResponse(0x02000003, 0, widened));
  EXPECT_EQ(NamLogs().back(), E("kesext_hook_sprint_get_sid_nid_pairs:  GET SID/NID PAIRS  0 "));

  ModemRefuses(kRdeReadId, {15});
  ModemRefuses(kRdeWriteId, {15});
  EXPECT_EQ(Ask(cdmaRequest(0x02000003)), cdmaResponse(0x02000003, 5, Bytes(160)));
  EXPECT_EQ(Ask(cdmaRequest(0x02000004, words)), cdmaResponse(0x02000004, 5));
  EXPECT_EQ(HandlerLogs().back(), E("kesext_hook_sprint_set_nam_item: WRITE NV VALUE 4 "));
}

TEST_F(NamProgrammingTest, TheProtocolRevisionIsTheFirstByteOfItem28) {
  modem_.rde().set(28, hex("F6 01 02 03"));
  EXPECT_EQ(Ask(cdmaRequest(0x02000007)), cdmaResponse(0x02000007, 0, hex("F6 00 00 00")));
  const auto logs = HandlerLogs();
  EXPECT_THAT(logs, Contains(E("Enter kesext_hook_sprint_get_mob_p_pre() ")));
  EXPECT_THAT(logs, Contains(E("kesext_hook_sprint_get_nam_item: READ NV VALUE 0 ")));
  EXPECT_EQ(logs.back(), E("get mob_cai_rev 246 "));
  modem_.rde().erase(28);
  EXPECT_EQ(Ask(cdmaRequest(0x02000007)), cdmaResponse(0x02000007, 5, Bytes(4)));
  EXPECT_EQ(HandlerLogs().back(), E("kesext_hook_sprint_get_nam_item: READ NV VALUE 4 "));
}

}  // namespace
}  // namespace kesext_test
