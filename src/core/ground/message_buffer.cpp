#include "core/ground/message_buffer.h"

#include <cstring>

namespace kesext {

namespace {

/// The words in front of every unsolicited message: which header follows, and its counted size.
constexpr size_t kUnsolPrefixSize = 8;
constexpr uint32_t kUnsolHookTypeCdma = 0;
constexpr uint32_t kUnsolHookTypeGeneric = 1;
/// What every unsolicited message counts beside its payload.
constexpr size_t kUnsolOverhead = kUnsolPrefixSize + kOemHookHeaderCount;

}  // namespace

MessageBuffer buildCdmaResponse(const OemHookHeader& header) {
  if (header.msgLen < 0) return {};
  MessageBuffer record(static_cast<size_t>(header.msgLen) + kOemHookHeaderCount);
  if (record) std::memcpy(record.data(), &header, sizeof header);
  return record;
}

MessageBuffer buildCdmaUnsol(uint32_t msg_id, uint32_t payload_length) {
  MessageBuffer message(kUnsolOverhead + size_t{payload_length});
  if (!message) return message;
  const OemHookHeader header{.msgId = msg_id, .msgLen = static_cast<int32_t>(payload_length)};
  storeLe32(message.data(), kUnsolHookTypeCdma);
  storeLe32(message.data() + 4, kOemHookHeaderCount);
  std::memcpy(message.data() + kUnsolPrefixSize, &header, sizeof header);
  return message;
}

MessageBuffer buildGenericReply(const HookRequest& request, uint32_t payload_length) {
  MessageBuffer reply(kGenericHookHeaderSize + size_t{payload_length});
  if (!reply) return reply;
  std::memcpy(reply.data(), request.bytes.data(), 4);
  storeLe32(reply.data() + 4, payload_length);
  return reply;
}

MessageBuffer buildGenericUnsol(uint8_t msg_type, uint32_t msg_id, uint32_t payload_length) {
  MessageBuffer message(kUnsolOverhead + size_t{payload_length});
  if (!message) return message;
  storeLe32(message.data(), kUnsolHookTypeGeneric);
  storeLe32(message.data() + 4, kGenericHookHeaderSize);
  // The id, least significant byte first, stands in the three bytes behind the type.
  storeLe32(message.data() + kUnsolPrefixSize, msg_id << 8 | msg_type);
  storeLe32(message.data() + kUnsolPrefixSize + 4, payload_length);
  return message;
}

}  // namespace kesext
