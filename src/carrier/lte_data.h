// A snapshot of the LTE connection, collected from the vendor extension and NAS services.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/ground/carrier_response.h"

namespace kesext {

/// What the parent gets; a field whose source is absent is 0.
struct [[gnu::packed]] LteData {
  uint32_t service_state;
  uint16_t serving_value_1;
  uint16_t serving_value_2;
  uint32_t serving_value_3;
  uint8_t channel_byte_1;
  uint8_t channel_byte_2;
  uint32_t first_channel;
  uint32_t second_channel;
  int8_t rssi;       // dBm
  int16_t rsrp;      // dBm
  int8_t rsrq;       // dB
  int32_t tx_power;  // as the modem's transmit information has it
};
static_assert(sizeof(LteData) == 30);
static_assert(offsetof(LteData, serving_value_1) == 4);
static_assert(offsetof(LteData, serving_value_2) == 6);
static_assert(offsetof(LteData, serving_value_3) == 8);
static_assert(offsetof(LteData, channel_byte_1) == 12);
static_assert(offsetof(LteData, channel_byte_2) == 13);
static_assert(offsetof(LteData, first_channel) == 14);
static_assert(offsetof(LteData, second_channel) == 18);
static_assert(offsetof(LteData, rssi) == 22);
static_assert(offsetof(LteData, rsrp) == 23);
static_assert(offsetof(LteData, rsrq) == 25);
static_assert(offsetof(LteData, tx_power) == 26);

/// Fills the record, which the caller has cleared. False when a NAS request failed; that the radio is off is
/// none.
bool kes_qmi_sprint_get_lte_data(LteData* data);

/// Answers with a snapshot.
void handle_get_lte_data(const HookRequest& request, uint32_t argument, CarrierResponse& answer);

}  // namespace kesext
