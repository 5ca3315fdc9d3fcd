#include "carrier/service_codes.h"

#include <cstring>

#include "core/ground/log.h"
#include "qmi/send.h"

namespace kesext {

namespace {

struct ValidateSpcRequest {
  uint8_t code[kSpcSize];
};
static_assert(sizeof(ValidateSpcRequest) == 6);

struct ChangeSpcRequest {
  uint8_t current[kSpcSize];
  uint8_t changed[kSpcSize];
};
static_assert(sizeof(ChangeSpcRequest) == 12);

struct WriteAkeyRequest {
  uint8_t code[kSpcSize];
  uint8_t akey[kAkeySize];
};
static_assert(sizeof(WriteAkeyRequest) == 32);
static_assert(offsetof(WriteAkeyRequest, akey) == 6);

struct StandardResponse {
  uint32_t result;  // 0: done
  uint32_t error;
};
static_assert(sizeof(StandardResponse) == 8 && offsetof(StandardResponse, error) == 4);

constexpr DmsMessage<ValidateSpcRequest, StandardResponse> kValidateSpc{0x003B};
constexpr DmsMessage<ChangeSpcRequest, StandardResponse> kChangeSpc{0x0052};
constexpr NasMessage<WriteAkeyRequest, StandardResponse> kWriteAkey{0x005B};

}  // namespace

void kesext_hook_sprint_check_subsidy_lock_passwd(const HookRequest& request, uint32_t,
                                                  CarrierAnswer& answer) {
  LOGE("Enter kesext_hook_sprint_check_subsidy_lock_passwd() \n");
  LOGE("kesext_hook_sprint_verify_subsidy_lock: ENTER VERIFY SUBSIDY LOCK %d ", HOOK_STATUS_SPC_INVALID);
  answer.status = HOOK_STATUS_SPC_INVALID;
  answer.putZeros(kSpcSize);
  ValidateSpcRequest validate;
  std::memcpy(validate.code, request.header().spc, sizeof validate.code);
  StandardResponse response;
  if (sendDms(kValidateSpc, validate, response) != 0) return;
  if (response.result != 0) {
    LOGE(" kesext_hook_sprint_verify_subsidy_lock Error = %d", response.error);
    return;
  }
  LOGE(" kesext_hook_sprint_verify_subsidy_lock Success ");
  answer.status = HOOK_STATUS_SUCCESS;
}

void kesext_hook_sprint_write_akey(const HookRequest& request, uint32_t, CarrierAnswer& answer) {
  LOGE("kesext_hook_sprint_write_akey:  ENTER ");
  const OemHookHeader header = request.header();
  answer.putResult(qcril_qmi_nas_kes_cdma_validate_and_write_akey(header.spc, request.payload(),
                                                                  static_cast<uint32_t>(header.msgLen)));
}

bool qcril_qmi_nas_kes_cdma_validate_and_write_akey(const uint8_t* code, const uint8_t* akey,
                                                    uint32_t akey_length) {
  LOGE("qcril_qmi_nas_kes_cdma_validate_and_write_akey entered ");
  if (akey_length != kAkeySize) {
    LOGE("akey_len != sizeof(akey_req_msg.akey)");
    return false;
  }
  WriteAkeyRequest write;
  std::memcpy(write.code, code, sizeof write.code);
  std::memcpy(write.akey, akey, sizeof write.akey);
  StandardResponse response;
  const int32_t sent = sendNas(kWriteAkey, write, response);
  if (sent != 0) {
    LOGE("validate_and_write_akey: qmi_client_send_msg_sync failed (%d).", sent);
    return false;
  }
  if (response.result != 0) {
    LOGE("validate_and_write_akey Error = %d", response.error);
    return false;
  }
  return true;
}

bool kes_qmi_sprint_write_spc(const uint8_t* current, const uint8_t* changed) {
  LOGE("kes_qmi_sprint_write_spc entered ");
  ChangeSpcRequest change;
  std::memcpy(change.current, current, sizeof change.current);
  std::memcpy(change.changed, changed, sizeof change.changed);
  StandardResponse response;
  const int32_t sent = sendDms(kChangeSpc, change, response);
  if (sent != 0) {
    LOGE("kes_qmi_sprint_write_spc: qmi_client_send_msg_sync (%d).", sent);
    return false;
  }
  if (response.result != 0) {
    LOGE("kes_qmi_sprint_write_spc Error = %d", response.error);
    return false;
  }
  return true;
}

}  // namespace kesext
