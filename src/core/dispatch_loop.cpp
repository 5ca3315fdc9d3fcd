#include "core/dispatch_loop.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "carrier/request_dispatcher.h"
#include "core/ground/hook_message.h"
#include "core/ground/log.h"
#include "core/ground/parent_pipes.h"
#include "core/ground/process_state.h"
#include "core/request_tables.h"

namespace kesext {

namespace {

/// The receive buffer and how much of it the last request took, in bytes; main thread only.
HookRequest received;
size_t received_length = 0;

/// What select() tells of a descriptor, but of any number: a descriptor set ends at 1024.
int selectReadable(int descriptor, bool* readable) {
  pollfd wait{.fd = descriptor, .events = POLLIN, .revents = 0};
  // poll() passes over a negative descriptor, and would wait for ever.
  const int result = poll(&wait, 1, descriptor < 0 ? 0 : -1);
  if (descriptor < 0 || (wait.revents & POLLNVAL) != 0) {
    errno = EBADF;
    return -1;
  }
  *readable = wait.revents != 0;
  return result;
}

/// Waits for a request and reads it into `received`. The number of bytes, 0 when the parent has closed the
/// pipe, or -1 after a failure that has been logged.
ssize_t receiveRequest() {
  const int pipe = process_state.request_pipe;
  bool readable = false;
  const int selected = selectReadable(pipe, &readable);
  if (selected < 0) {
    if (errno == EINTR)
      LOGE(" Got EINTR, ignoring");
    else
      LOGE("Select failed with errno = %d.", errno);
    return -1;
  }
  if (selected == 0) {
    LOGE("select returned zero");
    return -1;
  }
  if (!readable) {
    LOGE("select succeed, fd failed, should not happen");
    return -1;
  }
  // Only what the last request took can be other than zero, as no handler may write to it.
  std::fill_n(received.bytes.begin(), std::exchange(received_length, 0), uint8_t{0});
  const ssize_t count = read(pipe, received.bytes.data(), received.bytes.size());
  if (count < 0) {
    LOGE("Dispatcher: read failed with errno %d", errno);
    return -1;
  }
  received_length = static_cast<size_t>(count);
  return count;
}

void serveCdmaRequest(uint32_t msg_id) {
  LOGE("Received CDMA Hook request 0x%x", msg_id);
  if (kesext_hook_sprint_handler(&received, 0xFFFFFFFF, 0) == 0) {
    LOGE("0x%x is handled by Sprint handler.", msg_id);
    return;
  }
  LOGE("0x%x not supported by Sprint handler.", msg_id);
  if (const HookTableRow* row = findCdmaFallback(msg_id)) {
    row->handler(received, row->argument, 0);
    return;
  }
  LOGE("0x%x not supported", msg_id);
  sendStatusResponse(&received, HOOK_STATUS_NOT_SUPPORTED);
}

void serveGenericRequest(uint32_t msg_id) {
  LOGE("Received Generic Hook request 0x%x", msg_id);
  GenericHookHeader header{};
  ParOemGen(received.bytes.data(), kGenericHookHeaderSize, &header);
  LOGD("handle generic request, msgID 0x%x. msgLen %d, msgType %d", header.msgId, header.msgLen,
       header.msgType);
  if (const HookTableRow* row = findGenericHook(header.msgId)) {
    row->handler(received, row->argument, 0);
    return;
  }
  LOGE("0x%x not supported", header.msgId);
  sendGenericErrorResponse(received.bytes.data());
}

void serveRequest(int32_t length) {
  uint32_t family = HOOK_FAMILY_CDMA;
  const uint32_t msg_id = getOemHook(received.bytes.data(), length, &family);
  LOGE("msg Id is 0x%x, type is %d. ", msg_id, family);
  if (msg_id == kUnusableMsgId) {
    LOGE("Wrong msg Id");
    sendGenericErrorResponse(received.bytes.data());
  } else if (family == HOOK_FAMILY_CDMA) {
    serveCdmaRequest(msg_id);
  } else {
    serveGenericRequest(msg_id);
  }
}

}  // namespace

void serveRequests() {
  while (true) {
    LOGE("Child process waiting for data");
    const ssize_t count = receiveRequest();
    if (count < 0) {
      LOGE("Read failed");
      continue;
    }
    LOGE("Read %d bytes from pipe", static_cast<int>(count));
    if (count == 0) {
      LOGE("Buffer length is zero..Exiting KESEXT");
      return;
    }
    serveRequest(static_cast<int32_t>(count));
  }
}

}  // namespace kesext
