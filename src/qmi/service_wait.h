// What both client start-ups do while the modem is coming up: wait for a service and list its instances.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>

#include "platform/qmi_client.h"

namespace kesext {

/// A notifier on a signal, released when it goes out of scope.
class ServiceNotifier {
 public:
  ServiceNotifier() = default;
  ServiceNotifier(const ServiceNotifier&) = delete;
  ServiceNotifier& operator=(const ServiceNotifier&) = delete;
  ~ServiceNotifier();

  /// Makes the signal ready and starts to watch. The framework's result.
  qmi_client_error_type init(qmi_idl_service_object_type service, QmiSignal* signal);
  /// Releases it ahead of time.
  void release();

 private:
  qmi_client_type notifier_ = nullptr;
};

/// Waits at most one second for the framework to signal a service event; returns at once when it ever has.
/// Stores in `signal->timed_out` whether the wait ended without one; one that fails counts as a second.
void waitForService(QmiSignal* signal);

/// Asks how many instances of the service are published. The framework's result.
qmi_client_error_type countInstances(qmi_idl_service_object_type service, uint32_t* num_services);

/// The service information list. There is a first entry whenever the result is 0.
struct ServiceList {
  struct Free {
    void operator()(qmi_service_info* list) const { std::free(list); }
  };

  qmi_client_error_type result = -1;  // the framework's, or -1 when there was no memory
  uint32_t num_entries = 0;
  uint32_t num_services = 0;
  std::unique_ptr<qmi_service_info[], Free> entries;  // zero where the framework filled none
};

/// Fetches the list with room for the `num_services` instances that were counted.
ServiceList fetchServiceList(qmi_idl_service_object_type service, uint32_t num_services);

}  // namespace kesext
