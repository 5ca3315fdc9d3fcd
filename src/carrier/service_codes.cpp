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

struct WriteAkeyRequest {
  uint8_t code[kSpcSize];
  uint8_t akey[kAkeySize];
};
static_assert(sizeof(WriteAkeyRequest) == 32);
static_assert(offsetof(WriteAkeyRequest, akey) == 6);

// Their result is 0 when done.
constexpr DmsMessage<ValidateSpcRequest, ResultAndError> kValidateSpc{0x003B};
constexpr NasMessage<WriteAkeyRequest, ResultAndError> kWriteAkey{0x005B};

}  // namespace

void kesext_hook_sprint_check_subsidy_lock_passwd(const HookRequest& request, uint32_t,
                                                  CarrierResponse& answer) {
  LOGE("Enter kesext_hook_sprint_check_subsidy_lock_passwd() \n");
  LOGE("kesext_hook_sprint_verify_subsidy_lock: ENTER VERIFY SUBSIDY LOCK %d ", HOOK_STATUS_SPC_INVALID);
  answer.status = HOOK_STATUS_SPC_INVALID;
  answer.putZeros(kSpcSize);
  ValidateSpcRequest validate;
  std::memcpy(validate.code, request.header().spc, sizeof validate.code);
  ResultAndError response;
  if (sendDms(kValidateSpc, validate, response) != 0) return;
  if (response.result != 0) {
    LOGE(" kesext_hook_sprint_verify_subsidy_lock Error = %d", response.error);
    return;
  }
  LOGE(" kesext_hook_sprint_verify_subsidy_lock Success ");
  answer.status = HOOK_STATUS_SUCCESS;
}

void kesext_hook_sprint_write_akey(const HookRequest& request, uint32_t, CarrierResponse& answer) {
  LOGE("kesext_hook_sprint_write_akey:  ENTER ");
  const OemHookHeader header = request.header();
  answer.setStatus(qcril_qmi_nas_kes_cdma_validate_and_write_akey(header.spc, request.payload(),
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
  ResultAndError response;
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

}  // namespace kesext
