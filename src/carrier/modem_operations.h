// The carrier's modem operations: one synchronous vendor message each, on the dispatch loop's thread.
// Failures are logged and become the value that is named.
#pragma once

#include <cstdint>

#include "carrier/modem_messages.h"

namespace kesext {

inline constexpr uint32_t kBandClass10 = 0;
inline constexpr uint32_t kBandClass14 = 1;

/// False on any failure.
bool kes_qmi_sprint_fatory_reset(uint8_t reset_flag);

/// Sends `size` bytes, at most kRoamingListSegmentMax of them. False on any failure.
bool kes_qmi_sprint_set_roaming_list_segment(uint32_t size, const uint8_t* data);

/// The band's status, or 0 on any failure.
uint32_t kes_qmi_sprint_read_band(uint32_t band_index);

/// False on any failure.
bool kes_qmi_sprint_write_band(uint32_t band_index, uint32_t status);

/// False on any failure.
bool kes_qmi_sprint_switch_proflie(uint32_t profile);

/// All zero when the send failed.
TotOrderReadResponse kes_qmi_sprint_get_tot_order();

/// False on any failure.
bool kes_qmi_sprint_update_tot_order(const TotOrderUpdateRequest& request);

/// Fills the modem's list, with zeros when the send failed.
void kes_qmi_sprint_get_active_ehrpd_apn(EhrpdApnResponse* response);

/// The service state, or 0 on any failure.
uint8_t kes_qmi_sprint_get_lte_service_state();

/// The timer, or 0 on any failure.
uint32_t kes_qmi_sprint_get_bsr_timer();

/// False on any failure.
bool kes_qmi_sprint_set_bsr_timer(uint32_t timer);

/// Stores what the modem reports; what it does not, or on a failure all, stays as the caller put it. Each
/// place may be null.
void kes_qmi_sprint_get_lte_ul_dl_channel(uint32_t* second_channel, uint32_t* first_channel,
                                          uint8_t* first_value, uint8_t* second_value);

}  // namespace kesext
