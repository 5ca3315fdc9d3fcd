#include "carrier/modem_operations.h"

#include <algorithm>
#include <cstring>

#include "core/ground/log.h"

namespace kesext {

namespace {

/// Sends for an operation, under whose name a failed send is logged. Whether a response came.
template <typename Message, typename Request, typename Response>
bool sendFor(const char* operation, const Message& message, const Request& request, Response& response) {
  const int32_t sent = sendVendor(message, request, response);
  if (sent != 0) LOGE("%s: qmi_client_send_msg_sync failed (%d).", operation, sent);
  return sent == 0;
}

}  // namespace

bool kes_qmi_sprint_fatory_reset(uint8_t reset_flag) {
  FactoryResetResponse response;
  const int32_t sent = sendVendor(kFactoryReset, FactoryResetRequest{reset_flag}, response);
  if (sent == 0 && response.result == kFactoryReset.success) return true;
  LOGE("kes_qmi_sprint_fatory_reset: qmi_client_send_msg_sync failed (%d), result (%d).", sent,
       response.result);
  return false;
}

bool kes_qmi_sprint_set_roaming_list_segment(uint32_t size, const uint8_t* data) {
  LOGE("kes_qmi_sprint_set_roaming_list_segment: data_length (%d).", size);
  RoamingListRequest request{};
  request.data_length = std::min(size, kRoamingListSegmentMax);
  std::memcpy(request.data, data, request.data_length);
  ResultOnly response;
  if (!sendFor(__func__, kSetRoamingList, request, response)) return false;
  return response.result == kSetRoamingList.success;
}

uint32_t kes_qmi_sprint_read_band(uint32_t band_index) {
  ReadBandResponse response;
  if (!sendFor(__func__, kReadBand, ReadBandRequest{band_index}, response)) return 0;
  if (response.result != kReadBand.success) {
    LOGE("kes_qmi_sprint_read_band: Read Band failed.");
    return 0;
  }
  return response.band_status;
}

bool kes_qmi_sprint_write_band(uint32_t band_index, uint32_t status) {
  ResultOnly response;
  if (!sendFor(__func__, kWriteBand, WriteBandRequest{band_index, status}, response)) return false;
  return response.result == kWriteBand.success;
}

bool kes_qmi_sprint_switch_proflie(uint32_t profile) {
  ResultOnly response;
  if (!sendFor(__func__, kSwitchProfile, SwitchProfileRequest{profile}, response)) return false;
  if (response.result != kSwitchProfile.success) {
    LOGE("kes_qmi_sprint_switch_proflie: failed.");
    return false;
  }
  return true;
}

TotOrderReadResponse kes_qmi_sprint_get_tot_order() {
  TotOrderReadResponse response;
  sendFor(__func__, kReadTotOrder, NoRequest{}, response);
  return response;
}

bool kes_qmi_sprint_update_tot_order(const TotOrderUpdateRequest& request) {
  ResultAndError response;
  if (!sendFor(__func__, kUpdateTotOrder, request, response)) return false;
  if (response.result != kUpdateTotOrder.success) {
    LOGE("kes_qmi_sprint_update_tot_order: Update TOT order failed (%d).", response.error);
    return false;
  }
  return true;
}

void kes_qmi_sprint_get_active_ehrpd_apn(EhrpdApnResponse* response) {
  if (response == nullptr) {
    LOGE("kes_qmi_sprint_get_active_ehrpd_apn: NULL point");
    return;
  }
  sendFor(__func__, kReadEhrpdApns, NoRequest{}, *response);
}

uint8_t kes_qmi_sprint_get_lte_service_state() {
  LteServiceStateResponse response;
  if (!sendFor(__func__, kReadLteServiceState, NoRequest{}, response)) return 0;
  if (response.result != kReadLteServiceState.success) {
    LOGE("kes_qmi_sprint_get_lte_option: Get LTE service state failed (%d).", response.error);
    return 0;
  }
  return response.state;
}

uint32_t kes_qmi_sprint_get_bsr_timer() {
  BsrTimerResponse response;
  if (!sendFor(__func__, kReadBsrTimer, NoRequest{}, response)) return 0;
  if (response.result != kReadBsrTimer.success) {
    LOGE("kes_qmi_sprint_get_bsr_timer: Get BSR timer failed (%d).", response.error);
    return 0;
  }
  return response.timer;
}

bool kes_qmi_sprint_set_bsr_timer(uint32_t timer) {
  ResultAndError response;
  if (!sendFor(__func__, kSetBsrTimer, BsrTimerRequest{timer}, response)) return false;
  if (response.result != kSetBsrTimer.success) {
    LOGE("kes_qmi_sprint_set_bsr_timer: Set BSR timer failed (%d).", response.error);
    return false;
  }
  return true;
}

void kes_qmi_sprint_get_lte_ul_dl_channel(uint32_t* second_channel, uint32_t* first_channel,
                                          uint8_t* first_value, uint8_t* second_value) {
  LteChannelResponse response;
  if (!sendFor(__func__, kReadLteChannels, NoRequest{}, response)) return;
  if (response.result != kReadLteChannels.success) {
    LOGE("kes_qmi_sprint_get_lte_ul_dl_channel: failed (%d).", response.error);
    return;
  }
  const auto store = [](auto* place, uint8_t valid, auto value) {
    if (place != nullptr && valid != 0) *place = value;
  };
  store(first_channel, response.first_channel_valid, response.first_channel);
  store(second_channel, response.second_channel_valid, response.second_channel);
  store(first_value, response.first_value_valid, response.first_value);
  store(second_value, response.second_value_valid, response.second_value);
}

}  // namespace kesext
