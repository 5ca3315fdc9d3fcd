#include "nam/nam_read.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "core/ground/log.h"
#include "nam/digit_coding.h"
#include "nam/nam_info.h"
#include "nam/nam_items.h"
#include "nam/vocoder_coding.h"

// Starts the text of each value that is read.
#define GET_NAM_VALUE "kesext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE "

namespace kesext {

namespace {

constexpr unsigned long asLong(uint32_t value) {
  return value;
}

/// What the items gave.
struct NamSubscription {
  char mdn[sizeof(NamInfo::mdn)];
  NamValues values;
};

/// How the values of an item are logged.
struct NamReadStep {
  int32_t rde_index;
  void (*log)(const NamSubscription& subscription);
};

/// One for each item of kNamItems, in the same order.
constexpr NamReadStep kReadSteps[] = {
    {kMdnItem, [](const NamSubscription& s) { LOGE(GET_NAM_VALUE "MDN  %s ", s.mdn); }},
    {25, [](const NamSubscription& s) { LOGE(GET_NAM_VALUE "MIN1  %lu ", asLong(s.values.min1)); }},
    {26, [](const NamSubscription& s) { LOGE(GET_NAM_VALUE "MIN2  %d ", s.values.min2); }},
    {21, [](const NamSubscription& s) { LOGE(GET_NAM_VALUE "IMSI_T_S1  %lu ", asLong(s.values.imsi_t_s1)); }},
    {22, [](const NamSubscription& s) { LOGE(GET_NAM_VALUE "IMSI_T_S2  %d ", s.values.imsi_t_s2); }},
    {15, [](const NamSubscription&) { LOGE(GET_NAM_VALUE "SID NID  %d ", 0); }},
    {36, [](const NamSubscription& s) { LOGE(GET_NAM_VALUE "SCM  %d ", s.values.scm); }},
    {16, [](const NamSubscription& s) { LOGE(GET_NAM_VALUE "IMSI_11_12  %d ", s.values.imsi_11_12); }},
    {17, [](const NamSubscription& s) { LOGE(GET_NAM_VALUE "IMSI_MCC %d ", s.values.mcc); }},
    {29,
     [](const NamSubscription& s) {
       LOGE(GET_NAM_VALUE "P_CHANNEL_A %d P_CHANNEL_B %d ", s.values.p_channel_a, s.values.p_channel_b);
     }},
    {31,
     [](const NamSubscription& s) {
       LOGE(GET_NAM_VALUE "S_CHANNEL_A %d S_CHANNEL_B %d ", s.values.s_channel_a, s.values.s_channel_b);
     }},
    {30, [](const NamSubscription& s) { LOGE(GET_NAM_VALUE "VOCODER %d ", s.values.service_option); }},
    {20, [](const NamSubscription& s) { LOGE(GET_NAM_VALUE "IMSI_MCC_T %d ", s.values.mcc_t); }},
    {18, [](const NamSubscription& s) { LOGE(GET_NAM_VALUE "IMSI_T_11_12 %d ", s.values.imsi_t_11_12); }},
    {2,
     [](const NamSubscription& s) {
       LOGE(GET_NAM_VALUE "OVERLOAD CLASS %d ", s.values.access_overload_class);
     }},
};

constexpr bool stepsFollowTheItems() {
  if (std::size(kReadSteps) != kNamItemSteps) return false;
  for (size_t step = 0; step < kNamItemSteps; ++step)
    if (kReadSteps[step].rde_index != kNamItems[step].rde_index) return false;
  return true;
}
static_assert(stepsFollowTheItems());

/// Turns an MDN item into its digits, as text.
void takeMdn(const NamItemBuffer& buffer, char (&mdn)[sizeof(NamInfo::mdn)]) {
  MdnRecord record;
  std::memcpy(&record, buffer.bytes, sizeof record);
  const size_t count = std::min<size_t>(record.digit_count, kMdnDigitsMax);
  for (size_t i = 0; i < count && record.digits[i] != 0; ++i) {
    const uint8_t digit = record.digits[i];
    LOGE("kesext_hook_sprint_read_mdn_from_nv:  mdn_number %d \n", digit);
    const auto character = digit == 10 ? uint8_t{'0'} : static_cast<uint8_t>(digit + '0');
    mdn[i] = static_cast<char>(character);
    LOGE("kesext_hook_sprint_read_mdn_from_nv:  mdn_number incremented by 0 %d ", character);
  }
  LOGE("kesext_hook_sprint_read_mdn_from_nv:  READ NV_DIR_NUMBER_PCS_I COMPLETE %s ", mdn);
}

uint32_t kesext_hook_sprint_read_mdn_from_nv(char (&mdn)[sizeof(NamInfo::mdn)], NamItemBuffer* buffer) {
  LOGE("kesext_hook_sprint_read_mdn_from_nv:  READ NV_DIR_NUMBER_PCS_I %d ", 0);
  const uint32_t status = kesext_hook_sprint_get_nam_item(kMdnItem, buffer);
  if (status == 0) takeMdn(*buffer, mdn);
  return status;
}

NamStepResults kesext_hook_sprint_get_nam_block_request_info(NamSubscription* subscription) {
  NamItemBuffer buffer;
  NamStepResults results{};
  LOGE("kesext_hook_sprint_get_nam_block_request_info:  GET NAM BLOCK  %d ", 0);
  results.status[kNamMdnStep] = kesext_hook_sprint_read_mdn_from_nv(subscription->mdn, &buffer);
  kReadSteps[kNamMdnStep].log(*subscription);
  for (size_t step = kNamFirstValueStep; step < kNamItemSteps; ++step) {
    results.status[step] = kesext_hook_sprint_get_nam_item(kNamItems[step].rde_index, &buffer);
    takeNamValues(kNamItems[step], buffer, &subscription->values);
    kReadSteps[step].log(*subscription);
  }
  return results;
}

/// Copies a decoded digit string, with its terminator, into a cleared field.
template <size_t FieldSize, size_t Size>
void putDigits(uint8_t (&field)[FieldSize], const std::array<uint8_t, Size>& digits) {
  static_assert(Size <= FieldSize);
  std::copy(digits.begin(), digits.end(), field);
}

const char* text(const uint8_t* field) {
  return reinterpret_cast<const char*>(field);
}

NamInfo report(const NamSubscription& subscription) {
  const NamValues& values = subscription.values;
  NamInfo info{};
  putDigits(info.imsiT, decode_imsi_t_digits({.mcc_t = static_cast<uint16_t>(values.mcc_t),
                                              .imsi_t_11_12 = static_cast<uint8_t>(values.imsi_t_11_12),
                                              .imsi_t_s1 = values.imsi_t_s1,
                                              .imsi_t_s2 = static_cast<uint16_t>(values.imsi_t_s2)}));
  LOGE("kesext_hook_sprint_get_nam_info: NAM INFO imsiT => %s ", text(info.imsiT));
  putDigits(info.min, decode_min_digits(values.min1, static_cast<uint16_t>(values.min2)));
  LOGE("kesext_hook_sprint_get_nam_info: NAM INFO MIN => %s ", text(info.min));
  putDigits(info.imsi11_12, decode_imsi_11_12_digits(static_cast<uint16_t>(values.imsi_11_12)));
  LOGE("kesext_hook_sprint_get_nam_info: NAM INFO IMSI_11_12 => %s ", text(info.imsi11_12));
  putDigits(info.mcc, decode_mcc_digits(static_cast<uint16_t>(values.mcc)));
  putDigits(info.mccT, decode_mcc_digits(static_cast<uint16_t>(values.mcc_t)));
  LOGE("kesext_hook_sprint_get_nam_info: NAM INFO Mcc => %s MccT => %s ", text(info.mcc), text(info.mccT));

  std::memcpy(info.mdn, subscription.mdn, sizeof info.mdn);
  info.homeSid = values.home_sid;
  info.homeNid = values.home_nid;
  info.scm = values.scm;
  info.pChannelA = values.p_channel_a;
  info.pChannelB = values.p_channel_b;
  info.sChannelA = values.s_channel_a;
  info.sChannelB = values.s_channel_b;
  info.vocoder = service_option_to_vocoder(static_cast<uint16_t>(values.service_option));
  info.accessOverloadClass = values.access_overload_class;
  LOGE("kesext_hook_sprint_get_nam_info: NAM INFO hSid => %d hNid => %d scm => %d ", info.homeSid,
       info.homeNid, info.scm);
  LOGE("kesext_hook_sprint_get_nam_info: NAM INFO pCdmaA => %d pCdmaB => %d  ", info.pChannelA,
       info.pChannelB);
  LOGE("kesext_hook_sprint_get_nam_info: NAM INFO  sCdmaA => %d sCdmaB => %d ", info.sChannelA,
       info.sChannelB);
  LOGE("kesext_hook_sprint_get_nam_info: NAM INFO Vocoder => %d Access_Overload => %d ", info.vocoder,
       info.accessOverloadClass);
  return info;
}

}  // namespace

void kesext_hook_sprint_get_nam_info(const HookRequest&, uint32_t, CarrierResponse& answer) {
  LOGE("kesext_hook_sprint_get_nam_info:  GET NAM INFO  %d ", 0);
  NamSubscription subscription{};
  const NamStepResults results = kesext_hook_sprint_get_nam_block_request_info(&subscription);
  const size_t failure = results.firstFailure();
  if (failure != kNamSteps) {
    LOGE("kesext_hook_sprint_get_nam_block_request_info:  ERROR FOUND %d ", static_cast<int>(failure));
    answer.setStatus(false);
    answer.put(NamInfo{});
    return;
  }
  LOGE("kesext_hook_sprint_get_nam_info:  NO REQUEST ERRORS  %d ", 0);
  answer.put(report(subscription));
}

}  // namespace kesext
