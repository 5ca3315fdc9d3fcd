// The carrier's requests, from the parent to the modem and back.
#include <gmock/gmock.h>

#include <tuple>

#include "support/hook_process_test.h"

namespace kesext_test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;

const Bytes kSpc = handset::bytesOf("654321");

Bytes withSpc(Bytes record) {
  std::copy(kSpc.begin(), kSpc.end(), record.begin() + 12);
  return record;
}

/// A request that is one exchange with the modem. Bodies of the modem's messages are filled up with zeros.
struct Operation {
  uint32_t id;
  const char* payload;
  Service service;
  uint16_t message;
  const char* success;
  const char* refusal;
};

constexpr const char* kTot = "EEEEEEEEEEEEEEEEEEEE 0200 EEEEEEEEEEEEEEEE 01020304 05060708 090A0B0C";
constexpr const char* kAkey = "0102030405060708090A0B0C0D0E0F101112131415161718191A";
constexpr Operation kOperations[] = {
    {0x020000B0, "", Service::vendor, 0x0101, "00000000 07000000", "03000000 07000000"},
    {0x020000B1, "FEFFFFFF", Service::vendor, 0x0102, "00000000", "01000000"},
    {0x020000B2, "", Service::vendor, 0x0101, "00000000 07000000", "03000000 07000000"},
    {0x020000B3, "FEFFFFFF", Service::vendor, 0x0102, "00000000", "01000000"},
    {0x020000B4, "03000000 AABBCCDD", Service::vendor, 0x0100, "00000000", "01000000"},
    {0x020000B5, "04000000", Service::vendor, 0x0103, "00000000", "01000000"},
    {0x020000B6, "FE", Service::vendor, 0x0011, "01", "F0"},
    {0x020000BC, "", Service::vendor, 0x0108, "01000000 00000000 2C010000", "02000000 09000000 2C010000"},
    {0x020000BD, "1E000000", Service::vendor, 0x0109, "01000000", "02000000 09000000"},
    {0x020000C4, "", Service::vendor, 0x0104, kTot, kTot},
    {0x020000C5, "0200 01020304 05060708 090A0B0C", Service::vendor, 0x0105, "01000000", "02000000 09000000"},
    {0x0200000A, "", Service::dms, 0x003B, "00000000", "01000000 09000000"},
    {0x02000013, kAkey, Service::nas, 0x005B, "00000000", "01000000 09000000"},
};

std::string idText(uint32_t id) {
  return handset::toHex(handset::be32(id), "");
}

using CarrierRequestsTest = ServingTest;

TEST_F(CarrierRequestsTest, EveryOperationAnswersSuccessRefusalAndFailedSend) {
  for (const Operation& o : kOperations) {
    const Bytes request = withSpc(cdmaRequest(o.id, hex(o.payload)));
    const size_t response_size = handset::findMessage(o.service, o.message)->response_size;
    modem_.answer(o.service, o.message, sized(hex(o.success), response_size));
    Record(idText(o.id) + ", success", request);
    modem_.answer(o.service, o.message, sized(hex(o.refusal), response_size));
    Record(idText(o.id) + ", refusal", request);
    modem_.fail(o.service, o.message, 77);
    Record(idText(o.id) + ", failed send", request);
  }
  ExpectGolden(record_, "carrier_operations");
}

TEST_F(CarrierRequestsTest, ServedRequestsLogDispatcherAndBuilderInOrder) {
  modem_.change([](handset::ModemState& state) { state.bsr_timer = 5; });
  EXPECT_EQ(Ask(cdmaRequest(0x020000BC)), cdmaResponse(0x020000BC, 0, le32(5)));
  ExpectGolden(LogsOfLastRequest(), "carrier_served");
}

TEST_F(CarrierRequestsTest, WriteGroupsNeedAPayload) {
  for (const uint32_t id : {0x020000B1U, 0x020000B3U, 0x020000B4U, 0x020000B5U})
    Record(idText(id) + " of length 0", cdmaRequest(id, hex("01 00 00 00"), 0), {"EVENT VALUE"});
  Record("any other length goes", cdmaRequest(0x020000B1, hex("01 00 00 00"), -1));
  for (const uint32_t id : {0x02000002U, 0x02000004U}) {
    Record(idText(id) + " without a byte", cdmaRequest(id), {"EVENT VALUE"});
    Record(idText(id) + " with a byte", cdmaRequest(id, hex("00")), {"EVENT VALUE"});
  }
  ExpectGolden(record_, "carrier_write_groups");
}

TEST_F(CarrierRequestsTest, ObsoleteIdsAreAnsweredWithStatus6) {
  for (const uint32_t id : {0x020000BBU, 0x020000C2U, 0x020000C3U, 0x020000C6U, 0x020000C7U, 0x020000C8U,
                            0x020000C9U, 0x020000CAU, 0x020000CBU})
    Record(idText(id), withSpc(cdmaRequest(id, hex("01 02 03"))));
  ExpectGolden(record_, "carrier_obsolete");
}

TEST_F(CarrierRequestsTest, ARoamingListSegmentIsCutTo16384Bytes) {
  const Bytes data = pattern(17000);
  for (const uint32_t size : {16384U, 20000U, 0xFFFFFFFFU}) {
    modem_.takeRequests();
    EXPECT_EQ(Ask(cdmaRequest(0x020000B4, concat(le32(size), data))), cdmaResponse(0x020000B4, 0));
    const auto requests = modem_.requests();
    ASSERT_EQ(requests.size(), 1U);
    EXPECT_EQ(requests[0].body, concat(le32(16384), handset::ByteView(data).first(16384)));
    EXPECT_THAT(HandlerLogs(), Contains(E("kes_qmi_sprint_set_roaming_list_segment: data_length (" +
                                          std::to_string(static_cast<int32_t>(size)) + ").")));
  }
}

TEST_F(CarrierRequestsTest, TheFactoryResetFlagIsTheOnlyPayloadByte) {
  const std::pair<const char*, uint8_t> cases[] = {{"", 0xFF}, {"00", 0x00}, {"07", 0x07}, {"01 02", 0xFF}};
  for (const auto& [payload, flag] : cases) {
    Ask(cdmaRequest(0x020000B6, hex(payload)));
    EXPECT_EQ(modem_.requests().back().body, Bytes{flag});
  }
}

TEST_F(CarrierRequestsTest, ElementsAreWrittenWithBothLengthsAndFreshHeaders) {
  Record("written", withSpc(cdmaRequest(0x02000015, nvPayload(500, 1, 2, 2, hex("0A FF")))));
  for (const uint32_t length : {513U, 0xFFFFFFFFU})
    Record("too long", cdmaRequest(0x02000015, nvPayload(500, 0, 0, length)));
  modem_.answer(Service::vendor, kRdeWriteId, concat(le32(1), le32(9)));
  Record("refused", cdmaRequest(0x02000015, nvPayload(500, 0, 0, 1)));
  ExpectGolden(record_, "carrier_element_writes");
}

TEST_F(CarrierRequestsTest, ElementsAreReadWithTheModemsLengthAndFreshHeaders) {
  const std::tuple<uint32_t, uint32_t, uint32_t, const char*> cases[] = {
      {0, 0, 3, "read"}, {1, 16, 4, "refused"}, {0, 0, 513, "too long"}, {0, 0, 0xFFFFFFFF, "far too long"}};
  for (const auto& [result, error, length, title] : cases) {
    modem_.answer(
        Service::vendor, kRdeReadId,
        concat(le32(result), le32(error), le32(11), Bytes(8), le32(length), le32(512), pattern(512)));
    Record(title, withSpc(cdmaRequest(0x02000016, nvPayload(500, 2, 0xFFFFFFFD, 4))));
  }
  ExpectGolden(record_, "carrier_element_reads");
}

TEST_F(CarrierRequestsTest, TheDdtmPreferenceIsOneByteOfElement10018) {
  for (const uint32_t offset : {0U, 2U}) {
    const Bytes read = withSpc(cdmaRequest(0x020000B7 + offset));
    const Bytes write = withSpc(cdmaRequest(0x020000B8 + offset, hex("F1 02")));
    modem_.restore(Service::vendor, kRdeWriteId);
    modem_.change([](handset::ModemState& state) { state.elements.erase({10018, 0}); });
    Record("nothing to read", read);
    Record("written", write);
    Record("read back", read);
    modem_.setElement(10018, hex("01 02"));
    Record("an element of two bytes reads as 0", read);
    modem_.fail(Service::vendor, kRdeWriteId, 8);
    Record("not written", write);
  }
  ExpectGolden(record_, "carrier_ddtm");
}

TEST_F(CarrierRequestsTest, TheLteOptionIsElement10017) {
  Record("nothing to read", withSpc(cdmaRequest(0x020000BE)));
  for (const int32_t msg_len : {513, -1, INT32_MIN})
    Record("too long", cdmaRequest(0x020000BF, pattern(600), msg_len));
  ExpectGolden(record_, "carrier_lte_option");
  for (const size_t size : {0U, 1U, 512U}) {
    modem_.change([](handset::ModemState& state) { state.elements.erase({10017, 0}); });
    EXPECT_EQ(Ask(withSpc(cdmaRequest(0x020000BF, pattern(size)))), withSpc(cdmaResponse(0x020000BF, 0)));
    EXPECT_EQ(Ask(withSpc(cdmaRequest(0x020000BE))), withSpc(cdmaResponse(0x020000BE, 0, pattern(size))));
  }
}

TEST_F(CarrierRequestsTest, TotOrdersAreBoundedTo15Entries) {
  const Bytes entries = pattern(60);
  Record("15 are written", cdmaRequest(0x020000C5, concat(handset::le16(15), entries)));
  Record("and read", cdmaRequest(0x020000C4));
  for (const uint16_t count : {uint16_t{16}, uint16_t{0xFFFF}}) {
    Record("more are not sent", cdmaRequest(0x020000C5, concat(handset::le16(count), entries)));
    modem_.answer(Service::vendor, 0x0104, concat(Bytes(10), handset::le16(count), Bytes(8), entries));
    Record("of more the modem's first 15 are read", cdmaRequest(0x020000C4));
  }
  ExpectGolden(record_, "carrier_tot_orders");
}

TEST_F(CarrierRequestsTest, TheApnListIsRepackedAndBoundedTo8) {
  constexpr size_t kEntries = 8;
  Bytes response = concat(Bytes(20, 0xEE));
  Bytes expected;
  for (uint8_t i = 0; i < kEntries; ++i) {
    const Bytes apn = pattern(103, i), block = pattern(16, static_cast<uint8_t>(0x40 + i));
    const Bytes first = hex("01 02 03 04"), second = Bytes{0x0A, 0, i, 1};
    response = concat(response, apn, Bytes(5, 0xEE), first, second, Bytes(8, 0xEE), block, Bytes(4, 0xEE));
    expected = concat(expected, apn, first, Bytes{1, i, 0, 0x0A}, block);
  }
  response.resize(1168);
  const std::tuple<uint8_t, uint8_t, uint8_t, size_t> cases[] = {
      {8, 1, 8, 8}, {3, 1, 3, 3}, {0, 1, 0, 0}, {2, 0, 2, 0}, {255, 9, 8, 8}};
  for (const auto& [count, valid, answered_count, entries] : cases) {
    response[8] = count;
    response[9] = valid;
    modem_.answer(Service::vendor, 0x0106, response);
    const Bytes list = concat(Bytes{answered_count}, handset::ByteView(expected).first(entries * 127));
    EXPECT_EQ(Ask(withSpc(cdmaRequest(0x020000C1))), withSpc(cdmaResponse(0x020000C1, 0, sized(list, 1017))));
  }
  modem_.fail(Service::vendor, 0x0106, 77);
  EXPECT_EQ(Ask(cdmaRequest(0x020000C1)), cdmaResponse(0x020000C1, 0, Bytes(1017)));
  EXPECT_THAT(HandlerLogs(),
              ElementsAre(E("kes_qmi_sprint_get_active_ehrpd_apn: qmi_client_send_msg_sync failed (77).")));
}

TEST_F(CarrierRequestsTest, AnAkeyOfAnotherLengthIsRefusedUnsent) {
  for (const int32_t msg_len : {25, 27, 0, -1})
    Record(std::to_string(msg_len), withSpc(cdmaRequest(0x02000013, pattern(30), msg_len)));
  ExpectGolden(record_, "carrier_akey_lengths");
}

class LteDataTest : public CarrierRequestsTest {
 protected:
  /// A NAS response with bytes at offsets behind result and error.
  static Bytes Response(size_t size, uint32_t result, uint32_t error,
                        const std::vector<std::pair<size_t, Bytes>>& fields = {}) {
    Bytes body = concat(le32(result), le32(error), Bytes(size - 8));
    for (const auto& [offset, bytes] : fields)
      std::copy(bytes.begin(), bytes.end(), body.begin() + static_cast<ptrdiff_t>(offset));
    return body;
  }
  void ModemReportsAll() {
    modem_.answer(Service::vendor, 0x0107, concat(le32(1), le32(0), hex("C8 EE EE EE")));
    modem_.answer(Service::vendor, 0x010A,
                  hex("01 00 00 00 00 00 00 00  01 00 02 01  01 00 04 03  01 F5  01 F6"));
    modem_.answer(Service::nas, 0x0024,
                  Response(1508, 0, 0, {{1104, hex("01 EE 36 01 78 00")}, {1434, hex("01 EE 2C 1B 0A 80")}}));
    modem_.answer(Service::nas, 0x004F, Response(16, 0, 0, {{8, hex("01 EE C2 F7 A1 FF")}}));
    modem_.answer(Service::nas, 0x005A, Response(16, 0, 0, {{8, hex("01 EE EE EE DD FF FF FF")}}));
  }
  void Collect(const char* title) { Record(title, withSpc(cdmaRequest(0x020000C0))); }
};

TEST_F(LteDataTest, EverySourceHasItsFieldAndAbsentFieldsAreZero) {
  ModemReportsAll();
  Collect("all");
  struct Case {
    const char* title;
    Service service;
    uint16_t message;
    Bytes response;
  };
  const Case cases[] = {
      {"no first channel, no second value", Service::vendor, 0x010A,
       hex("01 00 00 00 00 00 00 00  00 EE 02 01  01 EE 04 03  01 F5  00 F6")},
      {"no second channel, no first value", Service::vendor, 0x010A,
       hex("01 00 00 00 00 00 00 00  01 EE 02 01  00 EE 04 03  00 F5  01 F6")},
      {"no third serving value", Service::nas, 0x0024,
       Response(1508, 0, 0, {{1104, hex("01 EE 36 01 78 00")}, {1436, hex("22")}})},
      {"no first two serving values", Service::nas, 0x0024,
       Response(1508, 0, 0, {{1106, hex("11")}, {1434, hex("01 EE 2C 1B 0A 80")}})},
      {"no signal", Service::nas, 0x004F, Response(16, 0, 0, {{10, hex("11 22 33 44")}})},
      {"no power", Service::nas, 0x005A, Response(16, 0, 0, {{12, hex("11 22 33 44")}})},
      {"no radio", Service::nas, 0x005A, Response(16, 1, 93)},
      {"no radio, but its power", Service::nas, 0x005A,
       Response(16, 1, 93, {{8, hex("01 00 00 00 DD FF FF FF")}})},
      {"no service state", Service::vendor, 0x0107, concat(le32(0), le32(5), hex("C8 00 00 00"))},
      {"no channels", Service::vendor, 0x010A, concat(le32(0), le32(6), Bytes(12, 1))},
  };
  for (const Case& c : cases) {
    ModemReportsAll();
    modem_.answer(c.service, c.message, c.response);
    Collect(c.title);
  }
  for (const uint16_t message : {uint16_t{0x0107}, uint16_t{0x010A}}) {
    ModemReportsAll();
    modem_.fail(Service::vendor, message, 77);
    Collect("vendor message not sent");
  }
  ExpectGolden(record_, "lte_data");
}

TEST_F(LteDataTest, AFailedNasRequestIsAnsweredWithStatus5) {
  ModemReportsAll();
  const std::pair<uint16_t, size_t> cases[] = {{0x005A, 16}, {0x004F, 16}, {0x0024, 1508}};
  for (const auto& [message, size] : cases) {
    modem_.answer(Service::nas, message, Response(size, 1, 12));
    Collect("refused");
    modem_.fail(Service::nas, message, 77);
    Collect("not sent");
  }
  ExpectGolden(record_, "lte_data_failures");
}

}  // namespace
}  // namespace kesext_test
