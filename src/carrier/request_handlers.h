// The handlers of the carrier's requests that read or write one thing in the modem. Each fills the answer
// that its table row sends.
#pragma once

#include <cstddef>
#include <cstdint>

#include "carrier/modem_messages.h"
#include "core/ground/carrier_response.h"

namespace kesext {

/// Payload of the TOT order requests.
struct [[gnu::packed]] TotOrder {
  uint16_t count;
  uint8_t entries[kTotOrderEntriesMax * kTotOrderEntrySize];
};
static_assert(sizeof(TotOrder) == 62);
static_assert(offsetof(TotOrder, entries) == 2);

/// One APN of the list that the parent gets.
struct [[gnu::packed]] ActiveEhrpdApn {
  uint8_t apn[kEhrpdApnNameSize];
  uint32_t first_word;
  uint32_t second_word;  // its bytes in the opposite order to the modem's
  uint8_t block[kEhrpdApnBlockSize];
};
static_assert(sizeof(ActiveEhrpdApn) == 127);
static_assert(offsetof(ActiveEhrpdApn, first_word) == 103);
static_assert(offsetof(ActiveEhrpdApn, second_word) == 107);
static_assert(offsetof(ActiveEhrpdApn, block) == 111);

struct [[gnu::packed]] ActiveEhrpdApnList {
  uint8_t count;
  ActiveEhrpdApn apns[kEhrpdApnsMax];
};
static_assert(sizeof(ActiveEhrpdApnList) == 1017);
static_assert(offsetof(ActiveEhrpdApnList, apns) == 1);

/// Turns the modem's list into the parent's. A null pointer is logged, and nothing done.
void convert_active_ehrpd_apn_from_qmi_to_ril(const EhrpdApnResponse* response, ActiveEhrpdApnList* list);

// Any RDE element: four words (index, record, offset, length) and data.
void kesext_hook_sprint_rde_write(const HookRequest& request, uint32_t argument, CarrierResponse& answer);
void kesext_hook_sprint_rde_read(const HookRequest& request, uint32_t argument, CarrierResponse& answer);

// RDE elements of their own.
void kesext_hook_sprint_get_ddtm_preference(const HookRequest& request, uint32_t argument,
                                            CarrierResponse& answer);
void kesext_hook_sprint_set_ddtm_preference(const HookRequest& request, uint32_t argument,
                                            CarrierResponse& answer);
void handle_get_lte_option(const HookRequest& request, uint32_t argument, CarrierResponse& answer);
void handle_set_lte_option(const HookRequest& request, uint32_t argument, CarrierResponse& answer);

// Vendor messages. The argument of the band class requests is the band index.
void kesext_hook_sprint_get_BC10_BC14_status(const HookRequest& request, uint32_t band_index,
                                             CarrierResponse& answer);
void kesext_hook_sprint_set_BC10_BC14_status(const HookRequest& request, uint32_t band_index,
                                             CarrierResponse& answer);
void kesext_hook_sprint_set_roaming_list_segment(const HookRequest& request, uint32_t argument,
                                                 CarrierResponse& answer);
void kesext_hook_sprint_set_Active_profile(const HookRequest& request, uint32_t argument,
                                           CarrierResponse& answer);
void factory_reset(const HookRequest& request, uint32_t argument, CarrierResponse& answer);
void handle_get_bsr_timer(const HookRequest& request, uint32_t argument, CarrierResponse& answer);
void handle_set_bsr_timer(const HookRequest& request, uint32_t argument, CarrierResponse& answer);
void handle_get_active_ehrpd_apn(const HookRequest& request, uint32_t argument, CarrierResponse& answer);
void handle_get_tot_order(const HookRequest& request, uint32_t argument, CarrierResponse& answer);
void handle_update_tot_order(const HookRequest& request, uint32_t argument, CarrierResponse& answer);

/// Answers an id that is no longer served.
void kesext_hook_sprint_handle_obsolete_request(const HookRequest& request, uint32_t argument,
                                                CarrierResponse& answer);

}  // namespace kesext
