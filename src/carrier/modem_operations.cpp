#include "carrier/modem_operations.h"

#include <algorithm>
#include <cstring>

#include "core/ground/log.h"

namespace kesext {

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
  const int32_t sent = sendVendor(kSetRoamingList, request, response);
  if (sent != 0) {
    LOGE("kes_qmi_sprint_set_roaming_list_segment: qmi_client_send_msg_sync failed (%d).", sent);
    return false;
  }
  return response.result == kSetRoamingList.success;
}

uint32_t kes_qmi_sprint_read_band(uint32_t band_index) {
  ReadBandResponse response;
  const int32_t sent = sendVendor(kReadBand, ReadBandRequest{band_index}, response);
  if (sent != 0) {
    LOGE("kes_qmi_sprint_read_band: qmi_client_send_msg_sync failed (%d).", sent);
    return 0;
  }
  if (response.result != kReadBand.success) {
    LOGE("kes_qmi_sprint_read_band: Read Band failed.");
    return 0;
  }
  return response.band_status;
}

bool kes_qmi_sprint_write_band(uint32_t band_index, uint32_t status) {
  ResultOnly response;
  const int32_t sent = sendVendor(kWriteBand, WriteBandRequest{band_index, status}, response);
  if (sent != 0) {
    LOGE("kes_qmi_sprint_write_band: qmi_client_send_msg_sync failed (%d).", sent);
    return false;
  }
  return response.result == kWriteBand.success;
}

bool kes_qmi_sprint_switch_proflie(uint32_t profile) {
  ResultOnly response;
  const int32_t sent = sendVendor(kSwitchProfile, SwitchProfileRequest{profile}, response);
  if (sent != 0) {
    LOGE("kes_qmi_sprint_switch_proflie: qmi_client_send_msg_sync failed (%d).", sent);
    return false;
  }
  if (response.result != kSwitchProfile.success) {
    LOGE("kes_qmi_sprint_switch_proflie: failed.");
    return false;
  }
  return true;
}

TotOrderReadResponse kes_qmi_sprint_get_tot_order() {
  TotOrderReadResponse response;
  const int32_t sent = sendVendor(kReadTotOrder, NoRequest{}, response);
  if (sent != 0) LOGE("kes_qmi_sprint_get_tot_order: qmi_client_send_msg_sync failed (%d).", sent);
  return response;
}

bool kes_qmi_sprint_update_tot_order(const TotOrderUpdateRequest& request) {
  ResultAndError response;
  const int32_t sent = sendVendor(kUpdateTotOrder, request, response);
  if (sent != 0) {
    LOGE("kes_qmi_sprint_update_tot_order: qmi_client_send_msg_sync failed (%d).", sent);
    return false;
  }
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
  const int32_t sent = sendVendor(kReadEhrpdApns, NoRequest{}, *response);
  if (sent != 0) LOGE("kes_qmi_sprint_get_active_ehrpd_apn: qmi_client_send_msg_sync failed (%d).", sent);
}

uint8_t kes_qmi_sprint_get_lte_service_state() {
  LteServiceStateResponse response;
  const int32_t sent = sendVendor(kReadLteServiceState, NoRequest{}, response);
  if (sent != 0) {
    LOGE("kes_qmi_sprint_get_lte_service_state: qmi_client_send_msg_sync failed (%d).", sent);
    return 0;
  }
  if (response.result != kReadLteServiceState.success) {
    LOGE("kes_qmi_sprint_get_lte_option: Get LTE service state failed (%d).", response.error);
    return 0;
  }
  return response.state;
}

uint32_t kes_qmi_sprint_get_bsr_timer() {
  BsrTimerResponse response;
  const int32_t sent = sendVendor(kReadBsrTimer, NoRequest{}, response);
  if (sent != 0) {
    LOGE("kes_qmi_sprint_get_bsr_timer: qmi_client_send_msg_sync failed (%d).", sent);
    return 0;
  }
  if (response.result != kReadBsrTimer.success) {
    LOGE("kes_qmi_sprint_get_bsr_timer: Get BSR timer failed (%d).", response.error);
    return 0;
  }
  return response.timer;
}

bool kes_qmi_sprint_set_bsr_timer(uint32_t timer) {
  ResultAndError response;
  const int32_t sent = sendVendor(kSetBsrTimer, BsrTimerRequest{timer}, response);
  if (sent != 0) {
    LOGE("kes_qmi_sprint_set_bsr_timer: qmi_client_send_msg_sync failed (%d).", sent);
    return false;
  }
  if (response.result != kSetBsrTimer.success) {
    LOGE("kes_qmi_sprint_set_bsr_timer: Set BSR timer failed (%d).", response.error);
    return false;
  }
  return true;
}

void kes_qmi_sprint_get_lte_ul_dl_channel(uint32_t* second_channel, uint32_t* first_channel,
                                          uint8_t* first_value, uint8_t* second_value) {
  LteChannelResponse response;
  const int32_t sent = sendVendor(kReadLteChannels, NoRequest{}, response);
  if (sent != 0) {
    LOGE("kes_qmi_sprint_get_lte_ul_dl_channel: qmi_client_send_msg_sync failed (%d).", sent);
    return;
  }
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
