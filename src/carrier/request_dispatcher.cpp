#include "carrier/request_dispatcher.h"

#include <cstring>
#include <iterator>

#include "carrier/lte_data.h"
#include "carrier/modem_operations.h"
#include "carrier/request_handlers.h"
#include "carrier/response_builder.h"
#include "carrier/service_codes.h"
#include "core/ground/carrier_response.h"
#include "core/ground/hook_ids.h"
#include "core/ground/log.h"
#include "core/ground/parent_pipes.h"
#include "core/ground/table.h"
#include "nam/engineering_data.h"
#include "nam/nam_read.h"
#include "nam/nam_requests.h"
#include "nam/nam_write.h"

namespace kesext {

namespace {

constexpr uint32_t kServed = 0;
constexpr uint32_t kNotServed = 0xFFFFFFFF;

/// What a request is logged with, and needs, before its handler runs.
enum class Branch {
  plain,
  read,
  write,         // declined, once logged, when msgLen is 0
  spcProtected,  // declined, unlogged, when msgLen is 0
  obsolete,
};

/// Where the answer's header comes from.
enum class Header {
  echo,   // the request's, so that its spc goes back
  fresh,  // spc all zero
};

/// What becomes of a request when there is no memory for its answer.
enum class WithoutMemory { decline, fail };

struct CarrierRow {
  uint32_t msgId;
  Branch branch;
  Header header;
  CarrierHandler handler;
  uint32_t argument = 0;
  WithoutMemory without_memory = WithoutMemory::decline;
};

constexpr CarrierRow kCarrierTable[] = {
    {HOOK_NAM_READ, Branch::read, Header::fresh, kesext_hook_sprint_get_nam_info},
    {HOOK_NAM_WRITE, Branch::spcProtected, Header::echo, kesext_hook_sprint_set_nam_info},
    {HOOK_SID_NID_READ, Branch::read, Header::fresh, kesext_hook_sprint_get_sid_nid_pairs},
    {HOOK_SID_NID_WRITE, Branch::spcProtected, Header::echo, kesext_hook_sprint_set_sid_nid_pairs},
    {HOOK_PROTOCOL_REVISION, Branch::read, Header::fresh, kesext_hook_sprint_get_mob_p_pre},
    {HOOK_SPC_VALIDATE, Branch::plain, Header::fresh, kesext_hook_sprint_check_subsidy_lock_passwd},
    {HOOK_CALL_PROCESSING_DATA, Branch::plain, Header::fresh, kesext_hook_sprint_get_call_processing_data},
    {HOOK_EVDO_DATA, Branch::plain, Header::fresh, kesext_hook_sprint_get_evdo_data},
    {HOOK_AKEY_WRITE, Branch::plain, Header::echo, kesext_hook_sprint_write_akey},
    {HOOK_RDE_WRITE, Branch::plain, Header::fresh, kesext_hook_sprint_rde_write},
    {HOOK_RDE_READ, Branch::plain, Header::fresh, kesext_hook_sprint_rde_read, 0, WithoutMemory::fail},
    {HOOK_BAND_10_READ, Branch::read, Header::fresh, kesext_hook_sprint_get_BC10_BC14_status, kBandClass10},
    {HOOK_BAND_10_WRITE, Branch::write, Header::echo, kesext_hook_sprint_set_BC10_BC14_status, kBandClass10},
    {HOOK_BAND_14_READ, Branch::read, Header::fresh, kesext_hook_sprint_get_BC10_BC14_status, kBandClass14},
    {HOOK_BAND_14_WRITE, Branch::write, Header::echo, kesext_hook_sprint_set_BC10_BC14_status, kBandClass14},
    {HOOK_ROAMING_LIST_SEGMENT, Branch::write, Header::echo, kesext_hook_sprint_set_roaming_list_segment},
    {HOOK_ACTIVE_PROFILE, Branch::write, Header::echo, kesext_hook_sprint_set_Active_profile},
    {HOOK_FACTORY_RESET, Branch::plain, Header::echo, factory_reset},
    {HOOK_DDTM_READ, Branch::plain, Header::echo, kesext_hook_sprint_get_ddtm_preference},
    {HOOK_DDTM_WRITE, Branch::plain, Header::echo, kesext_hook_sprint_set_ddtm_preference},
    {HOOK_DDTM_READ_B9, Branch::plain, Header::echo, kesext_hook_sprint_get_ddtm_preference},
    {HOOK_DDTM_WRITE_BA, Branch::plain, Header::echo, kesext_hook_sprint_set_ddtm_preference},
    {HOOK_OBSOLETE_BB, Branch::obsolete, Header::echo, kesext_hook_sprint_handle_obsolete_request},
    {HOOK_BSR_TIMER_READ, Branch::plain, Header::echo, handle_get_bsr_timer},
    {HOOK_BSR_TIMER_WRITE, Branch::plain, Header::echo, handle_set_bsr_timer},
    {HOOK_LTE_OPTION_READ, Branch::plain, Header::echo, handle_get_lte_option},
    {HOOK_LTE_OPTION_WRITE, Branch::plain, Header::echo, handle_set_lte_option},
    {HOOK_LTE_DATA, Branch::plain, Header::echo, handle_get_lte_data},
    {HOOK_EHRPD_APN_LIST, Branch::plain, Header::echo, handle_get_active_ehrpd_apn},
    {HOOK_OBSOLETE_C2, Branch::obsolete, Header::echo, kesext_hook_sprint_handle_obsolete_request},
    {HOOK_OBSOLETE_C3, Branch::obsolete, Header::echo, kesext_hook_sprint_handle_obsolete_request},
    {HOOK_TOT_ORDER_READ, Branch::plain, Header::echo, handle_get_tot_order},
    {HOOK_TOT_ORDER_UPDATE, Branch::plain, Header::echo, handle_update_tot_order},
    {HOOK_OBSOLETE_C6, Branch::obsolete, Header::echo, kesext_hook_sprint_handle_obsolete_request},
    {HOOK_OBSOLETE_C7, Branch::obsolete, Header::echo, kesext_hook_sprint_handle_obsolete_request},
    {HOOK_OBSOLETE_C8, Branch::obsolete, Header::echo, kesext_hook_sprint_handle_obsolete_request},
    {HOOK_OBSOLETE_C9, Branch::obsolete, Header::echo, kesext_hook_sprint_handle_obsolete_request},
    {HOOK_OBSOLETE_CA, Branch::obsolete, Header::echo, kesext_hook_sprint_handle_obsolete_request},
    {HOOK_OBSOLETE_CB, Branch::obsolete, Header::echo, kesext_hook_sprint_handle_obsolete_request},
};

static_assert(std::size(kCarrierTable) == 39);
static_assert(keysAreUnique(kCarrierTable, &CarrierRow::msgId));

/// Logs the branch's entry. False when the request lacks what the branch needs.
bool enter(Branch branch, const OemHookHeader& header) {
  switch (branch) {
    case Branch::plain:
      return true;
    case Branch::read:
      LOGE("kesext_hook_sprint_get_nv_data_to_oem: ENTER EVENT VALUE %d ", header.msgId);
      LOGE("kesext_hook_sprint_get_nv_data_to_oem: EVENT VALUE %d ", header.msgId);
      return true;
    case Branch::write:
      LOGE("kesext_hook_sprint_set_nv_data_from_oem: ENTER EVENT VALUE %d ", header.msgId);
      return header.msgLen != 0;
    case Branch::spcProtected:
      if (header.msgLen == 0) return false;
      LOGE("kesext_hook_sprint_set_nv_spc_protected_data_from_oem: EVENT VALUE %d ", header.msgId);
      return true;
    case Branch::obsolete:
      LOGD("kesext_hook_sprint_handler: Obsolete MSG ID: %d", header.msgId);
      return true;
  }
  return false;
}

uint32_t respond(const CarrierRow& row, OemHookHeader header, const CarrierResponse& answer) {
  header.msgLen = answer.length();
  header.status = answer.status;
  if (row.header == Header::fresh) std::memset(header.spc, 0, sizeof header.spc);
  return kesext_hook_sprint_send_response(header, answer.payload());
}

}  // namespace

uint32_t kesext_hook_sprint_handler(const HookRequest* request, uint32_t, uint32_t) {
  LOGE("kesext_hook_sprint_handler: ENTER ");
  if (request == nullptr) {
    LOGE("kesext_hook_sprint_handler: p_hdr == NULL ");
    return kServed;
  }
  const OemHookHeader header = request->header();
  const CarrierRow* row = findRow(kCarrierTable, &CarrierRow::msgId, header.msgId);
  if (row == nullptr) {
    LOGE("kesext_hook_sprint_handler: Unexpected MSG ID: %d", header.msgId);
    return kNotServed;
  }
  if (!enter(row->branch, header)) return kNotServed;
  CarrierResponse answer;
  row->handler(*request, row->argument, answer);
  if (respond(*row, header, answer) == 1) return kServed;
  if (row->without_memory == WithoutMemory::decline) return kNotServed;
  sendStatusResponse(request, HOOK_STATUS_FAILURE);
  return kServed;
}

}  // namespace kesext
