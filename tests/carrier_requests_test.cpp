// The carrier's requests, from the parent to the modem and back.
#include <gmock/gmock.h>

#include <tuple>

#include "support/hook_process_test.h"

namespace kesext_test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

const Bytes kSpc = handset::bytesOf("654321");

Bytes withSpc(Bytes record) {
  std::copy(kSpc.begin(), kSpc.end(), record.begin() + 12);
  return record;
}

/// What an operation answers to one reaction of the modem.
struct Answer {
  uint32_t status;
  Bytes payload;
};

/// A request that is one exchange with the modem. Bodies of the modem's messages are filled up with zeros.
struct Operation {
  uint32_t id;
  bool echo;  // whether the request's code goes back
  const char* payload;
  Service service;
  uint16_t message;
  const char* sent;
  const char* success;
  const char* refusal;
  Answer on_success{0, {}};
  Answer on_refusal{5, {}};
  Answer on_failed_send{5, {}};
};

std::vector<Operation> operations() {
  const auto vendor = Service::vendor;
  const char* tot = "EEEEEEEEEEEEEEEEEEEE 0200 EEEEEEEEEEEEEEEE 01020304 05060708 090A0B0C";
  const Bytes tot_order = sized(hex("0200 01020304 05060708"), 62);
  const char* akey = "0102030405060708090A0B0C0D0E0F101112131415161718191A";
  // clang-format off
  return {
      // id, echo, payload, service, message, sent; the modem's success and refusal; the answers, of a write as above
      {0x020000B0, false, "", vendor, 0x0101, "00000000", "00000000 07000000", "03000000 07000000",
       {0, le32(7)}, {0, le32(0)}, {0, le32(0)}},
      {0x020000B1, true, "FEFFFFFF", vendor, 0x0102, "00000000 FEFFFFFF", "00000000", "01000000",},
      {0x020000B2, false, "", vendor, 0x0101, "01000000", "00000000 07000000", "03000000 07000000",
       {0, le32(7)}, {0, le32(0)}, {0, le32(0)}},
      {0x020000B3, true, "FEFFFFFF", vendor, 0x0102, "01000000 FEFFFFFF", "00000000", "01000000",},
      {0x020000B4, true, "03000000 AABBCCDD", vendor, 0x0100, "03000000 AABBCC", "00000000", "01000000",},
      {0x020000B5, true, "04000000", vendor, 0x0103, "04000000", "00000000", "01000000",},
      {0x020000B6, true, "FE", vendor, 0x0011, "FE", "01", "F0",},
      {0x020000BC, true, "", vendor, 0x0108, "", "01000000 00000000 2C010000", "02000000 09000000 2C010000",
       {0, le32(300)}, {0, le32(0)}, {0, le32(0)}},
      {0x020000BD, true, "1E000000", vendor, 0x0109, "1E000000", "01000000", "02000000 09000000",},
      {0x020000C4, true, "", vendor, 0x0104, "", tot, tot,
       {0, tot_order}, {0, tot_order}, {0, Bytes(62)}},
      {0x020000C5, true, "0200 01020304 05060708 090A0B0C", vendor, 0x0105, "0200 000000000000 01020304 05060708",
       "01000000", "02000000 09000000",},
      {0x0200000A, false, "", Service::dms, 0x003B, "363534333231", "00000000", "01000000 09000000",
       {0, Bytes(6)}, {3, Bytes(6)}, {3, Bytes(6)}},
      {0x02000013, true, akey, Service::nas, 0x005B,
       "363534333231 0102030405060708090A0B0C0D0E0F101112131415161718191A", "00000000", "01000000 09000000",},
  };
  // clang-format on
}

class CarrierRequestsTest : public ServingTest {
 protected:
  /// Asks, checks the answer, and adds what was logged to `log` under a heading.
  void Expect(const Operation& operation, const char* reaction, const Answer& expected,
              std::vector<std::string>* log) {
    const Bytes answer = cdmaResponse(operation.id, expected.status, expected.payload);
    EXPECT_EQ(Ask(withSpc(cdmaRequest(operation.id, hex(operation.payload)))),
              operation.echo ? withSpc(answer) : answer);
    log->push_back("# " + handset::toHex(handset::be32(operation.id), "") + ", " + reaction);
    for (const std::string& line : HandlerLogs())
      log->push_back(line);
  }
};

TEST_F(CarrierRequestsTest, EveryOperationAnswersSuccessRefusalAndFailedSend) {
  std::vector<std::string> log;
  for (const Operation& o : operations()) {
    SCOPED_TRACE(::testing::Message() << std::hex << o.id);
    const size_t response_size = handset::findMessage(o.service, o.message)->response_size;
    modem_.clearRequests();
    modem_.answer(o.service, o.message, sized(hex(o.success), response_size));
    Expect(o, "success", o.on_success, &log);
    const auto requests = modem_.requests();
    ASSERT_EQ(requests.size(), 1U);
    EXPECT_EQ(requests[0].id, o.message);
    EXPECT_EQ(requests[0].body, sized(hex(o.sent), requests[0].body.size()));

    modem_.answer(o.service, o.message, sized(hex(o.refusal), response_size));
    Expect(o, "refusal", o.on_refusal, &log);
    modem_.fail(o.service, o.message, 77);
    Expect(o, "failed send", o.on_failed_send, &log);
  }
  ExpectGolden(log, "carrier_operations");
}

TEST_F(CarrierRequestsTest, ServedRequestsLogDispatcherAndBuilderInOrder) {
  modem_.state().setBsrTimer(5);
  EXPECT_EQ(Ask(cdmaRequest(0x020000BC)), cdmaResponse(0x020000BC, 0, le32(5)));
  ExpectGolden(LogsOfLastRequest(), "carrier_served");
}

TEST_F(CarrierRequestsTest, WriteGroupsNeedAPayload) {
  for (const uint32_t id : {0x020000B1U, 0x020000B3U, 0x020000B4U, 0x020000B5U}) {
    EXPECT_EQ(Ask(cdmaRequest(id, hex("01 00 00 00"), 0)), cdmaResponse(id, 6));
    EXPECT_THAT(LogsOfLastRequest(),
                Contains(E("kesext_hook_sprint_set_nv_data_from_oem: ENTER EVENT VALUE " +
                           std::to_string(id) + " ")));
  }
  for (const uint32_t id : {0x02000002U, 0x02000004U}) {
    const std::string entry =
        E("kesext_hook_sprint_set_nv_spc_protected_data_from_oem: EVENT VALUE " + std::to_string(id) + " ");
    EXPECT_EQ(Ask(cdmaRequest(id, {})), cdmaResponse(id, 6));
    EXPECT_THAT(LogsOfLastRequest(), Not(Contains(entry)));
    Ask(cdmaRequest(id, hex("00")));
    EXPECT_THAT(LogsOfLastRequest(), Contains(entry));
  }
  EXPECT_EQ(Ask(cdmaRequest(0x020000B1, hex("01 00 00 00"), -1)), cdmaResponse(0x020000B1, 0))
      << "any other length goes";
}

TEST_F(CarrierRequestsTest, ObsoleteIdsAreAnsweredWithStatus6) {
  for (const uint32_t id : {0x020000BBU, 0x020000C2U, 0x020000C3U, 0x020000C6U, 0x020000C7U, 0x020000C8U,
                            0x020000C9U, 0x020000CAU, 0x020000CBU}) {
    EXPECT_EQ(Ask(withSpc(cdmaRequest(id, hex("01 02 03")))), withSpc(cdmaResponse(id, 6)));
    EXPECT_THAT(HandlerLogs(),
                ElementsAre(D("kesext_hook_sprint_handler: Obsolete MSG ID: " + std::to_string(id)),
                            E("kesext_hook_sprint_handle_obsolete_request: ENTER FUNCTION " +
                              std::to_string(id) + " ")));
  }
}

TEST_F(CarrierRequestsTest, ARoamingListSegmentIsCutTo16384Bytes) {
  const Bytes data = pattern(17000);
  for (const uint32_t size : {16384U, 20000U, 0xFFFFFFFFU}) {
    modem_.clearRequests();
    EXPECT_EQ(Ask(cdmaRequest(0x020000B4, concat(le32(size), data))), cdmaResponse(0x020000B4, 0));
    const auto requests = modem_.requests();
    ASSERT_EQ(requests.size(), 1U);
    EXPECT_EQ(requests[0].body, concat(le32(16384), handset::ByteView(data).first(16384)));
    EXPECT_THAT(HandlerLogs(), Contains(E("kes_qmi_sprint_set_roaming_list_segment: data_length (" +
                                          std::to_string(static_cast<int32_t>(size)) + ").")));
  }
}

TEST_F(CarrierRequestsTest, TheFactoryResetFlagIsTheOnlyPayloadByte) {
  const std::pair<Bytes, uint8_t> cases[] = {
      {{}, 0xFF}, {hex("00"), 0x00}, {hex("07"), 0x07}, {hex("01 02"), 0xFF}};
  for (const auto& [payload, flag] : cases) {
    Ask(cdmaRequest(0x020000B6, payload));
    EXPECT_EQ(modem_.requests().back().body, Bytes{flag});
  }
}

TEST_F(CarrierRequestsTest, ElementsAreWrittenWithBothLengthsAndFreshHeaders) {
  const Bytes data = hex("0A FF");
  EXPECT_EQ(Ask(withSpc(cdmaRequest(0x02000015, nvPayload(500, 1, 2, 2, data)))),
            cdmaResponse(0x02000015, 0));
  EXPECT_EQ(modem_.requests().back().body, concat(nvPayload(500, 1, 2, 2), le32(2), data, Bytes(510)));
  EXPECT_THAT(HandlerLogs(),
              ElementsAre(E("kesext_hook_sprint_rde_write: FUNCTION enter."),
                          E("NV Write with RDE index 500, record number 1, offset 2."),
                          E("kes_qmi_sprint_rde_write: hexdump len 2..."), E("HexDump: Data 0AFF"),
                          E("NV Write success for element 500"), E("RDE Write success for element 500")));
  for (const uint32_t length : {513U, 0xFFFFFFFFU}) {
    EXPECT_EQ(Ask(cdmaRequest(0x02000015, nvPayload(500, 0, 0, length))), cdmaResponse(0x02000015, 5));
    EXPECT_EQ(HandlerLogs().back(), E("RDE write error"));
  }
  modem_.answer(Service::vendor, kRdeWriteId, concat(le32(1), le32(9)));
  EXPECT_EQ(Ask(cdmaRequest(0x02000015, nvPayload(500, 0, 0, 1))), cdmaResponse(0x02000015, 5));
  EXPECT_THAT(HandlerLogs(), Contains(E("NV Write fail - 0, result - 1, error - 9")));
}

TEST_F(CarrierRequestsTest, ElementsAreReadWithTheModemsLengthAndFreshHeaders) {
  const auto modem_says = [this](uint32_t result, uint32_t error, uint32_t length) {
    modem_.answer(
        Service::vendor, kRdeReadId,
        concat(le32(result), le32(error), le32(11), Bytes(8), le32(length), le32(512), pattern(512)));
  };
  const Bytes request = withSpc(cdmaRequest(0x02000016, nvPayload(500, 2, 0xFFFFFFFD, 4)));
  modem_says(0, 0, 3);
  EXPECT_EQ(Ask(request),
            cdmaResponse(0x02000016, 0, concat(nvPayload(500, 2, 0xFFFFFFFD, 3, pattern(3)), Bytes(4))));
  EXPECT_EQ(modem_.requests().back().body, concat(nvPayload(500, 2, 0xFFFFFFFD, 0), Bytes(516)));
  EXPECT_THAT(HandlerLogs(), ElementsAre(E("kesext_hook_sprint_rde_read: Function Enter."),
                                         E("NV Read with RDE index (500), recordNum(2), offset(-3)."),
                                         E("NV Read 11, length 3, data length 512, grde - 01080F")));
  const std::tuple<uint32_t, uint32_t, uint32_t, const char*> failures[] = {
      {1, 16, 4, "NV Read fail - 0, result - 1, error - 16"},
      {0, 0, 513, "NV Read fail - 0, result - 0, error - 0"},
      {0, 0, 0xFFFFFFFF, "NV Read fail - 0, result - 0, error - 0"}};
  for (const auto& [result, error, length, line] : failures) {
    modem_says(result, error, length);
    EXPECT_EQ(Ask(request), cdmaResponse(0x02000016, 5));
    EXPECT_THAT(HandlerLogs(), Contains(E(line)));
    EXPECT_EQ(HandlerLogs().back(), E("RDE Read error"));
  }
}

TEST_F(CarrierRequestsTest, TheDdtmPreferenceIsOneByteOfElement10018) {
  for (const uint32_t offset : {0U, 2U}) {
    const uint32_t read = 0x020000B7 + offset;
    const uint32_t write = 0x020000B8 + offset;
    modem_.restore(Service::vendor, kRdeWriteId);
    modem_.rde().erase(10018);
    EXPECT_EQ(Ask(withSpc(cdmaRequest(read))), withSpc(cdmaResponse(read, 5)));
    EXPECT_THAT(HandlerLogs(), Not(Contains(HasSubstr("ddtm"))));
    EXPECT_EQ(Ask(withSpc(cdmaRequest(write, hex("F1 02")))), withSpc(cdmaResponse(write, 0)));
    EXPECT_EQ(HandlerLogs().front(), E("kesext_hook_sprint_set_ddtm_preference:   ddtm = 241 "));
    EXPECT_EQ(modem_.rde().get(10018), hex("F1"));
    EXPECT_EQ(Ask(withSpc(cdmaRequest(read))), withSpc(cdmaResponse(read, 0, hex("F1 00 00 00"))));
    EXPECT_EQ(HandlerLogs().back(), E("kesext_hook_sprint_get_ddtm_preference:   ddtm = 241 "));
    modem_.rde().set(10018, hex("01 02"));
    EXPECT_EQ(Ask(cdmaRequest(read)), cdmaResponse(read, 0, Bytes(4)))
        << "an element of two bytes reads as 0";
    EXPECT_THAT(HandlerLogs(), Contains(E("Input buffer is NULL or too small! max_len(1).")));
    modem_.fail(Service::vendor, kRdeWriteId, 8);
    EXPECT_EQ(Ask(cdmaRequest(write, hex("01"))), cdmaResponse(write, 5));
    EXPECT_EQ(HandlerLogs().back(), E("kesext_hook_sprint_set_ddtm_preference: Fail to write."));
  }
}

TEST_F(CarrierRequestsTest, TheLteOptionIsElement10017) {
  EXPECT_EQ(Ask(withSpc(cdmaRequest(0x020000BE))), withSpc(cdmaResponse(0x020000BE, 5)));
  EXPECT_EQ(HandlerLogs().front(), E("handle_get_lte_option: EVENT VALUE 33554622 "));
  for (const size_t size : {0U, 1U, 512U}) {
    modem_.rde().erase(10017);
    EXPECT_EQ(Ask(withSpc(cdmaRequest(0x020000BF, pattern(size)))), withSpc(cdmaResponse(0x020000BF, 0)));
    EXPECT_EQ(Ask(withSpc(cdmaRequest(0x020000BE))), withSpc(cdmaResponse(0x020000BE, 0, pattern(size))));
  }
  for (const int32_t msg_len : {513, -1, INT32_MIN}) {
    EXPECT_EQ(Ask(cdmaRequest(0x020000BF, pattern(600), msg_len)), cdmaResponse(0x020000BF, 5));
    EXPECT_EQ(HandlerLogs().back(), E("Data more than buffer size " + std::to_string(msg_len)));
  }
}

TEST_F(CarrierRequestsTest, TotOrdersAreBoundedTo15Entries) {
  const Bytes entries = pattern(60);
  EXPECT_EQ(Ask(cdmaRequest(0x020000C5, concat(handset::le16(15), entries))), cdmaResponse(0x020000C5, 0));
  EXPECT_EQ(Ask(cdmaRequest(0x020000C4)), cdmaResponse(0x020000C4, 0, concat(handset::le16(15), entries)));
  modem_.clearRequests();
  for (const uint16_t count : {uint16_t{16}, uint16_t{0xFFFF}}) {
    EXPECT_EQ(Ask(cdmaRequest(0x020000C5, concat(handset::le16(count), entries))),
              cdmaResponse(0x020000C5, 5));
    EXPECT_EQ(HandlerLogs().back(), E("Update TOT order result - 0"));
    modem_.answer(Service::vendor, 0x0104, concat(Bytes(10), handset::le16(count), Bytes(8), entries));
    EXPECT_EQ(Ask(cdmaRequest(0x020000C4)), cdmaResponse(0x020000C4, 0, concat(handset::le16(15), entries)));
  }
  EXPECT_EQ(modem_.requestCount(), 2U) << "the two reads";
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
  struct Case {
    uint8_t count, valid;
    uint8_t answered_count;
    size_t entries;
  };
  for (const Case& c :
       {Case{8, 1, 8, 8}, Case{3, 1, 3, 3}, Case{0, 1, 0, 0}, Case{2, 0, 2, 0}, Case{255, 9, 8, 8}}) {
    response[8] = c.count;
    response[9] = c.valid;
    modem_.answer(Service::vendor, 0x0106, response);
    Bytes list = concat(Bytes{c.answered_count}, handset::ByteView(expected).first(c.entries * 127));
    list.resize(1017);
    EXPECT_EQ(Ask(withSpc(cdmaRequest(0x020000C1))), withSpc(cdmaResponse(0x020000C1, 0, list)));
  }
  modem_.fail(Service::vendor, 0x0106, 77);
  EXPECT_EQ(Ask(cdmaRequest(0x020000C1)), cdmaResponse(0x020000C1, 0, Bytes(1017)));
  EXPECT_THAT(HandlerLogs(),
              ElementsAre(E("kes_qmi_sprint_get_active_ehrpd_apn: qmi_client_send_msg_sync failed (77).")));
}

TEST_F(CarrierRequestsTest, AnAkeyOfAnotherLengthIsRefusedUnsent) {
  for (const int32_t msg_len : {25, 27, 0, -1}) {
    EXPECT_EQ(Ask(withSpc(cdmaRequest(0x02000013, pattern(30), msg_len))),
              withSpc(cdmaResponse(0x02000013, 5)));
    EXPECT_EQ(HandlerLogs().back(), E("akey_len != sizeof(akey_req_msg.akey)"));
  }
  EXPECT_EQ(modem_.requestCount(), 0U);
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
  void SetUp() override {
    CarrierRequestsTest::SetUp();
    ModemReportsAll();
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
  Bytes Collect() { return Ask(withSpc(cdmaRequest(0x020000C0))); }
  static Bytes Answer(const char* data) { return withSpc(cdmaResponse(0x020000C0, 0, hex(data))); }

  static constexpr const char* kAll =
      "C8000000 3601 7800 2C1B0A80 F5 F6 02010000 04030000 C2 A1FF F7 DDFFFFFF";
  static constexpr const char* kNoPower =
      "C8000000 3601 7800 2C1B0A80 F5 F6 02010000 04030000 C2 A1FF F7 00000000";
};

TEST_F(LteDataTest, EverySourceHasItsField) {
  EXPECT_EQ(Collect(), Answer(kAll));
  EXPECT_THAT(HandlerLogs(), ElementsAre(E("handle_get_lte_data: EVENT VALUE 33554624 "),
                                         E("kes_qmi_sprint_get_lte_data entered ")));
  EXPECT_EQ(modem_.requests().back().body, le32(8)) << "the radio interface";
}

TEST_F(LteDataTest, AbsentFieldsAreZero) {
  struct Case {
    Service service;
    uint16_t message;
    Bytes response;
    const char* data;
  };
  const Case cases[] = {
      {Service::vendor, 0x010A, hex("01 00 00 00 00 00 00 00  00 EE 02 01  01 EE 04 03  01 F5  00 F6"),
       "C8000000 3601 7800 2C1B0A80 F5 00 00000000 04030000 C2 A1FF F7 DDFFFFFF"},
      {Service::vendor, 0x010A, hex("01 00 00 00 00 00 00 00  01 EE 02 01  00 EE 04 03  00 F5  01 F6"),
       "C8000000 3601 7800 2C1B0A80 00 F6 02010000 00000000 C2 A1FF F7 DDFFFFFF"},
      {Service::nas, 0x0024, Response(1508, 0, 0, {{1104, hex("01 EE 36 01 78 00")}, {1436, hex("22")}}),
       "C8000000 3601 7800 00000000 F5 F6 02010000 04030000 C2 A1FF F7 DDFFFFFF"},
      {Service::nas, 0x0024, Response(1508, 0, 0, {{1106, hex("11")}, {1434, hex("01 EE 2C 1B 0A 80")}}),
       "C8000000 0000 0000 2C1B0A80 F5 F6 02010000 04030000 C2 A1FF F7 DDFFFFFF"},
      {Service::nas, 0x004F, Response(16, 0, 0, {{10, hex("11 22 33 44")}}),
       "C8000000 3601 7800 2C1B0A80 F5 F6 02010000 04030000 00 0000 00 DDFFFFFF"},
      {Service::nas, 0x005A, Response(16, 0, 0, {{12, hex("11 22 33 44")}}), kNoPower},
  };
  for (const Case& c : cases) {
    ModemReportsAll();
    modem_.answer(c.service, c.message, c.response);
    EXPECT_EQ(Collect(), Answer(c.data));
  }
}

TEST_F(LteDataTest, FailedVendorReadsLeaveZeros) {
  modem_.answer(Service::vendor, 0x0107, concat(le32(0), le32(5), hex("C8 00 00 00")));
  modem_.fail(Service::vendor, 0x010A, 77);
  EXPECT_EQ(Collect(), Answer("00000000 3601 7800 2C1B0A80 00 00 00000000 00000000 C2 A1FF F7 DDFFFFFF"));
  EXPECT_THAT(HandlerLogs(), Contains(E("kes_qmi_sprint_get_lte_option: Get LTE service state failed (5).")));
  EXPECT_THAT(HandlerLogs(),
              Contains(E("kes_qmi_sprint_get_lte_ul_dl_channel: qmi_client_send_msg_sync failed (77).")));
  modem_.fail(Service::vendor, 0x0107, 77);
  modem_.answer(Service::vendor, 0x010A, concat(le32(0), le32(6), Bytes(12, 1)));
  EXPECT_EQ(Collect(), Answer("00000000 3601 7800 2C1B0A80 00 00 00000000 00000000 C2 A1FF F7 DDFFFFFF"));
  EXPECT_THAT(HandlerLogs(),
              Contains(E("kes_qmi_sprint_get_lte_service_state: qmi_client_send_msg_sync failed (77).")));
  EXPECT_THAT(HandlerLogs(), Contains(E("kes_qmi_sprint_get_lte_ul_dl_channel: failed (6).")));
}

TEST_F(LteDataTest, WithoutARadioThePowerIsWhatThereIs) {
  modem_.answer(Service::nas, 0x005A, Response(16, 1, 93));
  EXPECT_EQ(Collect(), Answer(kNoPower));
  EXPECT_EQ(HandlerLogs().back(), E("get_lte_data: QMI_NAS_GET_TX_RX_INFO failed (0), error (93)."));
  modem_.answer(Service::nas, 0x005A, Response(16, 1, 93, {{8, hex("01 00 00 00 DD FF FF FF")}}));
  EXPECT_EQ(Collect(), Answer(kAll));
}

TEST_F(LteDataTest, AFailedNasRequestIsAnsweredWithStatus5) {
  struct Case {
    uint16_t message;
    size_t size;
    const char* name;
  };
  for (const Case& c : {Case{0x005A, 16, "QMI_NAS_GET_TX_RX_INFO"}, Case{0x004F, 16, "QMI_NAS_GET_SIG_INFO"},
                        Case{0x0024, 1508, "QMI_NAS_GET_SERVING_SYSTEM"}}) {
    const std::string text = std::string("get_lte_data: ") + c.name + " failed ";
    modem_.answer(Service::nas, c.message, Response(c.size, 1, 12));
    EXPECT_EQ(Collect(), withSpc(cdmaResponse(0x020000C0, 5)));
    EXPECT_EQ(HandlerLogs().back(), E(text + "(0), error (12)."));
    modem_.fail(Service::nas, c.message, 77);
    EXPECT_EQ(Collect(), withSpc(cdmaResponse(0x020000C0, 5)));
    EXPECT_EQ(HandlerLogs().back(), E(text + "(77), error (0)."));
  }
}

}  // namespace
}  // namespace kesext_test
