#include "generic/utility_requests.h"

#include <cstring>

#include "core/ground/log.h"
#include "core/ground/message_buffer.h"
#include "core/ground/parent_pipes.h"

namespace kesext {

int handleUtilsRequest(const HookRequest& request, uint32_t, uint32_t) {
  utils_req_msg_v01 utility;
  std::memcpy(&utility, request.payload(), sizeof utility);
  utils_resp_msg_v01 response{};
  int32_t sent = -1;
  if (utility.len != 0) {
    LOGE("UTILS: req.req_data[0]%d, req.req_data[UTILS_REQ_DATA_SIZE_V01-1] %d", utility.req_data[0],
         utility.req_data[UTILS_REQ_DATA_SIZE_V01 - 1]);
    sent = sendUtility(utility, response);
  }
  LOGE("UTILS: Sending request result is %d", sent);
  return handleUtilsResponse(request, response, response.len);
}

int handleUtilsResponse(const HookRequest& request, const utils_resp_msg_v01& response, uint32_t data_size) {
  LOGE("handleUtilsResponse");
  LOGE("handleUtilsResponse for id %x, dataSize-%d, respSize-%d", request.msgId(), data_size, response.len);
  const HookResponse record = HookResponse::cdma({.msgId = request.msgId(),
                                                  .msgLen = static_cast<int32_t>(response.len),
                                                  .status = HOOK_STATUS_SUCCESS});
  if (!record) {
    LOGE("handleUtilsResponse: out of memory!");
    sendStatusResponse(&request, HOOK_STATUS_FAILURE);
    return 0;
  }
  std::memcpy(record.payload(), response.data, response.len);
  writeToParent(record.data(), record.size());
  return 0;
}

int handleSysInfoFilter(const HookRequest& request, uint32_t, uint32_t) {
  LOGE("sys_info filter: sending kesext util request");
  const utils_req_msg_v01 utility{
      .type = kUtilitySysInfoFilter, .len = 1, .req_data = {request.genericPayload()[0]}};
  utils_resp_msg_v01 response;
  const int32_t sent = sendUtility(utility, response);
  LOGE("sys_info filter: sending request result is %d", sent);
  const uint8_t status = sent == 0 ? HOOK_STATUS_SUCCESS : HOOK_STATUS_FAILURE;
  LOGE("sys_info filter: sending response, msgLen 0x%x, resp value %d.", 1, status);
  sendGenericStatus(request, status);
  return 0;
}

}  // namespace kesext
