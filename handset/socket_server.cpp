#include "handset/socket_server.h"

#include <fcntl.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <system_error>
#include <utility>

namespace handset {
namespace {

// What epoll reports for the descriptors that are no connections.
constexpr uint64_t kWakeId = 0;
constexpr uint64_t kListeningId = 1;
constexpr ConnectionId kFirstConnection = 2;

constexpr int kSendTimeoutSeconds = 10;

[[noreturn]] void fail(const std::string& what) {
  throw std::system_error(errno, std::generic_category(), what);
}

bool somebodyListensOn(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof(address.sun_path)) return false;
  std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
  const host::UniqueFd probe(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
  return probe && connect(probe.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
}

host::UniqueFd listenOn(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (somebodyListensOn(path)) {
    errno = EADDRINUSE;
    fail(path);
  }
  // The socket appears under its name only when everybody may connect to it and somebody listens.
  const std::string temporary = path + ".new";
  if (temporary.size() >= sizeof(address.sun_path)) {
    errno = ENAMETOOLONG;
    fail(path);
  }
  std::memcpy(address.sun_path, temporary.c_str(), temporary.size() + 1);

  unlink(temporary.c_str());
  host::UniqueFd listening(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  if (!listening) fail("socket");
  if (bind(listening.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0)
    fail(temporary);
  if (chmod(temporary.c_str(), 0777) != 0) fail(temporary);
  if (listen(listening.get(), SOMAXCONN) != 0) fail(temporary);
  if (std::rename(temporary.c_str(), path.c_str()) != 0) fail(path);
  return listening;
}

}  // namespace

SocketServer::SocketServer(Callbacks callbacks, size_t packet_size_max)
    : callbacks_(std::move(callbacks)),
      buffer_(packet_size_max),
      epoll_(epoll_create1(EPOLL_CLOEXEC)),
      wake_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      next_id_(kFirstConnection) {
  if (!epoll_ || !wake_) fail("epoll");
  watch(wake_.get(), kWakeId);
}

SocketServer::~SocketServer() {
  stop();
}

void SocketServer::start(const std::string& path) {
  if (running_) return;
  listening_ = listenOn(path);
  path_ = path;
  watch(listening_.get(), kListeningId);
  running_ = true;
  thread_ = std::thread([this] { run(); });
}

void SocketServer::stop() {
  if (!running_) return;
  unlink(path_.c_str());
  running_ = false;
  wake();
  thread_.join();
  listening_.reset();
  dropConnections();
  const std::scoped_lock lock(mutex_);
  later_.clear();
}

void SocketServer::dropConnections() {
  std::vector<ConnectionId> ids;
  {
    const std::scoped_lock lock(mutex_);
    for (const auto& [id, connection] : connections_)
      ids.push_back(id);
  }
  for (const ConnectionId id : ids)
    drop(id);
}

void SocketServer::drop(ConnectionId id) {
  {
    const std::scoped_lock lock(mutex_);
    const auto found = connections_.find(id);
    if (found == connections_.end()) return;
    // Whoever is sending keeps the descriptor open a moment longer, so the peer is told, and epoll too.
    const int fd = found->second->get();
    epoll_ctl(epoll_.get(), EPOLL_CTL_DEL, fd, nullptr);
    shutdown(fd, SHUT_RDWR);
    connections_.erase(found);
  }
  callbacks_.closed(id);
}

bool SocketServer::send(ConnectionId id, ByteView first, ByteView second) {
  const std::shared_ptr<host::UniqueFd> connection = find(id);
  if (connection == nullptr) return false;
  std::array<iovec, 2> parts{{{const_cast<uint8_t*>(first.data()), first.size()},
                              {const_cast<uint8_t*>(second.data()), second.size()}}};
  msghdr message{};
  message.msg_iov = parts.data();
  message.msg_iovlen = parts.size();
  ssize_t sent = 0;
  do {
    sent = sendmsg(connection->get(), &message, MSG_NOSIGNAL);
  } while (sent < 0 && errno == EINTR);
  return sent >= 0;
}

void SocketServer::sendLater(ConnectionId id, Clock::time_point due, Bytes packet) {
  {
    const std::scoped_lock lock(mutex_);
    later_.emplace(due, Later{id, std::move(packet)});
  }
  wake();
}

void SocketServer::run() {
  std::array<epoll_event, 16> events{};
  while (running_) {
    const int count = epoll_wait(epoll_.get(), events.data(), static_cast<int>(events.size()), sendDue());
    for (int i = 0; i < count; ++i) {
      const uint64_t id = events[static_cast<size_t>(i)].data.u64;
      if (id == kWakeId) {
        uint64_t wakes = 0;
        [[maybe_unused]] const ssize_t taken = read(wake_.get(), &wakes, sizeof(wakes));
      } else if (id == kListeningId) {
        acceptOne();
      } else {
        receiveOne(id);
      }
    }
  }
}

void SocketServer::acceptOne() {
  auto connection =
      std::make_shared<host::UniqueFd>(accept4(listening_.get(), nullptr, nullptr, SOCK_CLOEXEC));
  if (!*connection) return;
  const int fd = connection->get();
  const timeval timeout{kSendTimeoutSeconds, 0};
  setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &timeout, sizeof(timeout));
  const std::scoped_lock lock(mutex_);
  const ConnectionId id = next_id_++;
  connections_.emplace(id, std::move(connection));
  watch(fd, id);
}

void SocketServer::receiveOne(ConnectionId id) {
  const std::shared_ptr<host::UniqueFd> connection = find(id);
  if (connection == nullptr) return;
  const ssize_t size = recv(connection->get(), buffer_.data(), buffer_.size(), MSG_DONTWAIT | MSG_TRUNC);
  if (size < 0 && (errno == EAGAIN || errno == EINTR)) return;
  if (size <= 0) {
    drop(id);
  } else if (static_cast<size_t>(size) <= buffer_.size()) {
    callbacks_.received(id, ByteView(buffer_).first(static_cast<size_t>(size)));
  }
}

int SocketServer::sendDue() {
  for (;;) {
    Later next;
    {
      const std::scoped_lock lock(mutex_);
      if (later_.empty()) return -1;
      const auto first = later_.begin();
      const auto wait = first->first - Clock::now();
      if (wait > Clock::duration::zero()) {
        return static_cast<int>(std::chrono::ceil<std::chrono::milliseconds>(wait).count());
      }
      next = std::move(first->second);
      later_.erase(first);
    }
    send(next.id, next.packet);
  }
}

void SocketServer::watch(int fd, uint64_t id) const {
  epoll_event event{};
  event.events = EPOLLIN;
  event.data.u64 = id;
  if (epoll_ctl(epoll_.get(), EPOLL_CTL_ADD, fd, &event) != 0) fail("epoll_ctl");
}

void SocketServer::wake() const {
  constexpr uint64_t kOne = 1;
  [[maybe_unused]] const ssize_t written = write(wake_.get(), &kOne, sizeof(kOne));
}

std::shared_ptr<host::UniqueFd> SocketServer::find(ConnectionId id) {
  const std::scoped_lock lock(mutex_);
  const auto found = connections_.find(id);
  return found == connections_.end() ? nullptr : found->second;
}

}  // namespace handset
