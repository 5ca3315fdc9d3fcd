// The least that serving a request takes: floor REQUESTS RESPONSES LINES ANSWER [MODEM EXCHANGE]. For each
// request one poll, one read, a log line for each of the comma-separated LINES lengths, and one write of
// ANSWER bytes; with a modem socket also one round trip of the EXCHANGE bytes of a request frame.
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <string>
#include <vector>

#include "platform/host/frame.h"

namespace {

int connectToVendor(const char* path) {
  const int socket_fd = socket(AF_UNIX, SOCK_SEQPACKET, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::snprintf(address.sun_path, sizeof address.sun_path, "%s", path);
  if (connect(socket_fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) return -1;
  const host::FrameHeader hello{host::FrameKind::connect, host::Service::vendor, 0, 0, 0};
  char reply[64];
  if (send(socket_fd, &hello, sizeof hello, 0) < 0 || recv(socket_fd, reply, sizeof reply, 0) <= 0) return -1;
  return socket_fd;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 5) return 2;
  const int requests = std::atoi(argv[1]);
  const int responses = std::atoi(argv[2]);
  std::vector<std::string> lines;
  std::istringstream lengths(argv[3]);
  for (std::string length; std::getline(lengths, length, ',');)
    lines.emplace_back(std::string(std::stoul(length), 'x') + "\n");
  const std::string answer(std::stoul(argv[4]), '\0');

  int modem = -1;
  std::string exchange;
  if (argc >= 7) {
    modem = connectToVendor(argv[5]);
    if (modem < 0) return 3;
    const host::FrameHeader header{host::FrameKind::request, host::Service::vendor, 0x0008, 1, 0};
    exchange.assign(reinterpret_cast<const char*>(&header), sizeof header);
    exchange.append(std::stoul(argv[6]), '\0');
  }

  static char request[17408];
  static char response[host::kFrameSizeMax];
  while (true) {
    pollfd wait{.fd = requests, .events = POLLIN, .revents = 0};
    poll(&wait, 1, -1);
    if (read(requests, request, sizeof request) <= 0) return 0;
    for (const std::string& line : lines)
      (void)!write(STDERR_FILENO, line.data(), line.size());
    if (modem >= 0 && (send(modem, exchange.data(), exchange.size(), 0) < 0 ||
                       recv(modem, response, sizeof response, 0) <= 0))
      return 4;
    if (write(responses, answer.data(), answer.size()) < 0) return 5;
  }
}
