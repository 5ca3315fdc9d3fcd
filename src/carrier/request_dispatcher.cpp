#include "carrier/request_dispatcher.h"

#include <cstddef>
#include <cstring>

#include "carrier/carrier_answer.h"
#include "carrier/lte_data.h"
#include "carrier/modem_operations.h"
#include "carrier/request_handlers.h"
#include "carrier/response_builder.h"
#include "carrier/service_codes.h"
#include "core/ground/log.h"
#include "nam/engineering_data.h"
#include "nam/nam_read.h"
#include "nam/nam_requests.h"
#include "nam/nam_write.h"

namespace kesext {

namespace {

constexpr uint32_t kServed = 0;
constexpr uint32_t kNotServed = 0xFFFFFFFF;

constexpr uint32_t kFirstId = 0x02000001;
constexpr uint32_t kLastId = 0x020000CB;

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

struct CarrierRow {
  uint32_t msgId;
  Branch branch;
  Header header;
  CarrierHandler handler;
  uint32_t argument = 0;
};

constexpr CarrierRow kCarrierTable[] = {
    {0x02000001, Branch::read, Header::fresh, kesext_hook_sprint_get_nam_info},
    {0x02000002, Branch::spcProtected, Header::echo, kesext_hook_sprint_set_nam_info},
    {0x02000003, Branch::read, Header::fresh, kesext_hook_sprint_get_sid_nid_pairs},
    {0x02000004, Branch::spcProtected, Header::echo, kesext_hook_sprint_set_sid_nid_pairs},
    {0x02000007, Branch::read, Header::fresh, kesext_hook_sprint_get_mob_p_pre},
    {0x0200000A, Branch::plain, Header::fresh, kesext_hook_sprint_check_subsidy_lock_passwd},
    {0x02000011, Branch::plain, Header::fresh, kesext_hook_sprint_get_call_processing_data},
    {0x02000012, Branch::plain, Header::fresh, kesext_hook_sprint_get_evdo_data},
    {0x02000013, Branch::plain, Header::echo, kesext_hook_sprint_write_akey},
    {0x02000015, Branch::plain, Header::fresh, kesext_hook_sprint_rde_write},
    {0x02000016, Branch::plain, Header::fresh, kesext_hook_sprint_rde_read},
    {0x020000B0, Branch::read, Header::fresh, kesext_hook_sprint_get_BC10_BC14_status, kBandClass10},
    {0x020000B1, Branch::write, Header::echo, kesext_hook_sprint_set_BC10_BC14_status, kBandClass10},
    {0x020000B2, Branch::read, Header::fresh, kesext_hook_sprint_get_BC10_BC14_status, kBandClass14},
    {0x020000B3, Branch::write, Header::echo, kesext_hook_sprint_set_BC10_BC14_status, kBandClass14},
    {0x020000B4, Branch::write, Header::echo, kesext_hook_sprint_set_roaming_list_segment},
    {0x020000B5, Branch::write, Header::echo, kesext_hook_sprint_set_Active_profile},
    {0x020000B6, Branch::plain, Header::echo, factory_reset},
    {0x020000B7, Branch::plain, Header::echo, kesext_hook_sprint_get_ddtm_preference},
    {0x020000B8, Branch::plain, Header::echo, kesext_hook_sprint_set_ddtm_preference},
    {0x020000B9, Branch::plain, Header::echo, kesext_hook_sprint_get_ddtm_preference},
    {0x020000BA, Branch::plain, Header::echo, kesext_hook_sprint_set_ddtm_preference},
    {0x020000BB, Branch::obsolete, Header::echo, kesext_hook_sprint_handle_obsolete_request},
    {0x020000BC, Branch::plain, Header::echo, handle_get_bsr_timer},
    {0x020000BD, Branch::plain, Header::echo, handle_set_bsr_timer},
    {0x020000BE, Branch::plain, Header::echo, handle_get_lte_option},
    {0x020000BF, Branch::plain, Header::echo, handle_set_lte_option},
    {0x020000C0, Branch::plain, Header::echo, handle_get_lte_data},
    {0x020000C1, Branch::plain, Header::echo, handle_get_active_ehrpd_apn},
    {0x020000C2, Branch::obsolete, Header::echo, kesext_hook_sprint_handle_obsolete_request},
    {0x020000C3, Branch::obsolete, Header::echo, kesext_hook_sprint_handle_obsolete_request},
    {0x020000C4, Branch::plain, Header::echo, handle_get_tot_order},
    {0x020000C5, Branch::plain, Header::echo, handle_update_tot_order},
    {0x020000C6, Branch::obsolete, Header::echo, kesext_hook_sprint_handle_obsolete_request},
    {0x020000C7, Branch::obsolete, Header::echo, kesext_hook_sprint_handle_obsolete_request},
    {0x020000C8, Branch::obsolete, Header::echo, kesext_hook_sprint_handle_obsolete_request},
    {0x020000C9, Branch::obsolete, Header::echo, kesext_hook_sprint_handle_obsolete_request},
    {0x020000CA, Branch::obsolete, Header::echo, kesext_hook_sprint_handle_obsolete_request},
    {0x020000CB, Branch::obsolete, Header::echo, kesext_hook_sprint_handle_obsolete_request},
};

constexpr bool idsAscendInRange() {
  uint32_t previous = kFirstId - 1;
  for (const CarrierRow& row : kCarrierTable) {
    if (row.msgId <= previous || row.msgId > kLastId) return false;
    previous = row.msgId;
  }
  return true;
}
static_assert(idsAscendInRange());

const CarrierRow* findRow(uint32_t msg_id) {
  for (const CarrierRow& row : kCarrierTable)
    if (row.msgId == msg_id) return &row;
  return nullptr;
}

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

uint32_t respond(const CarrierRow& row, OemHookHeader header, const CarrierAnswer& answer) {
  header.msgLen = answer.length;
  header.status = answer.status;
  if (row.header == Header::fresh) std::memset(header.spc, 0, sizeof header.spc);
  return kesext_hook_sprint_send_response(header, answer.has_payload ? answer.payload : nullptr);
}

}  // namespace

uint32_t kesext_hook_sprint_handler(const HookRequest* request, uint32_t, uint32_t) {
  LOGE("kesext_hook_sprint_handler: ENTER ");
  if (request == nullptr) {
    LOGE("kesext_hook_sprint_handler: p_hdr == NULL ");
    return kServed;
  }
  const OemHookHeader header = request->header();
  const CarrierRow* row = findRow(header.msgId);
  if (row == nullptr) {
    LOGE("kesext_hook_sprint_handler: Unexpected MSG ID: %d", header.msgId);
    return kNotServed;
  }
  if (!enter(row->branch, header)) return kNotServed;
  CarrierAnswer answer;
  row->handler(*request, row->argument, answer);
  return respond(*row, header, answer) == 1 ? kServed : kNotServed;
}

}  // namespace kesext
