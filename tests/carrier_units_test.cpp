// The carrier's operations where null pointers and bounds come in that no request can bring about.
#include <gmock/gmock.h>

#include <cstring>

#include "carrier/indications.h"
#include "carrier/lte_data.h"
#include "carrier/modem_operations.h"
#include "carrier/request_dispatcher.h"
#include "carrier/request_handlers.h"
#include "carrier/response_builder.h"
#include "carrier/service_codes.h"
#include "handset/hook_records.h"
#include "nam/engineering_data.h"
#include "support/unit_test.h"

namespace kesext_test {
namespace {

using handset::Bytes;
using handset::cdmaResponse;
using handset::hex;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class CarrierUnitsTest : public UnitTest {};

TEST_F(CarrierUnitsTest, AMissingRequestCountsAsServed) {
  EXPECT_EQ(kesext::kesext_hook_sprint_handler(nullptr, 0xFFFFFFFF, 0), 0U);
  EXPECT_THAT(fake_log, ElementsAre("E kesext_hook_sprint_handler: ENTER ",
                                    "E kesext_hook_sprint_handler: p_hdr == NULL "));
  EXPECT_EQ(Written(), Bytes{});
}

TEST_F(CarrierUnitsTest, TheBuilderSendsZerosForAMissingPayloadAndRefusesANegativeLength) {
  EXPECT_EQ(
      kesext::kesext_hook_sprint_send_response({.msgId = 0x0200000A, .msgLen = 6, .status = 3}, nullptr), 1U);
  EXPECT_EQ(Written(), cdmaResponse(0x0200000A, 3, Bytes(6)));
  EXPECT_EQ(fake_log.size(), 4U) << "no line about a payload";
  const uint8_t byte = 1;
  fake_log.clear();
  EXPECT_EQ(kesext::kesext_hook_sprint_send_response({.msgId = 1, .msgLen = 0}, &byte), 1U);
  EXPECT_EQ(Written(), cdmaResponse(1, 0));
  EXPECT_EQ(fake_log.size(), 4U) << "nor about an empty one";
  fake_log.clear();
  EXPECT_EQ(kesext::kesext_hook_sprint_send_response({.msgId = 1, .msgLen = -1}, nullptr), 0U);
  EXPECT_THAT(fake_log, ElementsAre("E kesext_hook_sprint_send_response: ENTER FUNCTION 1 "));
  EXPECT_EQ(Written(), Bytes{});
}

TEST_F(CarrierUnitsTest, NullPointersAreLogged) {
  kesext::EhrpdApnResponse response{};
  kesext::ActiveEhrpdApnList list{};
  kesext::LteErrorIndication indication{};
  kesext::LteErrorRecord record{};
  kesext::kes_qmi_sprint_get_active_ehrpd_apn(nullptr);
  kesext::convert_active_ehrpd_apn_from_qmi_to_ril(nullptr, &list);
  kesext::convert_active_ehrpd_apn_from_qmi_to_ril(&response, nullptr);
  EXPECT_FALSE(kesext::kes_qmi_sprint_get_lte_data(nullptr));
  uint8_t text[1000];
  uint32_t text_length = 0;
  EXPECT_EQ(kesext::kes_qmi_sprint_get_engineering_info(0, nullptr, &text_length), 0);
  EXPECT_EQ(kesext::kes_qmi_sprint_get_engineering_info(0, text, nullptr), 0);
  kesext::convert_lte_error_to_ril_format(nullptr, &record);
  kesext::convert_lte_error_to_ril_format(&indication, nullptr);
  EXPECT_THAT(fake_log,
              ElementsAre("E kes_qmi_sprint_get_active_ehrpd_apn: NULL point",
                          "E convert_active_ehrpd_apn_from_qmi_to_ril: p_qmi_resp = NULL",
                          "E convert_active_ehrpd_apn_from_qmi_to_ril: p_ril_active_ehrpd_apn = NULL",
                          "E kes_qmi_sprint_get_lte_data entered ",
                          "E kes_qmi_sprint_get_lte_data: p_lte_data == NULL",
                          "E convert_lte_error_to_ril_format: parameter is null!",
                          "E convert_lte_error_to_ril_format: parameter is null!"));
  EXPECT_THAT(fake_sends, IsEmpty());
}

TEST_F(CarrierUnitsTest, OnlyPresentChannelsAreStored) {
  const auto modem_reports = [](const Bytes& body) {
    fake_modem = [body](const FakeSend&, uint8_t* response) {
      std::memcpy(response, body.data(), body.size());
      return 0;
    };
  };
  uint32_t first = 9, second = 9;
  uint8_t first_value = 9, second_value = 9;
  const auto ask = [&] {
    kesext::kes_qmi_sprint_get_lte_ul_dl_channel(&second, &first, &first_value, &second_value);
    return std::vector<uint32_t>{first, second, first_value, second_value};
  };
  modem_reports(hex("01 00 00 00 00 00 00 00  00 EE 02 01  00 EE 04 03  01 05  00 06"));
  EXPECT_THAT(ask(), ElementsAre(9, 9, 5, 9));
  modem_reports(hex("02 00 00 00 07 00 00 00  01 EE 02 01  01 EE 04 03  01 07  01 06"));
  EXPECT_THAT(ask(), ElementsAre(9, 9, 5, 9)) << "nothing on a failure";
  modem_reports(hex("01 00 00 00 00 00 00 00  01 EE 02 01  01 EE 04 03  00 07  01 06"));
  EXPECT_THAT(ask(), ElementsAre(0x0102, 0x0304, 5, 6));
  kesext::kes_qmi_sprint_get_lte_ul_dl_channel(nullptr, nullptr, nullptr, nullptr);
}

TEST_F(CarrierUnitsTest, WithoutMemoryTheRequestIsDeclinedAndTheMessageDropped) {
  const kesext::HookRequest* request = Request(handset::cdmaRequest(0x020000BC));
  fake_out_of_memory = true;
  EXPECT_EQ(kesext::kesext_hook_sprint_handler(request, 0xFFFFFFFF, 0), 0xFFFFFFFFU);
  EXPECT_EQ(fake_log.back(), "E kesext_hook_sprint_send_response: ENTER FUNCTION 33554620 ");
  const uint32_t value = 7;
  kesext::send_unsol_response(0x020001B0, &value, sizeof value);
  EXPECT_EQ(fake_log.back(), "E send_unsol_response: out of memory!");
  EXPECT_EQ(Written(), Bytes{});
}

TEST_F(CarrierUnitsTest, TheCodeIsChangedFromTheCurrentToTheNewOne) {
  const Bytes current = handset::bytesOf("000000");
  const Bytes changed = handset::bytesOf("123456");
  const auto change = [&] { return kesext::kes_qmi_sprint_write_spc(current.data(), changed.data()); };
  EXPECT_TRUE(change());
  ASSERT_EQ(fake_sends.size(), 1U);
  EXPECT_EQ(fake_sends[0].service, FakeService::dms);
  EXPECT_EQ(fake_sends[0].msg_id, 0x52U);
  EXPECT_EQ(fake_sends[0].request, handset::concat(current, changed));
  EXPECT_EQ(fake_sends[0].response_length, 8U);
  fake_modem = [](const FakeSend&, uint8_t* response) {
    response[0] = 1;
    response[4] = 12;
    return 0;
  };
  EXPECT_FALSE(change());
  fake_modem = [](const FakeSend&, uint8_t*) { return 77; };
  EXPECT_FALSE(change());
  EXPECT_THAT(fake_log,
              ElementsAre("E kes_qmi_sprint_write_spc entered ", "E kes_qmi_sprint_write_spc entered ",
                          "E kes_qmi_sprint_write_spc Error = 12", "E kes_qmi_sprint_write_spc entered ",
                          "E kes_qmi_sprint_write_spc: qmi_client_send_msg_sync (77)."));
}

TEST_F(CarrierUnitsTest, WithoutNasAndDmsClientsRequestsAreAnsweredWithTheirFailure) {
  fake_modem = [](const FakeSend& sent, uint8_t*) { return sent.service == FakeService::vendor ? 0 : -1; };
  const auto answer_of = [this](const Bytes& request) {
    EXPECT_EQ(kesext::kesext_hook_sprint_handler(Request(request), 0xFFFFFFFF, 0), 0U);
    return Written();
  };
  EXPECT_EQ(answer_of(handset::cdmaRequest(0x020000C0)), cdmaResponse(0x020000C0, 5));
  EXPECT_EQ(answer_of(handset::cdmaRequest(0x0200000A)), cdmaResponse(0x0200000A, 3, Bytes(6)));
  EXPECT_EQ(answer_of(handset::cdmaRequest(0x02000013, Bytes(26))), cdmaResponse(0x02000013, 5));
}

TEST_F(CarrierUnitsTest, LteDataKeepsWhatNoSourceReportsButThePowerWithoutARadio) {
  fake_modem = [](const FakeSend& sent, uint8_t* response) {
    if (sent.msg_id == 0x005A) {
      response[0] = 1;
      response[4] = 93;
    }
    return 0;
  };
  kesext::LteData data;
  std::memset(&data, 0xEE, sizeof data);
  EXPECT_TRUE(kesext::kes_qmi_sprint_get_lte_data(&data));
  const Bytes expected = handset::concat(Bytes(4), Bytes(22, 0xEE), Bytes(4));
  EXPECT_EQ(std::memcmp(&data, expected.data(), expected.size()), 0);
}

}  // namespace
}  // namespace kesext_test
