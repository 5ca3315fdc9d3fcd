// A connection to the modem: one packet is one frame.
#pragma once

#include <sys/socket.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>

#include "platform/host/frame.h"
#include "platform/host/unique_fd.h"
#include "platform/qmi_client.h"

namespace host {

/// A point in time that setting the wall clock does not move.
using Deadline = std::chrono::steady_clock::time_point;

/// A received frame; the body lies in the socket's buffer, until the next receive.
struct Frame {
  FrameHeader header;
  const uint8_t* body = nullptr;
  size_t body_size = 0;
};

enum class Received {
  frame,
  nothing,  // none yet, or one that is too short or too long and was dropped
  late,     // the deadline has passed
  closed,   // the modem is gone, and all that it sent before was received
};

/// One thread at a time may receive; sending is free for all.
class LinkSocket {
 public:
  /// Connects to the modem of the handset folder, in place of an earlier connection. kNoService when nobody
  /// listens there, kTimedOut when it accepts nobody until the deadline, kLocalError.
  qmi_client_error_type connect(Deadline deadline);
  /// Sends one frame. kTimedOut when the modem makes no room for it until the deadline, kNoService when the
  /// modem is gone, kLocalError, also for a body that is too long for a frame.
  qmi_client_error_type send(const FrameHeader& header, const void* body, size_t body_size,
                             Deadline deadline) const;
  /// Takes the next frame without waiting for one; never late.
  Received receive(Frame& frame) { return receive(frame, MSG_DONTWAIT); }
  /// Takes the next frame and waits for it, but may return early with nothing.
  Received receiveUntil(Frame& frame, Deadline deadline);
  /// Connects, sends a question without a body, drops all until the first frame of the kind `answer`, and
  /// stores that frame's code. kTimedOut at the deadline, kNoService, kLocalError.
  qmi_client_error_type connectAndAsk(FrameKind question, Service service, FrameKind answer,
                                      Deadline deadline, int32_t& code);
  /// Ends the connection in both directions; everybody who waits for input sees its end.
  void shutDown() const;
  void close() { fd_.reset(); }
  [[nodiscard]] int fd() const { return fd_.get(); }

 private:
  Received receive(Frame& frame, int flags);
  [[nodiscard]] bool atEnd() const;

  UniqueFd fd_;
  std::array<uint8_t, kFrameSizeMax> buffer_;
};

}  // namespace host
