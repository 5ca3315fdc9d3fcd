// A client of one of the modem's services, on a connection of its own.
//
// A thread that waits for its response reads the socket itself, since handing the response over from another
// thread would double the time of a request. Of several senders one receives and completes the others'
// requests too; when it leaves, another one takes over. While nobody waits, a background thread receives. So
// that responses do not wake it in vain, its watch on the socket pauses while there are senders, and for a
// moment longer: to pause and resume for every request would cost a good part of the request's time.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>

#include "platform/host/indication_queue.h"
#include "platform/host/input_watch.h"
#include "platform/host/link_socket.h"
#include "platform/host/thread.h"
#include "platform/qmi_client.h"

namespace host {

/// A request and the place for its response, whose size has to be that of the response structure.
struct Exchange {
  uint16_t message_id;
  const void* request;
  size_t request_size;
  void* response;  // written only when the result is kDone
  size_t response_size;
};

class ModemClient {
 public:
  ModemClient() = default;
  /// Ends the connection, fails the sends that are under way and waits for them and for a running callback.
  ~ModemClient();
  ModemClient(const ModemClient&) = delete;
  ModemClient& operator=(const ModemClient&) = delete;

  /// Connects to the service. The modem's code when it refuses, kNoService, kTimedOut, kLocalError.
  qmi_client_error_type connect(Service service, Deadline deadline);
  /// Starts to receive, once connected; indications go to `callback`, unless it is null. False when this
  /// machine has no thread or descriptor left; no callback has run then.
  bool start(qmi_client_type handle, qmi_client_ind_cb callback, void* data);
  /// Sends a request and waits for its response; from any number of threads at once.
  qmi_client_error_type exchange(const Exchange& exchange, Deadline deadline);
  /// Whether the caller runs inside the indication callback.
  [[nodiscard]] bool isInCallback() const { return indications_.isInCallback(); }

 private:
  struct Pending;

  void add(Pending& pending);
  void remove(const Pending& pending);
  void awaitResponse(std::unique_lock<std::mutex>& lock, const Pending& pending, Deadline deadline);
  void receiveUntilDone(std::unique_lock<std::mutex>& lock, const Pending& pending, Deadline deadline);
  void receiveWhileIdle();
  void receiveAvailable(std::unique_lock<std::mutex>& lock);
  void take(Received received, const Frame& frame);
  void complete(const Frame& frame);

  Service service_{};
  LinkSocket socket_;

  std::mutex mutex_;  // guards all from here to watch_
  /// Told when a request is done, nobody receives, waits or sends any more, the link is lost or the client
  /// goes.
  std::condition_variable changed_;
  Pending* pending_ = nullptr;  // one for each thread inside `exchange`
  size_t waiting_ = 0;          // how many of them have sent and wait for the response
  uint32_t last_transaction_ = 0;
  bool receiving_ = false;  // a thread is receiving, and the only one that may
  bool link_lost_ = false;
  bool released_ = false;
  InputWatch watch_;  // the background thread waits for it without the lock

  IndicationQueue indications_;
  Thread background_;
};

}  // namespace host
