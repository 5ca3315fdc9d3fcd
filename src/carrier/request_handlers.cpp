#include "carrier/request_handlers.h"

#include <algorithm>
#include <cstring>

#include "carrier/modem_operations.h"
#include "core/ground/byte_access.h"
#include "core/ground/log.h"
#include "nv/element_payload.h"
#include "nv/rde_messages.h"
#include "nv/rde_operations.h"

namespace kesext {

namespace {

constexpr int32_t kLteOptionElement = 10017;
constexpr int32_t kDdtmElement = 10018;

/// Room for an element of unknown size, in bytes.
constexpr uint32_t kElementReadMax = 1024;
static_assert(kElementReadMax >= kRdeDataMax);
static_assert(sizeof(ElementPayload) + kElementReadMax + kElementZerosSize <= kCarrierPayloadMax);

/// The factory reset flag of a request that names none.
constexpr uint8_t kResetFlagDefault = 0xFF;

}  // namespace

void kesext_hook_sprint_rde_write(const HookRequest& request, uint32_t, CarrierResponse& answer) {
  LOGE("kesext_hook_sprint_rde_write: FUNCTION enter.");
  const ElementPayload element = elementPayload(request);
  const uint32_t result = kes_qmi_sprint_rde_write(
      static_cast<int32_t>(element.rde_index), static_cast<int32_t>(element.record_num),
      static_cast<int32_t>(element.offset), element.length, elementData(request));
  if (result == kRdeSuccess)
    LOGE("RDE Write success for element %u", element.rde_index);
  else
    LOGE("RDE write error");
  answer.setStatus(result == kRdeSuccess);
}

void kesext_hook_sprint_rde_read(const HookRequest& request, uint32_t, CarrierResponse& answer) {
  LOGE("kesext_hook_sprint_rde_read: Function Enter.");
  ElementPayload element = elementPayload(request);
  uint8_t data[kElementReadMax] = {};
  const uint32_t result = kes_qmi_sprint_rde_read(
      static_cast<int32_t>(element.rde_index), static_cast<int32_t>(element.record_num),
      static_cast<int32_t>(element.offset), data, sizeof data, &element.length);
  if (result != kRdeSuccess) {
    LOGE("RDE Read error");
    answer.setStatus(false);
    return;
  }
  answer.put(element);
  answer.putBytes(data, element.length);
  answer.putZeros(kElementZerosSize);
}

void kesext_hook_sprint_get_ddtm_preference(const HookRequest&, uint32_t, CarrierResponse& answer) {
  uint8_t preference = 0;
  if (kes_qmi_sprint_rde_read(kDdtmElement, 0, 0, &preference, sizeof preference, nullptr) != kRdeSuccess) {
    answer.setStatus(false);
    return;
  }
  LOGE("kesext_hook_sprint_get_ddtm_preference:   ddtm = %d ", preference);
  answer.put(uint32_t{preference});
}

void kesext_hook_sprint_set_ddtm_preference(const HookRequest& request, uint32_t, CarrierResponse& answer) {
  const uint8_t preference = request.payload()[0];
  LOGE("kesext_hook_sprint_set_ddtm_preference:   ddtm = %d ", preference);
  const uint32_t result = kes_qmi_sprint_rde_write(kDdtmElement, 0, 0, sizeof preference, &preference);
  if (result != kRdeSuccess) LOGE("kesext_hook_sprint_set_ddtm_preference: Fail to write.");
  answer.setStatus(result == kRdeSuccess);
}

void handle_get_lte_option(const HookRequest& request, uint32_t, CarrierResponse& answer) {
  LOGE("handle_get_lte_option: EVENT VALUE %d ", request.msgId());
  uint8_t option[kElementReadMax] = {};
  uint32_t count = 0;
  if (kes_qmi_sprint_rde_read(kLteOptionElement, 0, 0, option, sizeof option, &count) != kRdeSuccess) {
    answer.setStatus(false);
    return;
  }
  answer.putBytes(option, count);
}

void handle_set_lte_option(const HookRequest& request, uint32_t, CarrierResponse& answer) {
  const auto length = static_cast<uint32_t>(request.msgLen());
  answer.setStatus(kes_qmi_sprint_rde_write(kLteOptionElement, 0, 0, length, request.payload()) ==
                   kRdeSuccess);
}

void kesext_hook_sprint_get_BC10_BC14_status(const HookRequest&, uint32_t band_index,
                                             CarrierResponse& answer) {
  const uint32_t status = kes_qmi_sprint_read_band(band_index);
  LOGE("kesext_hook_sprint_get_BC10_BC14_status:  status = %d ", status);
  answer.put(status);
}

void kesext_hook_sprint_set_BC10_BC14_status(const HookRequest& request, uint32_t band_index,
                                             CarrierResponse& answer) {
  const uint32_t status = request.payloadWord(0);
  LOGE("kesext_hook_sprint_set_BC10_BC14_status:  status = %d ", status);
  answer.setStatus(kes_qmi_sprint_write_band(band_index, status));
}

void kesext_hook_sprint_set_roaming_list_segment(const HookRequest& request, uint32_t,
                                                 CarrierResponse& answer) {
  const uint32_t size = request.payloadWord(0);
  LOGE("kesext_hook_sprint_set_roaming_list_segment:  p_prl->size (%d)", size);
  answer.setStatus(kes_qmi_sprint_set_roaming_list_segment(size, request.payload() + sizeof size));
}
static_assert(kOemHookPayloadOffset + sizeof(RoamingListRequest) <= kRequestBufferSize);

void kesext_hook_sprint_set_Active_profile(const HookRequest& request, uint32_t, CarrierResponse& answer) {
  const uint32_t profile = request.payloadWord(0);
  LOGE("kesext_hook_sprint_set_Active_profile:   profile = %d ", profile);
  answer.setStatus(kes_qmi_sprint_switch_proflie(profile));
}

void factory_reset(const HookRequest& request, uint32_t, CarrierResponse& answer) {
  const uint8_t reset_flag = request.msgLen() == 1 ? request.payload()[0] : kResetFlagDefault;
  LOGE("factory_reset: EVENT VALUE %d, msg_len (%d), reset_flag (%d) ", request.msgId(), request.msgLen(),
       reset_flag);
  const bool done = kes_qmi_sprint_fatory_reset(reset_flag);
  LOGE("Received factory reset result - %d", done);
  answer.setStatus(done);
}

void handle_get_bsr_timer(const HookRequest&, uint32_t, CarrierResponse& answer) {
  const uint32_t timer = kes_qmi_sprint_get_bsr_timer();
  LOGE("Get BSR timer result - %d", timer);
  answer.put(timer);
}

void handle_set_bsr_timer(const HookRequest& request, uint32_t, CarrierResponse& answer) {
  LOGE("handle_set_bsr_timer: EVENT VALUE %d ", request.msgId());
  const bool done = kes_qmi_sprint_set_bsr_timer(request.payloadWord(0));
  LOGE("Set BSR timer result - %d", done);
  answer.setStatus(done);
}

void convert_active_ehrpd_apn_from_qmi_to_ril(const EhrpdApnResponse* response, ActiveEhrpdApnList* list) {
  if (response == nullptr) {
    LOGE("convert_active_ehrpd_apn_from_qmi_to_ril: p_qmi_resp = NULL");
    return;
  }
  if (list == nullptr) {
    LOGE("convert_active_ehrpd_apn_from_qmi_to_ril: p_ril_active_ehrpd_apn = NULL");
    return;
  }
  *list = {};
  list->count = std::min(response->count, kEhrpdApnsMax);
  if (response->list_valid == 0) return;
  for (size_t i = 0; i < list->count; ++i) {
    EhrpdApnEntry from;
    std::memcpy(&from, response->entries + i * kEhrpdApnStride, sizeof from);
    ActiveEhrpdApn& to = list->apns[i];
    std::memcpy(to.apn, from.apn, sizeof to.apn);
    to.first_word = from.first_word;
    to.second_word = swapBytes32(from.second_word);
    std::memcpy(to.block, from.block, sizeof to.block);
  }
}

void handle_get_active_ehrpd_apn(const HookRequest&, uint32_t, CarrierResponse& answer) {
  EhrpdApnResponse response;
  kes_qmi_sprint_get_active_ehrpd_apn(&response);
  ActiveEhrpdApnList list;
  convert_active_ehrpd_apn_from_qmi_to_ril(&response, &list);
  answer.put(list);
}

void handle_get_tot_order(const HookRequest&, uint32_t, CarrierResponse& answer) {
  const TotOrderReadResponse response = kes_qmi_sprint_get_tot_order();
  TotOrder order{};
  order.count = std::min(response.count, kTotOrderEntriesMax);
  std::memcpy(order.entries, response.entries, order.count * kTotOrderEntrySize);
  answer.put(order);
}

void handle_update_tot_order(const HookRequest& request, uint32_t, CarrierResponse& answer) {
  LOGE("handle_update_tot_order: EVENT VALUE %d ", request.msgId());
  TotOrder order;
  std::memcpy(&order, request.payload(), sizeof order);
  bool done = false;
  if (order.count <= kTotOrderEntriesMax) {
    TotOrderUpdateRequest update{};
    update.count = order.count;
    std::memcpy(update.entries, order.entries, order.count * kTotOrderEntrySize);
    done = kes_qmi_sprint_update_tot_order(update);
  }
  LOGE("Update TOT order result - %d", done);
  answer.setStatus(done);
}

void kesext_hook_sprint_handle_obsolete_request(const HookRequest& request, uint32_t,
                                                CarrierResponse& answer) {
  LOGE("kesext_hook_sprint_handle_obsolete_request: ENTER FUNCTION %d ", request.msgId());
  answer.status = HOOK_STATUS_NOT_SUPPORTED;
}

}  // namespace kesext
