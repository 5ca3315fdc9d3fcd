#include "qmi/service_wait.h"

#include <sys/time.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>

namespace kesext {

namespace {

/// The wall-clock time in one second.
timespec inOneSecond() {
  timeval now{};
  gettimeofday(&now, nullptr);
  return {.tv_sec = now.tv_sec + 1, .tv_nsec = static_cast<long>(now.tv_usec) * 1000};
}

}  // namespace

ServiceNotifier::~ServiceNotifier() {
  release();
}

void ServiceNotifier::release() {
  if (notifier_ != nullptr) qmi_client_release(notifier_);
  notifier_ = nullptr;
}

qmi_client_error_type ServiceNotifier::init(qmi_idl_service_object_type service, QmiSignal* signal) {
  qmi_client_type notifier = nullptr;
  const qmi_client_error_type result = qmi_client_notifier_init(service, signal, &notifier);
  if (result == 0) notifier_ = notifier;  // what a failure may have stored is not the process's
  return result;
}

void waitForService(QmiSignal* signal) {
  signal->timed_out = 0;
  const timespec deadline = inOneSecond();
  pthread_mutex_lock(&signal->mutex);
  while (signal->sig_set == 0) {
    // A wait that fails is over too: it would fail again at once, for ever.
    if (pthread_cond_timedwait(&signal->cond, &signal->mutex, &deadline) != 0) {
      signal->timed_out = 1;
      break;
    }
  }
  pthread_mutex_unlock(&signal->mutex);
}

qmi_client_error_type countInstances(qmi_idl_service_object_type service, uint32_t* num_services) {
  uint32_t num_entries = 0;
  *num_services = 0;
  return qmi_client_get_service_list(service, nullptr, &num_entries, num_services);
}

ServiceList fetchServiceList(qmi_idl_service_object_type service, uint32_t num_services) {
  ServiceList list;
  list.num_entries = list.num_services = num_services;
  list.entries.reset(
      static_cast<qmi_service_info*>(std::calloc(std::max(num_services, 1U), sizeof(qmi_service_info))));
  if (list.entries)
    list.result =
        qmi_client_get_service_list(service, list.entries.get(), &list.num_entries, &list.num_services);
  return list;
}

}  // namespace kesext
