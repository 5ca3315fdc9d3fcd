#include "qmi/vendor_client.h"

#include <pthread.h>

#include <cstring>

#include "core/ground/log.h"
#include "platform/properties.h"
#include "platform/qmi_services.h"
#include "qmi/send.h"
#include "qmi/service_wait.h"

namespace kesext {

namespace {

/// Attempts to find the service; each that fails is followed by a wait of at most one second.
constexpr int kServiceAttempts = 500;

/// A client's handle that threads may ask for before it is there: the first indication, and the thread that
/// it starts, may be ahead of the end of qmi_client_init.
class AwaitedHandle {
 public:
  void set(qmi_client_type handle) {
    pthread_mutex_lock(&mutex_);
    handle_ = handle;
    is_set_ = true;
    pthread_cond_broadcast(&changed_);
    pthread_mutex_unlock(&mutex_);
  }
  /// Waits until it is set.
  qmi_client_type get() {
    pthread_mutex_lock(&mutex_);
    while (!is_set_)
      pthread_cond_wait(&changed_, &mutex_);
    qmi_client_type handle = handle_;
    pthread_mutex_unlock(&mutex_);
    return handle;
  }

 private:
  pthread_mutex_t mutex_ = PTHREAD_MUTEX_INITIALIZER;
  pthread_cond_t changed_ = PTHREAD_COND_INITIALIZER;
  bool is_set_ = false;  // not told by the handle: what the framework gives may be null
  qmi_client_type handle_ = nullptr;
};

/// Set by the main thread at start-up; the route before there can be an indication.
struct VendorClient {
  AwaitedHandle handle;
  qmi_client_ind_cb route = nullptr;
  QmiSignal signal{};
};
VendorClient vendor;

void qmi_kesext_hook_ind_cb(qmi_client_type user_handle, uint32_t msg_id, const uint8_t* ind_buf,
                            uint32_t ind_buf_len, void* ind_cb_data) {
  LOGE("qmi_kesext_hook_ind_cb: msg_id=0x%x buf_len=%d cb_data=%p\n", msg_id, ind_buf_len, ind_cb_data);
  vendor.route(user_handle, msg_id, ind_buf, ind_buf_len, ind_cb_data);
}

/// Waits until enough instances are published, and counts them. False, after a log line, when it gave up.
bool waitForInstances(qmi_idl_service_object_type service, bool external_modem, uint32_t* num_services) {
  for (int attempts_left = kServiceAttempts;;) {
    const int result = countInstances(service, num_services);
    LOGE("qmi_kesext_hook_client_init: qmi_client_get_service_list() returned %d num_services = %d\n", result,
         *num_services);
    // With an external modem the service is not up before its second instance.
    if (result == 0 && (!external_modem || *num_services > 1)) return true;
    LOGE("qmi_kesext_hook_client_init: wait for server to come up.\n");
    waitForService(&vendor.signal);
    if (--attempts_left == 0) {
      LOGE("qmi_kesext_hook_client_init: Giving up- Retries exceede %d \n", kServiceAttempts);
      return false;
    }
  }
}

}  // namespace

int32_t qmi_kesext_hook_client_init(qmi_client_ind_cb route) {
  vendor.route = route;
  char baseband[PROPERTY_VALUE_MAX];
  property_get("ro.baseband", baseband, "");
  const bool external_modem = strcasestr(baseband, "mdm") != nullptr;

  const qmi_idl_service_object_type service = kesext_vs_get_service_object_internal_v01(1, 1, 4);
  LOGE("qmi_kesext_hook_client_init: kesext_hook_get_serivce_object\n");
  if (service == nullptr) {
    LOGE("qmi_kesext_hook_client_init: kesext_hook_get_serivce_object failed.\n");
    return -1;
  }
  ServiceNotifier notifier;
  int result = notifier.init(service, &vendor.signal);
  LOGE("qmi_kesext_hook_client_init: qmi_client_notifier_init \n");
  if (result != 0) {
    LOGE("qmi_kesext_hook_client_init: qmi_client_notifier_init failed. rc = %d\n", result);
    return -1;
  }
  uint32_t num_services = 0;
  if (!waitForInstances(service, external_modem, &num_services)) return -1;

  const ServiceList list = fetchServiceList(service, num_services);
  if (list.result != 0) {
    LOGE("qmi_kesext_hook_client_init: qmi_client_init failed. rc = %d\n", list.result);
    return -1;
  }
  LOGE(
      "qmi_kesext_hook_client_init: qmi_client_get_service_list() returned %d num_entries = %d num_services "
      "= %d\n",
      list.result, list.num_entries, list.num_services);
  qmi_client_type handle = nullptr;
  result = qmi_client_init(&list.entries[0], service, qmi_kesext_hook_ind_cb, nullptr, nullptr, &handle);
  if (result != 0) {
    LOGE("qmi_kesext_hook_client_init: qmi_client_init failed. rc = %d\n", result);
    return -1;
  }
  vendor.handle.set(handle);
  notifier.release();
  LOGE("qmi_kesext_hook_client_init Succeeded\n");
  return 0;
}

int32_t qmi_kesext_hook_send_msg_sync(uint32_t msg_id, const void* request, uint32_t request_length,
                                      void* response, uint32_t response_length) {
  return qmi_client_send_msg_sync(vendor.handle.get(), msg_id, request, request_length, response,
                                  response_length, kSendTimeoutMs);
}

}  // namespace kesext
