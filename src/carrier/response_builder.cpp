#include "carrier/response_builder.h"

#include <cstring>

#include "core/ground/log.h"
#include "core/ground/message_buffer.h"
#include "core/ground/parent_pipes.h"

namespace kesext {

uint32_t kesext_hook_sprint_send_response(const OemHookHeader& header, const uint8_t* payload) {
  LOGE("kesext_hook_sprint_send_response: ENTER FUNCTION %d ", header.msgId);
  const HookResponse record = HookResponse::cdma(header);
  if (!record) {
    if (header.msgLen >= 0) LOGE("kesext_hook_sprint_send_response: out of memory!");
    return 0;
  }
  LOGE("kesext_hook_sprint_send_response: SEND RESPONSE TO APP LAYER Message ID %d ", header.msgId);
  LOGE("kesext_hook_sprint_send_response: SEND RESPONSE TO APP LAYER Length %d ", header.msgLen);
  if (payload != nullptr && header.msgLen >= 1) {
    LOGE("kesext_hook_sprint_send_response: BYTE ARRAY NOT NULL ");
    std::memcpy(record.payload(), payload, static_cast<size_t>(header.msgLen));
  }
  LOGE("kesext_hook_sprint_send_response: HEADER ID %d ", header.msgId);
  writeToParent(record.data(), record.size());
  return 1;
}

}  // namespace kesext
