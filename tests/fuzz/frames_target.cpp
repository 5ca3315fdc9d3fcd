// The workstation's link as a target: the modem's frames come as answers to those of the process, with others
// that the input makes up.
#include <sys/socket.h>
#include <unistd.h>

#include <array>

#include "fuzz/fuzz.h"
#include "platform/host/frame.h"
#include "platform/qmi_services.h"

using namespace host;

namespace {

constexpr size_t kResponseSize = 40;
constexpr size_t kBodySizes[] = {kResponseSize, 0, 1, 41, kFrameSizeMax - 12, kFrameSizeMax - 11};

fuzz::Input input;
/// The modem's end of each socket of the process.
std::array<int, 1024> modem_ends{};

void sendFrame(int modem_end, const FrameHeader& header, size_t body_size) {
  static std::array<uint8_t, sizeof header + kFrameSizeMax> frame;
  std::memcpy(frame.data(), &header, sizeof header);
  input.take(frame.data() + sizeof header, std::min<size_t>(body_size, input.byte()));
  send(modem_end, frame.data(), sizeof header + body_size, MSG_NOSIGNAL);
}

/// A frame somewhat like the one that is due, or a piece of it.
void sendAny(int modem_end, FrameHeader header) {
  const uint8_t form = input.byte();
  if (form % 2 == 0) header.kind = FrameKind::indication;
  if (form % 8 == 3) header.kind = static_cast<FrameKind>(input.byte());
  if (form % 8 >= 6) header.message_id = input.take<uint16_t>();
  if (form % 16 == 5) header.transaction += input.byte();
  if (form % 16 == 13) header.code = input.take<int32_t>();
  if (form < 0xF0) return sendFrame(modem_end, header, input.of(kBodySizes));
  send(modem_end, &header, form % sizeof header, MSG_NOSIGNAL);
}

/// What the modem has for a frame of the process.
void answer(int modem_end, FrameHeader header) {
  const bool is_request = header.kind == FrameKind::request;
  header.code = header.kind == FrameKind::lookup ? 1 : 0;
  // Each kind of question is followed by that of its answer.
  header.kind = static_cast<FrameKind>(static_cast<uint8_t>(header.kind) + 1);
  const uint8_t form = input.byte();
  for (unsigned count = form % 4; count > 0; --count)
    sendAny(modem_end, header);
  if (form < 0xE0) return sendFrame(modem_end, header, is_request ? kResponseSize : 0);
  if (form >= 0xF0 || !is_request) shutdown(modem_end, SHUT_RDWR);
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  input = {bytes, size};
  const qmi_idl_service_object_type service = kesext_vs_get_service_object_internal_v01(1, 1, 4);
  qmi_service_info list{};
  uint32_t counts[] = {1, 0};
  if (qmi_client_get_service_list(service, &list, &counts[0], &counts[1]) != 0) return 0;
  const auto ignore = [](qmi_client_type, uint32_t, const uint8_t*, uint32_t, void*) {};
  qmi_client_type client = nullptr;
  if (qmi_client_init(&list, service, ignore, nullptr, nullptr, &client) != 0) return 0;
  std::array<uint8_t, kResponseSize> response;
  while (input.left > 0)
    qmi_client_send_msg_sync(client, input.byte(), bytes, 1, response.data(), response.size(), 1);
  return qmi_client_release(client);
}

// The link puts these in place of the calls that they are named for.
extern "C" {

int __wrap_socket(int domain, int type, int protocol) {
  std::array<int, 2> ends{};
  assert(socketpair(domain, type, protocol, ends.data()) == 0);
  int& modem_end = modem_ends.at(ends[0]);
  if (modem_end != 0) close(modem_end);  // the other end of one that is closed
  modem_end = ends[1];
  return ends[0];
}

int __wrap_connect(int, const sockaddr*, socklen_t) {
  return 0;
}

ssize_t __real_sendmsg(int process_end, const msghdr* packet, int flags);
ssize_t __wrap_sendmsg(int process_end, const msghdr* packet, int flags) {
  const ssize_t sent = __real_sendmsg(process_end, packet, flags);
  const int modem_end = modem_ends.at(process_end);
  FrameHeader header;
  if (sent > 0 && recv(modem_end, &header, sizeof header, 0) == sizeof header) answer(modem_end, header);
  return sent;
}

}  // extern "C"
