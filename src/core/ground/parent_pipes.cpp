#include "core/ground/parent_pipes.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>

#include "core/ground/log.h"
#include "core/ground/message_buffer.h"
#include "core/ground/process_state.h"

namespace kesext {

namespace {

int writeMessage(int pipe, const uint8_t* message, uint32_t length) {
  if (write(pipe, message, length) == -1) {
    LOGE("Write to parent failed %d", errno);
    return 0;
  }
  return 1;
}

/// Writes an answer from the heap, as all are, or from where it stands when there is no memory: the parent
/// must not wait for ever for want of a few bytes.
template <size_t N>
void sendLastResort(const std::array<uint8_t, N>& answer) {
  const MessageBuffer copy(N);
  if (copy) std::memcpy(copy.data(), answer.data(), N);
  writeToParent(copy ? copy.data() : answer.data(), N);
}

/// An unsolicited message of either form: the prefix, the form's header, the payload, zeros.
template <typename Header>
bool sendUnsol(const UnsolMessage& prefix, const Header& header, const void* payload, uint32_t length) {
  const MessageBuffer message(kUnsolOverhead + size_t{length});
  if (!message) return false;
  std::memcpy(message.data(), &prefix, sizeof prefix);
  std::memcpy(message.data() + sizeof prefix, &header, sizeof header);
  if (length > 0) std::memcpy(message.data() + sizeof prefix + sizeof header, payload, length);
  writeUnsolToParent(message.data(), message.size());
  return true;
}

}  // namespace

int writeToParent(const uint8_t* message, uint32_t length) {
  return writeMessage(process_state.response_pipe, message, length);
}

int writeUnsolToParent(const uint8_t* message, uint32_t length) {
  return writeMessage(process_state.unsolicited_pipe, message, length);
}

void sendStatusResponse(const HookRequest* request, uint32_t status) {
  std::array<uint8_t, kOemHookHeaderCount> record{};
  const OemHookHeader header{.msgId = request != nullptr ? request->msgId() : 0, .status = status};
  std::memcpy(record.data(), &header, sizeof header);
  sendLastResort(record);
}

void sendGenericReply(const HookRequest& request, const uint8_t* payload, uint32_t length) {
  const HookResponse reply = HookResponse::generic(request, length);
  if (!reply) {
    LOGE("sendGenericReply: out of memory!");
    sendGenericStatus(request, HOOK_STATUS_FAILURE);
    return;
  }
  std::memcpy(reply.payload(), payload, length);
  writeToParent(reply.data(), reply.size());
}

void sendGenericStatus(const HookRequest& request, uint8_t status) {
  std::array<uint8_t, kGenericHookHeaderSize + 1> reply{};
  std::memcpy(reply.data(), request.bytes.data(), 4);
  storeLe32(reply.data() + 4, 1);
  reply[kGenericHookHeaderSize] = status;
  sendLastResort(reply);
}

void sendGenericErrorResponse(const uint8_t* buffer) {
  std::array<uint8_t, kGenericHookHeaderSize> reply{};
  std::memcpy(reply.data(), buffer, 4);
  storeLe32(reply.data() + 4, 0xFFFFFFFF);
  sendLastResort(reply);
}

bool sendCdmaUnsol(uint32_t msg_id, const void* payload, uint32_t length) {
  const OemHookHeader header{.msgId = msg_id, .msgLen = static_cast<int32_t>(length)};
  return sendUnsol({HOOK_FAMILY_CDMA, kOemHookHeaderCount}, header, payload, length);
}

bool sendGenericUnsol(const GenericUnsolId& id, const void* payload, uint32_t length) {
  // The id, least significant byte first, stands in the three bytes behind the type.
  const uint32_t header[] = {id.msgId << 8 | id.msgType, length};
  static_assert(sizeof header == kGenericHookHeaderSize);
  return sendUnsol({HOOK_FAMILY_GENERIC, kGenericHookHeaderSize}, header, payload, length);
}

}  // namespace kesext
