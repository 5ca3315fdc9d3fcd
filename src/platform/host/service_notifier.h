// Watches for instances of a service and signals them; the modem may come and go meanwhile.
#pragma once

#include <atomic>

#include "platform/host/link_socket.h"
#include "platform/host/thread.h"
#include "platform/host/unique_fd.h"
#include "platform/qmi_client.h"

namespace host {

class ServiceNotifier {
 public:
  ServiceNotifier() = default;
  /// After this the signal is not touched any more.
  ~ServiceNotifier();
  ServiceNotifier(const ServiceNotifier&) = delete;
  ServiceNotifier& operator=(const ServiceNotifier&) = delete;

  /// Starts to set `signal`, which is ready and outlives the notifier, whenever the modem reports at least
  /// one instance. False when this machine has no thread or descriptor left.
  bool start(Service service, QmiSignal* signal);

 private:
  void watch();
  void followReports();
  [[nodiscard]] bool stopOrInput(int timeout_ms) const;
  void raiseSignal() const;

  Service service_{};
  QmiSignal* signal_ = nullptr;
  std::atomic<bool> stopping_ = false;
  UniqueFd stop_;  // an event descriptor, readable once the notifier has to stop
  LinkSocket socket_;
  Thread thread_;
};

}  // namespace host
