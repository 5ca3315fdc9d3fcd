#include "generic/signal_coverage.h"

#include <algorithm>
#include <cstring>

#include "core/ground/hook_ids.h"
#include "core/ground/log.h"
#include "core/ground/parent_pipes.h"
#include "generic/utility_messages.h"
#include "qmi/indication.h"

namespace kesext {

namespace {

/// Bytes of a request's payload that fit behind the selector.
constexpr uint32_t kSigCovTextMax = UTILS_REQ_DATA_SIZE_V01 - 1;

/// A coverage report, which is forwarded whole.
struct SigCovIndication {
  uint8_t record[32];
};
static_assert(sizeof(SigCovIndication) == 32);

}  // namespace

int kesext_handle_sig_cov_request(uint8_t selector, const HookRequest& request) {
  const uint32_t msg_len = request.genericMsgLen();
  LOGE("sig_cov: receive request %d len %d", selector, msg_len);
  utils_req_msg_v01 utility{.type = kUtilitySignalCoverage, .len = 1, .req_data = {selector}};
  const uint32_t text_length = std::min(msg_len, kSigCovTextMax);
  if (text_length != 0) {
    std::memcpy(utility.req_data + 1, request.genericPayload(), text_length);
    if (utility.req_data[text_length] != 0) {
      LOGE("sig_cov warning: no NULL found at the end of string");
      utility.req_data[text_length] = 0;
    }
    utility.len += text_length;
  }
  utils_resp_msg_v01 response;
  const int32_t sent = sendUtility(utility, response);
  LOGE("kesext_handle_sig_cov_request sending response, msgLen 0x%x.", 1);
  sendGenericStatus(request, sent == 0 ? HOOK_STATUS_SUCCESS : HOOK_STATUS_FAILURE);
  return sent;
}

int handleSigCovRequest(const HookRequest& request, uint32_t, uint32_t) {
  return kesext_handle_sig_cov_request(0, request);
}

int handleSigCovSelectorRequest(const HookRequest& request, uint32_t, uint32_t) {
  return kesext_handle_sig_cov_request(request.genericPayload()[0], request);
}

int sigcovIndHndlr(qmi_client_type client, uint32_t indication_id, const uint8_t* buffer,
                   uint32_t buffer_length, void*) {
  SigCovIndication indication;
  if (decodeIndication(client, indication_id, buffer, buffer_length, indication) != 0) {
    LOGE("sigcovIndHndlr: failed to decode ind data");
    return 0;
  }
  if (!sendGenericUnsol(UNSOL_SIGNAL_COVERAGE, &indication, sizeof indication))
    LOGE("sigcovIndHndlr: out of memory!");
  return 0;
}

}  // namespace kesext
