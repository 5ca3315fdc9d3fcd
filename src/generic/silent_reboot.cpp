#include "generic/silent_reboot.h"

#include "core/ground/byte_access.h"
#include "core/ground/log.h"
#include "core/ground/parent_pipes.h"

namespace kesext {

namespace {

/// Bytes 1 to 3 of the request, least significant first, as a signed number.
int32_t idAsLogged(const HookRequest& request) {
  return static_cast<int32_t>(loadLe32(request.bytes.data())) >> 8;
}

}  // namespace

int handleSilentRebootRequest(const HookRequest& request, uint32_t, uint32_t) {
  LOGE("Silent reboot: Sending kesext util request");
  utils_resp_msg_v01 response;
  const int32_t sent = sendUtility({.type = kUtilitySilentReboot}, response);
  LOGE("Silent reboot: Sending request result is %d", sent);
  if (sent != 0) {
    LOGE(" Silent reboot send msg error, send back generic failure.");
    response.len = 1;
    response.data[0] = HOOK_STATUS_FAILURE;
  }
  handleSilentRebootResponse(request, response);
  return 0;
}

void handleSilentRebootResponse(const HookRequest& request, const utils_resp_msg_v01& response) {
  LOGE("handleSilentRebootResponse >>");
  LOGE("handleSilentRebootResponse for id %x, resp len %d.", idAsLogged(request), response.len);
  LOGE("handleSilentRebootResponse resp size %d.", static_cast<int>(response.len + kGenericHookHeaderSize));
  // Without data the reply ends in its length, whose last byte is zero.
  const uint8_t last = response.len > 0 ? response.data[response.len - 1] : uint8_t{0};
  LOGE("handleSilentRebootResponse , msgLen 0x%x, resp value %d.", response.len, last);
  sendGenericReply(request, response.data, response.len);
}

}  // namespace kesext
