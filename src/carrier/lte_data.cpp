#include "carrier/lte_data.h"

#include "carrier/modem_operations.h"
#include "core/ground/log.h"
#include "qmi/send.h"

namespace kesext {

namespace {

struct ServingSystemResponse {
  uint32_t result;  // 0: success
  uint32_t error;
  uint8_t unread_8[1096];
  uint8_t values_1_2_valid;
  uint16_t value_1;
  uint16_t value_2;
  uint8_t unread_1110[324];
  uint8_t value_3_valid;
  uint32_t value_3;
  uint8_t unread_1440[68];
};
static_assert(sizeof(ServingSystemResponse) == 1508 && offsetof(ServingSystemResponse, error) == 4);
static_assert(offsetof(ServingSystemResponse, values_1_2_valid) == 1104);
static_assert(offsetof(ServingSystemResponse, value_1) == 1106);
static_assert(offsetof(ServingSystemResponse, value_2) == 1108);
static_assert(offsetof(ServingSystemResponse, value_3_valid) == 1434);
static_assert(offsetof(ServingSystemResponse, value_3) == 1436);

struct SignalInfoResponse {
  uint32_t result;  // 0: success
  uint32_t error;
  uint8_t lte_valid;
  uint8_t unread_9;
  int8_t lte_rssi;
  int8_t lte_rsrq;
  int16_t lte_rsrp;
};
static_assert(sizeof(SignalInfoResponse) == 16 && offsetof(SignalInfoResponse, error) == 4);
static_assert(offsetof(SignalInfoResponse, lte_valid) == 8);
static_assert(offsetof(SignalInfoResponse, lte_rssi) == 10);
static_assert(offsetof(SignalInfoResponse, lte_rsrq) == 11);
static_assert(offsetof(SignalInfoResponse, lte_rsrp) == 12);

struct TxRxInfoRequest {
  uint32_t radio_interface;
};
static_assert(sizeof(TxRxInfoRequest) == 4);

struct TxRxInfoResponse {
  uint32_t result;  // 0: success
  uint32_t error;
  uint8_t tx_valid;
  int32_t tx_power;
};
static_assert(sizeof(TxRxInfoResponse) == 16 && offsetof(TxRxInfoResponse, error) == 4);
static_assert(offsetof(TxRxInfoResponse, tx_valid) == 8);
static_assert(offsetof(TxRxInfoResponse, tx_power) == 12);

constexpr NasMessage<NoRequest, ServingSystemResponse> kServingSystem{0x0024};
constexpr NasMessage<NoRequest, SignalInfoResponse> kSignalInfo{0x004F};
constexpr NasMessage<TxRxInfoRequest, TxRxInfoResponse> kTxRxInfo{0x005A};

constexpr uint32_t kRadioInterfaceLte = 8;
/// Error of the transmit information while the radio is off.
constexpr uint32_t kErrorNoRadio = 93;

bool readServingSystem(LteData& data) {
  ServingSystemResponse response;
  const int32_t sent = sendNas(kServingSystem, NoRequest{}, response);
  if (sent != 0 || response.result != 0) {
    LOGE("get_lte_data: QMI_NAS_GET_SERVING_SYSTEM failed (%d), error (%d).", sent, response.error);
    return false;
  }
  if (response.values_1_2_valid != 0) {
    data.serving_value_1 = response.value_1;
    data.serving_value_2 = response.value_2;
  }
  if (response.value_3_valid != 0) data.serving_value_3 = response.value_3;
  return true;
}

bool readSignal(LteData& data) {
  SignalInfoResponse response;
  const int32_t sent = sendNas(kSignalInfo, NoRequest{}, response);
  if (sent != 0 || response.result != 0) {
    LOGE("get_lte_data: QMI_NAS_GET_SIG_INFO failed (%d), error (%d).", sent, response.error);
    return false;
  }
  if (response.lte_valid != 0) {
    data.rssi = response.lte_rssi;
    data.rsrp = response.lte_rsrp;
    data.rsrq = response.lte_rsrq;
  }
  return true;
}

bool readTransmitPower(LteData& data) {
  TxRxInfoResponse response;
  const int32_t sent = sendNas(kTxRxInfo, TxRxInfoRequest{kRadioInterfaceLte}, response);
  if (sent != 0 || response.result != 0) {
    LOGE("get_lte_data: QMI_NAS_GET_TX_RX_INFO failed (%d), error (%d).", sent, response.error);
    if (response.error != kErrorNoRadio) return false;
    data.tx_power = 0;
  }
  if (response.tx_valid != 0) data.tx_power = response.tx_power;
  return true;
}

}  // namespace

bool kes_qmi_sprint_get_lte_data(LteData* data) {
  LOGE("kes_qmi_sprint_get_lte_data entered ");
  if (data == nullptr) {
    LOGE("kes_qmi_sprint_get_lte_data: p_lte_data == NULL");
    return false;
  }
  data->service_state = kes_qmi_sprint_get_lte_service_state();
  uint32_t first_channel = data->first_channel;
  uint32_t second_channel = data->second_channel;
  kes_qmi_sprint_get_lte_ul_dl_channel(&second_channel, &first_channel, &data->channel_byte_1,
                                       &data->channel_byte_2);
  data->first_channel = first_channel;
  data->second_channel = second_channel;
  return readServingSystem(*data) && readSignal(*data) && readTransmitPower(*data);
}

void handle_get_lte_data(const HookRequest& request, uint32_t, CarrierResponse& answer) {
  LOGE("handle_get_lte_data: EVENT VALUE %d ", request.msgId());
  LteData data{};
  const bool done = kes_qmi_sprint_get_lte_data(&data);
  answer.setStatus(done);
  if (done) answer.put(data);
}

}  // namespace kesext
