// A SOCK_SEQPACKET server on a socket file, with a thread of its own.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "handset/bytes.h"
#include "platform/host/unique_fd.h"

namespace handset {

/// Never used twice by one server, across restarts too.
using ConnectionId = uint64_t;

/// Everything may be called from any thread, but start() and stop() only from one at a time and never from a
/// callback.
class SocketServer {
 public:
  using Clock = std::chrono::steady_clock;

  struct Callbacks {
    /// On the server's thread; the bytes are valid during the call.
    std::function<void(ConnectionId, ByteView)> received;
    /// On the server's thread, or on the one that dropped the connection.
    std::function<void(ConnectionId)> closed;
  };

  /// Packets longer than `packet_size_max` bytes are dropped.
  SocketServer(Callbacks callbacks, size_t packet_size_max);
  SocketServer(const SocketServer&) = delete;
  SocketServer& operator=(const SocketServer&) = delete;
  ~SocketServer();

  /// Listens on a socket file that every user may connect to; a file that is there already is replaced.
  /// Throws std::system_error when it cannot.
  void start(const std::string& path);
  /// Removes the socket file, drops all connections and forgets what is due later.
  void stop();
  void dropConnections();

  /// Sends the two parts as one packet, from the calling thread. False when the connection is gone or does
  /// not take the packet within 10 seconds.
  bool send(ConnectionId id, ByteView first, ByteView second = {});
  /// Sends the packet at the given time, from the server's thread.
  void sendLater(ConnectionId id, Clock::time_point due, Bytes packet);

 private:
  struct Later {
    ConnectionId id;
    Bytes packet;
  };

  void run();
  void acceptOne();
  void receiveOne(ConnectionId id);
  void drop(ConnectionId id);
  void watch(int fd, uint64_t id) const;
  void wake() const;
  /// Sends what is due and returns how many milliseconds the next packet is away, −1 when there is none.
  int sendDue();
  std::shared_ptr<host::UniqueFd> find(ConnectionId id);

  Callbacks callbacks_;
  Bytes buffer_;
  host::UniqueFd epoll_;
  host::UniqueFd wake_;
  host::UniqueFd listening_;
  std::string path_;
  std::thread thread_;
  std::atomic<bool> running_ = false;

  std::mutex mutex_;
  std::map<ConnectionId, std::shared_ptr<host::UniqueFd>> connections_;
  std::multimap<Clock::time_point, Later> later_;
  ConnectionId next_id_;
};

}  // namespace handset
