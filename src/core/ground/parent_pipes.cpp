#include "core/ground/parent_pipes.h"

#include <unistd.h>

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

}  // namespace

int writeToParent(const uint8_t* message, uint32_t length) {
  return writeMessage(process_state.response_pipe, message, length);
}

int writeUnsolToParent(const uint8_t* message, uint32_t length) {
  return writeMessage(process_state.unsolicited_pipe, message, length);
}

void sendStatusResponse(const HookRequest* request, uint32_t status) {
  const MessageBuffer record =
      buildCdmaResponse({.msgId = request != nullptr ? request->msgId() : 0, .status = status});
  if (!record) {
    LOGE("sendStatusResponse: out of memory!");
    return;
  }
  writeToParent(record.data(), record.size());
}

void sendGenericReply(const HookRequest& request, const uint8_t* payload, uint32_t length) {
  const MessageBuffer reply = buildGenericReply(request, length);
  if (!reply) {
    LOGE("sendGenericReply: out of memory!");
    return;
  }
  std::memcpy(reply.data() + kGenericHookHeaderSize, payload, length);
  writeToParent(reply.data(), reply.size());
}

void sendGenericStatus(const HookRequest& request, uint8_t status) {
  sendGenericReply(request, &status, 1);
}

void sendGenericErrorResponse(const uint8_t* buffer) {
  const MessageBuffer reply(kGenericHookHeaderSize);
  if (!reply) {
    LOGE("sendGenericErrorResponse: out of memory!");
    return;
  }
  std::memcpy(reply.data(), buffer, 4);
  storeLe32(reply.data() + 4, 0xFFFFFFFF);
  writeToParent(reply.data(), reply.size());
}

}  // namespace kesext
