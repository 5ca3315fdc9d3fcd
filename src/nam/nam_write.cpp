#include "nam/nam_write.h"

#include <cstring>

#include "core/ground/log.h"
#include "nam/digit_coding.h"
#include "nam/nam_info.h"
#include "nam/nam_items.h"
#include "nam/vocoder_coding.h"
#include "qmi/send.h"

namespace kesext {

namespace {

/// What the change of the code leaves as its step's status when it fails.
constexpr uint32_t kStepFailed = 4;

static_assert(sizeof(NamInfo::newSpc) == kSpcSize);

struct ChangeSpcRequest {
  uint8_t current[kSpcSize];
  uint8_t changed[kSpcSize];
};
static_assert(sizeof(ChangeSpcRequest) == 12);

/// Its result is 0 when done.
constexpr DmsMessage<ChangeSpcRequest, ResultAndError> kChangeSpc{0x0052};

/// What one request writes.
struct NamProgram {
  char mdn[kMdnDigitsMax + 1];
  NamValues values;
  bool change_spc;
  uint8_t old_spc[kSpcSize];
  uint8_t new_spc[kSpcSize];
};

bool areDigits(const uint8_t (&spc)[kSpcSize]) {
  for (size_t i = 0; i < kSpcSize; ++i) {
    if (spc[i] < '0' || spc[i] > '9') {
      LOGE("Byte (%d) of SPC is not digit.", static_cast<int>(i));
      return false;
    }
  }
  return true;
}

void convertSpc(const OemHookHeader& header, const NamInfo& info, NamProgram& program) {
  std::memcpy(program.old_spc, header.spc, kSpcSize);
  std::memcpy(program.new_spc, info.newSpc, kSpcSize);
  const auto* old_text = reinterpret_cast<const char*>(program.old_spc);
  const auto* new_text = reinterpret_cast<const char*>(program.new_spc);
  const bool changed = std::strncmp(old_text, new_text, kSpcSize) != 0;
  LOGE("isSpcChanged = %d, (%.6s ~ %.6s)", changed, old_text, new_text);
  program.change_spc = changed && areDigits(program.new_spc);
}

NamProgram convert(const OemHookHeader& header, const NamInfo& info) {
  NamProgram program{};
  NamValues& values = program.values;
  values.mcc = encode_mcc_digits(info.mcc);
  LOGE("kesext_hook_sprint_set_nam_info:  SET NAM IMSI_MCC  %d ", values.mcc);
  values.imsi_11_12 = encode_imsi_11_12_digits(info.imsi11_12);
  LOGE("kesext_hook_sprint_set_nam_info:  SET NAM IMSI_11_12  %d ", values.imsi_11_12);

  const MinCode min = encode_min_digits(info.min);
  values.min1 = min.min1;
  values.min2 = min.min2;
  LOGE("kesext_hook_sprint_set_nam_info:  SET NAM MIN1 %lu MIN2 %d ", static_cast<unsigned long>(min.min1),
       min.min2);

  const ImsiTCode imsi_t = encode_imsi_t_digits(info.imsiT);
  values.mcc_t = imsi_t.mcc_t;
  values.imsi_t_11_12 = imsi_t.imsi_t_11_12;
  values.imsi_t_s1 = imsi_t.imsi_t_s1;
  values.imsi_t_s2 = imsi_t.imsi_t_s2;
  LOGE("kesext_hook_sprint_set_nam_info:  SET NAM MccT %d imsiT11_12 %d imsiT_s1 %lu imsiT_s2 %d ",
       imsi_t.mcc_t, imsi_t.imsi_t_11_12, static_cast<unsigned long>(imsi_t.imsi_t_s1), imsi_t.imsi_t_s2);

  std::memcpy(program.mdn, info.mdn, kMdnDigitsMax);
  convertSpc(header, info, program);

  values.home_sid = info.homeSid & 0xFFFF;
  values.home_nid = info.homeNid & 0xFFFF;
  LOGE("kesext_hook_sprint_set_nam_info:  SET NAM SID %d NID %d ", values.home_sid, values.home_nid);
  values.p_channel_a = info.pChannelA & 0xFFFF;
  values.p_channel_b = info.pChannelB & 0xFFFF;
  LOGE("kesext_hook_sprint_set_nam_info:  SET NAM pChannelA %d pChannelB %d sChannelA sChannelB ",
       values.p_channel_a, values.p_channel_b);
  values.s_channel_a = info.sChannelA & 0xFFFF;
  values.s_channel_b = info.sChannelB & 0xFFFF;
  LOGE("kesext_hook_sprint_set_nam_info:  SET NAM sChannelA %d sChannelB %d sChannelA sChannelB ",
       values.s_channel_a, values.s_channel_b);
  values.scm = info.scm & 0xFF;
  LOGE("kesext_hook_sprint_set_nam_info:  SET NAM SCM %d ", values.scm);
  values.service_option = vocoder_to_service_option(info.vocoder);
  LOGE("kesext_hook_sprint_set_nam_info:  SET NAM Vocoder %d ", values.service_option);
  values.access_overload_class = info.accessOverloadClass & 0xFF;
  LOGE("kesext_hook_sprint_set_nam_info:  SET NAM AccessOverload %d ", values.access_overload_class);
  return program;
}

uint32_t kesext_hook_sprint_set_mdn_to_nv(const char* mdn, NamItemBuffer* buffer) {
  LOGE("kesext_hook_sprint_set_mdn_to_nv:  WRITE NV_DIR_NUMBER_PCS_I %d ", 0);
  MdnRecord record{.nam = kNam, .digit_count = static_cast<uint8_t>(strnlen(mdn, kMdnDigitsMax))};
  for (size_t i = 0; i < record.digit_count; ++i) {
    const auto character = static_cast<uint8_t>(mdn[i]);
    LOGE("kesext_hook_sprint_set_mdn_to_nv:  mdn_number %d \n", character);
    record.digits[i] = character == '0' ? uint8_t{10} : static_cast<uint8_t>(character - '0');
    LOGE("kesext_hook_sprint_read_mdn_from_nv:  nv output %d \n", record.digits[i]);
  }
  std::memcpy(buffer->bytes, &record, sizeof record);
  const uint32_t status = kesext_hook_sprint_set_nam_item(kMdnItem, sizeof record, *buffer);
  LOGE("kesext_hook_sprint_set_mdn_to_nv:  NV PCS WRITE COMPLETE %d ", 0);
  LOGE("kesext_hook_sprint_set_nam_block_request_info:  SET NAM BLOCK MDN  %d ", 0);
  return status;
}

/// Has the modem change the code. False, after a log line, when it does not.
bool kes_qmi_sprint_write_spc(const uint8_t (&current)[kSpcSize], const uint8_t (&changed)[kSpcSize]) {
  LOGE("kes_qmi_sprint_write_spc entered ");
  ChangeSpcRequest change;
  std::memcpy(change.current, current, sizeof change.current);
  std::memcpy(change.changed, changed, sizeof change.changed);
  ResultAndError response;
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

NamStepResults kesext_hook_sprint_set_nam_block_request_info(const NamProgram& program) {
  LOGE("kesext_hook_sprint_set_nam_block_request_info:  SET NAM BLOCK  %d ", 0);
  NamItemBuffer buffer{};
  NamStepResults results{};
  results.status[kNamMdnStep] = kesext_hook_sprint_set_mdn_to_nv(program.mdn, &buffer);
  for (size_t step = kNamFirstValueStep; step < kNamItemSteps; ++step) {
    const NamItem& item = kNamItems[step];
    // A failed read leaves zeros to be written back.
    if (item.read_first) kesext_hook_sprint_get_nam_item(item.rde_index, &buffer);
    putNamValues(item, program.values, &buffer);
    results.status[step] = kesext_hook_sprint_set_nam_item(item.rde_index, item.length, buffer);
  }
  if (program.change_spc && !kes_qmi_sprint_write_spc(program.old_spc, program.new_spc))
    results.status[kNamSpcStep] = kStepFailed;
  LOGE("kesext_hook_sprint_set_nam_block_request_info:  SET NAM BLOCK NV ENTRY COMPLETE  %d ", 0);
  return results;
}

}  // namespace

void kesext_hook_sprint_set_nam_info(const HookRequest& request, uint32_t, CarrierResponse& answer) {
  LOGE("kesext_hook_sprint_set_nam_info:  SET NAM INFO  %d ", 0);
  NamInfo info;
  std::memcpy(&info, request.payload(), sizeof info);
  const NamProgram program = convert(request.header(), info);
  const NamStepResults results = kesext_hook_sprint_set_nam_block_request_info(program);
  const size_t failure = results.firstFailure();
  if (failure != kNamSteps)
    LOGE("kesext_hook_sprint_set_nam_block_request_info:  ERROR FOUND %d ", static_cast<int>(failure));
  answer.setStatus(failure == kNamSteps);
}

}  // namespace kesext
