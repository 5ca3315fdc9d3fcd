#include "core/ground/message_buffer.h"

#include <cstring>

namespace kesext {

HookResponse HookResponse::cdma(const OemHookHeader& header) {
  if (header.msgLen < 0) return {};
  HookResponse record(static_cast<size_t>(header.msgLen) + kOemHookHeaderCount, kOemHookPayloadOffset);
  if (record) std::memcpy(record.data(), &header, sizeof header);
  return record;
}

HookResponse HookResponse::generic(const HookRequest& request, uint32_t payload_length) {
  HookResponse reply(kGenericHookHeaderSize + size_t{payload_length}, kGenericHookHeaderSize);
  if (!reply) return reply;
  std::memcpy(reply.data(), request.bytes.data(), 4);
  storeLe32(reply.data() + 4, payload_length);
  return reply;
}

}  // namespace kesext
