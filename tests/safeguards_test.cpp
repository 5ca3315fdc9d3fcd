// What guards against null pointers, bounds and missing memory that no request can bring about.
#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "adam/log_packets.h"
#include "adam/utility_indication.h"
#include "carrier/indications.h"
#include "carrier/lte_data.h"
#include "carrier/modem_operations.h"
#include "carrier/request_dispatcher.h"
#include "carrier/request_handlers.h"
#include "carrier/response_builder.h"
#include "carrier/service_codes.h"
#include "core/ground/carrier_response.h"
#include "core/ground/parent_pipes.h"
#include "core/test_notification.h"
#include "generic/antenna_tuning.h"
#include "generic/data_plmn.h"
#include "generic/pfp.h"
#include "generic/signal_coverage.h"
#include "generic/utility_requests.h"
#include "nam/engineering_data.h"
#include "nv/nv_requests.h"
#include "nv/rde_operations.h"
#include "platform/qmi_client.h"
#include "qmi/send.h"
#include "support/golden.h"
#include "support/records.h"
#include "support/unit_test.h"

namespace kesext_test {
namespace {

using handset::Bytes;
using handset::hex;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class SafeguardsTest : public UnitTest {
 protected:
  /// Decoding needs no more of a client than that it is there.
  static qmi_client_type Client() {
    static int client;
    return reinterpret_cast<qmi_client_type>(&client);
  }
};

TEST_F(SafeguardsTest, AMissingRequestCountsAsServed) {
  EXPECT_EQ(kesext::kesext_hook_sprint_handler(nullptr, 0xFFFFFFFF, 0), 0U);
  EXPECT_THAT(fake_log, ElementsAre("E kesext_hook_sprint_handler: ENTER ",
                                    "E kesext_hook_sprint_handler: p_hdr == NULL "));
  EXPECT_EQ(Written(), Bytes{});
}

TEST_F(SafeguardsTest, TheBuilderSendsZerosForAMissingPayloadAndRefusesANegativeLength) {
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

TEST_F(SafeguardsTest, NullPointersAreLogged) {
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
  ExpectGolden(fake_log, "null_pointers");
  EXPECT_THAT(fake_sends, IsEmpty());
  EXPECT_EQ(kesext::kes_qmi_sprint_rde_read(1, 0, 0, nullptr, 8, nullptr), 0U);
  EXPECT_EQ(fake_log.back(), "E Input buffer is NULL or too small! max_len(8).");
}

TEST_F(SafeguardsTest, OfLteDataThatTheModemDoesNotTellOnlyThePowerWithoutARadioIsStored) {
  fake_modem = [](const FakeSend& sent, uint8_t* response) {
    response[0] = sent.msg_id == 0x5A ? 1 : 0;
    response[4] = 93;
    return 0;
  };
  kesext::LteData data;
  std::memset(&data, 0x11, sizeof data);
  EXPECT_TRUE(kesext::kes_qmi_sprint_get_lte_data(&data));
  EXPECT_EQ(handset::recordBytes(data), handset::concat(Bytes(4), Bytes(22, 0x11), Bytes(4)));
  fake_modem = [](const FakeSend& sent, uint8_t* response) {
    response[0] = 1;
    std::fill_n(response + 8, sent.response_length - 8, uint8_t{1});
    return 0;
  };
  kesext::kes_qmi_sprint_get_lte_ul_dl_channel(nullptr, nullptr, nullptr, nullptr);
}

TEST_F(SafeguardsTest, WithoutMemoryTheRequestIsDeclinedAndTheMessageDropped) {
  const kesext::HookRequest& request = Request(cdmaRequest(0x020000BD));
  fake_out_of_memory = true;
  EXPECT_EQ(kesext::kesext_hook_sprint_handler(&request, 0xFFFFFFFF, 0), 0xFFFFFFFFU);
  EXPECT_EQ(fake_log.back(), "E kesext_hook_sprint_send_response: out of memory!");
  const uint32_t value = 7;
  kesext::send_unsol_response(0x020001B0, &value, sizeof value);
  EXPECT_EQ(fake_log.back(), "E send_unsol_response: out of memory!");
  EXPECT_EQ(Written(), Bytes{});
}

TEST_F(SafeguardsTest, WithoutMemoryAnElementIsReadOnceAndAnsweredWithAFailure) {
  const kesext::HookRequest& request = Request(cdmaRequest(0x02000016, nvPayload(53, 0, 0, 0)));
  fake_out_of_memory = true;
  EXPECT_EQ(kesext::kesext_hook_sprint_handler(&request, 0xFFFFFFFF, 0), 0U);
  EXPECT_EQ(Written(), cdmaResponse(0x02000016, 5));
  EXPECT_EQ(fake_sends.size(), 1U);
}

TEST_F(SafeguardsTest, WithoutMemoryTheShortAnswersAndTheFailuresStillGoOut) {
  fake_out_of_memory = true;
  const kesext::HookRequest& cdma = Request(cdmaRequest(0x02000017));
  kesext::sendStatusResponse(&cdma, 6);
  EXPECT_EQ(Written(), cdmaResponse(0x02000017, 6));
  kesext::handleNvReadRequest(cdma, 0x26, 0);
  EXPECT_EQ(Written(), cdmaResponse(0x02000017, 5));
  kesext::handleGenNvReadRequest(cdma, 0, 0);
  EXPECT_EQ(Written(), cdmaResponse(0x02000017, 5));
  kesext::handleUtilsRequest(cdma, 0, 0);
  EXPECT_EQ(Written(), cdmaResponse(0x02000017, 5));
  const kesext::HookRequest& generic = Request(genericRequest(0x05002A));
  kesext::sendGenericErrorResponse(generic.bytes.data());
  EXPECT_EQ(Written(), hex("00 05 00 2A FF FF FF FF"));
  kesext::handleSysInfoFilter(generic, 0, 0);
  EXPECT_EQ(Written(), hex("00 05 00 2A 01 00 00 00 00"));
  kesext::kesext_hook_set_antenna_tuning(generic, 0, 0);
  EXPECT_EQ(Written(), hex("00 05 00 2A 01 00 00 00 05"));
}

TEST_F(SafeguardsTest, AnAnswerIsNotGivenMoreThanItHolds) {
  kesext::CarrierResponse answer;
  answer.putBytes(Bytes(1040, 7).data(), 1040);
  answer.putBytes(Bytes(5, 8).data(), 5);
  answer.putZeros(1);
  EXPECT_EQ(answer.length(), 1044);
  EXPECT_EQ(answer.payload()[1039], 7);
  EXPECT_EQ(answer.payload()[1043], 8);
  kesext::CarrierResponse zeros;
  zeros.putZeros(6);
  EXPECT_EQ(zeros.payload(), nullptr) << "the builder's log tells of no payload";
}

TEST_F(SafeguardsTest, AResponseIsClearedBetweenItsMembersToo) {
  struct Padded {
    uint32_t result;
    uint32_t error;
    uint8_t value;
  };
  Padded response;
  std::memset(&response, 0xAA, sizeof response);
  kesext::sendVendor(kesext::VendorMessage<kesext::NoRequest, Padded>{1}, kesext::NoRequest{}, response);
  const auto* bytes = reinterpret_cast<const uint8_t*>(&response);
  EXPECT_EQ(Bytes(bytes, bytes + sizeof response), Bytes(12));
}

TEST_F(SafeguardsTest, WithoutMemoryIndicationsAreDropped) {
  const Bytes tuner = handset::concat(handset::le32(2), handset::hex("81 01"), Bytes(126));
  const Bytes record(232);
  fake_out_of_memory = true;
  kesext::tunerIndHndlr(Client(), 0x0110, tuner.data(), static_cast<uint32_t>(tuner.size()), nullptr);
  kesext::myPfpIndHndlr(Client(), 0x000A, record.data(), 232, nullptr);
  kesext::sigcovIndHndlr(Client(), 0x010C, record.data(), 32, nullptr);
  kesext::dataPlmnIndHndlr(Client(), 0x0016, nullptr, 0, nullptr);
  kesext::utilsIndHndlr(Client(), 0x000B, Bytes(520).data(), 520, nullptr);
  kesext::adam_handle_kpi_data({});
  kesext::sendUnsolNotify(nullptr, 1, nullptr, 0, nullptr);
  EXPECT_THAT(fake_log,
              ElementsAre("E tunerIndHndlr: tuner indication is: 129 1", "E tunerIndHndlr: out of memory!",
                          "E sigcovIndHndlr: out of memory!", "E dataPlmnIndHndlr: out of memory!",
                          "E utilsIndHndlr: out of memory!", "E adam_handle_kpi_data: out of memory!",
                          "E sendUnsolNotify: out of memory!"));
  EXPECT_EQ(Written(), Bytes{});
}

}  // namespace
}  // namespace kesext_test
