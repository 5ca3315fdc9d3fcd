// The carrier's modem operations: one synchronous vendor message each, on the dispatch loop's thread. A send
// that fails and a modem that refuses give the same: false, or zeros where a value is returned. Every failed
// send is logged, and every refusal but that of a roaming list or of a band's status to write.
#pragma once

#include <cstdint>

#include "carrier/modem_messages.h"

namespace kesext {

inline constexpr uint32_t kBandClass10 = 0;
inline constexpr uint32_t kBandClass14 = 1;

/// Resets to what the factory set.
bool kes_qmi_sprint_fatory_reset(uint8_t reset_flag);

/// Sends `size` bytes of the list, at most kRoamingListSegmentMax of them.
bool kes_qmi_sprint_set_roaming_list_segment(uint32_t size, const uint8_t* data);

/// The band's status.
uint32_t kes_qmi_sprint_read_band(uint32_t band_index);

/// Sets the band's status.
bool kes_qmi_sprint_write_band(uint32_t band_index, uint32_t status);

/// Makes another profile the active one.
bool kes_qmi_sprint_switch_proflie(uint32_t profile);

/// The TOT order; the modem cannot refuse it.
TotOrderReadResponse kes_qmi_sprint_get_tot_order();

/// Replaces the TOT order.
bool kes_qmi_sprint_update_tot_order(const TotOrderUpdateRequest& request);

/// Fills in the modem's list, which it cannot refuse. A null pointer is logged, and nothing done.
void kes_qmi_sprint_get_active_ehrpd_apn(EhrpdApnResponse* response);

/// The service state.
uint8_t kes_qmi_sprint_get_lte_service_state();

/// The timer.
uint32_t kes_qmi_sprint_get_bsr_timer();

/// Sets the timer.
bool kes_qmi_sprint_set_bsr_timer(uint32_t timer);

/// Stores what the modem reports; what it does not, or on a failure all, stays as the caller put it. Each
/// place may be null.
void kes_qmi_sprint_get_lte_ul_dl_channel(uint32_t* second_channel, uint32_t* first_channel,
                                          uint8_t* first_value, uint8_t* second_value);

}  // namespace kesext
