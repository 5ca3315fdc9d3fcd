#include "platform/host/link_socket.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <sys/time.h>
#include <sys/un.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>

#include "platform/device_path.h"
#include "platform/host/link_results.h"

namespace host {
namespace {

using std::chrono::duration_cast;
using std::chrono::microseconds;
using std::chrono::milliseconds;
using std::chrono::nanoseconds;
using std::chrono::seconds;
using std::chrono::steady_clock;

/// A receive call ends after about this time, so a deadline that is well beyond needs no other guard.
constexpr milliseconds kReceiveSlice{100};
/// Between two attempts to send. A socket that polls as full may have room for one more frame.
constexpr milliseconds kSendRetryInterval{1};

/// Limits what `option`, SO_RCVTIMEO or SO_SNDTIMEO, bounds; connecting counts as sending.
bool limitTime(int fd, int option, microseconds time) {
  const auto whole = duration_cast<seconds>(time);
  const timeval limit{.tv_sec = static_cast<time_t>(whole.count()),
                      .tv_usec = static_cast<suseconds_t>((time - whole).count())};
  return setsockopt(fd, SOL_SOCKET, option, &limit, sizeof limit) == 0;
}

/// Returns when the socket reports one of `events`, the connection has ended, a signal came or time is up.
void awaitEvents(int fd, short events, nanoseconds time) {
  pollfd wait{.fd = fd, .events = events, .revents = 0};
  const auto whole = duration_cast<seconds>(time);
  const timespec limit{.tv_sec = static_cast<time_t>(whole.count()),
                       .tv_nsec = static_cast<long>((time - whole).count())};
  ppoll(&wait, 1, &limit, nullptr);
}

qmi_client_error_type connectResult(int error) {
  switch (error) {
    case ENOENT:
    case ENOTDIR:
    case ECONNREFUSED:
      return kNoService;
    case EAGAIN:
      return kTimedOut;
    default:
      return kLocalError;
  }
}

}  // namespace

qmi_client_error_type LinkSocket::connect(Deadline deadline) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (device_path(kModemSocketPath, address.sun_path, sizeof address.sun_path)[0] == '\0') return kLocalError;
  fd_.reset(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
  if (!fd_ || !limitTime(fd_.get(), SO_RCVTIMEO, kReceiveSlice)) return kLocalError;
  while (true) {
    const auto left = duration_cast<microseconds>(deadline - steady_clock::now());
    if (left <= microseconds::zero()) return kTimedOut;
    if (!limitTime(fd_.get(), SO_SNDTIMEO, left)) return kLocalError;
    if (::connect(fd_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) return kDone;
    if (errno != EINTR) return connectResult(errno);
  }
}

qmi_client_error_type LinkSocket::send(const FrameHeader& header, const void* body, size_t body_size,
                                       Deadline deadline) const {
  if (body_size > kFrameSizeMax - sizeof header) return kLocalError;
  std::array<iovec, 2> parts{{{.iov_base = const_cast<FrameHeader*>(&header), .iov_len = sizeof header},
                              {.iov_base = const_cast<void*>(body), .iov_len = body_size}}};
  msghdr packet{};
  packet.msg_iov = parts.data();
  packet.msg_iovlen = parts.size();
  while (sendmsg(fd_.get(), &packet, MSG_DONTWAIT | MSG_NOSIGNAL) < 0) {
    if (errno == EPIPE) return kNoService;
    // ECONNRESET tells once that the modem went with frames unread.
    if (errno == EINTR || errno == ECONNRESET) continue;
    if (errno != EAGAIN) return kLocalError;
    const nanoseconds left = deadline - steady_clock::now();
    if (left <= nanoseconds::zero()) return kTimedOut;
    awaitEvents(fd_.get(), POLLOUT, std::min<nanoseconds>(left, kSendRetryInterval));
  }
  return kDone;
}

Received LinkSocket::receiveUntil(Frame& frame, Deadline deadline) {
  const nanoseconds left = deadline - steady_clock::now();
  if (left <= nanoseconds::zero()) return Received::late;
  if (left >= 2 * kReceiveSlice) return receive(frame, 0);
  awaitEvents(fd_.get(), POLLIN, left);
  return receive(frame, MSG_DONTWAIT);
}

Received LinkSocket::receive(Frame& frame, int flags) {
  // MSG_TRUNC makes the result the packet's size, also of one that the buffer cannot hold.
  const ssize_t size = recv(fd_.get(), buffer_.data(), buffer_.size(), flags | MSG_TRUNC);
  if (size < 0) {
    // ECONNRESET comes once, ahead of frames that the modem had sent before it went. Memory may come back.
    const bool goes_on =
        errno == EAGAIN || errno == EINTR || errno == ECONNRESET || errno == ENOMEM || errno == ENOBUFS;
    return goes_on ? Received::nothing : Received::closed;
  }
  if (size == 0 && atEnd()) return Received::closed;
  const auto packet_size = static_cast<size_t>(size);
  if (packet_size < sizeof frame.header || packet_size > buffer_.size()) return Received::nothing;
  memcpy(&frame.header, buffer_.data(), sizeof frame.header);
  frame.body = buffer_.data() + sizeof frame.header;
  frame.body_size = packet_size - sizeof frame.header;
  return Received::frame;
}

/// Tells the end of the connection from an empty packet, which receiving reports alike.
bool LinkSocket::atEnd() const {
  pollfd state{.fd = fd_.get(), .events = POLLRDHUP, .revents = 0};
  int left = 0;
  return poll(&state, 1, 0) > 0 && (ioctl(fd_.get(), FIONREAD, &left) != 0 || left == 0);
}

qmi_client_error_type LinkSocket::connectAndAsk(FrameKind question, Service service, FrameKind answer,
                                                Deadline deadline, int32_t& code) {
  qmi_client_error_type result = connect(deadline);
  if (result != kDone) return result;
  result = send({.kind = question, .service = service}, nullptr, 0, deadline);
  if (result != kDone) return result;
  while (true) {
    Frame frame;
    const Received received = receiveUntil(frame, deadline);
    if (received == Received::closed) return kNoService;
    if (received == Received::late) return kTimedOut;
    if (received == Received::nothing || frame.header.kind != answer) continue;
    code = frame.header.code;
    return kDone;
  }
}

void LinkSocket::shutDown() const {
  shutdown(fd_.get(), SHUT_RDWR);
}

}  // namespace host
