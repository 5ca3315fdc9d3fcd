#include "qmi/carrier_clients.h"

#include "core/ground/log.h"
#include "platform/qmi_services.h"
#include "qmi/send.h"
#include "qmi/service_wait.h"

namespace kesext {

namespace {

/// Attempts to connect a client, and within each of them to find its service; one that does not find it is
/// followed by a wait of at most one second.
constexpr int kConnectAttempts = 5;
constexpr int kServiceAttempts = 5;

/// Null until connected; set by the main thread at start-up, used by it alone.
struct CarrierClients {
  qmi_client_type nas = nullptr;
  qmi_client_type dms = nullptr;
};
CarrierClients clients;

int32_t connectWithRetries(qmi_idl_service_object_type service, CarrierClientType type) {
  int32_t result = -1;
  for (int attempt = 1; attempt <= kConnectAttempts; ++attempt) {
    result = qmi_kesext_sprint_client_init_with_type(service, type);
    if (result == 0) break;
    LOGE("qmi_kesext_sprint_client_init_with_type: Try (%d): Client init fail. rc = %d\n", attempt, result);
  }
  return result;
}

/// Waits a while for the service and counts its instances; that there are none is found out by the fetch.
uint32_t waitForInstances(qmi_idl_service_object_type service, QmiSignal* signal) {
  uint32_t num_services = 0;
  for (int attempt = 0; attempt < kServiceAttempts; ++attempt) {
    const int result = countInstances(service, &num_services);
    LOGE("sprint_client_init: qmi_client_get_service_list() returned %d num_services = %d\n", result,
         num_services);
    if (result == 0) break;
    LOGE("sprint_client_init: wait for server to come up.\n");
    waitForService(signal);
  }
  return num_services;
}

int32_t connect(const qmi_service_info* entry, qmi_idl_service_object_type service, int32_t type) {
  switch (type) {
    case kNasClient:
      LOGE("sprint_client_init: NAS");
      return qmi_client_init(entry, service, nullptr, nullptr, nullptr, &clients.nas);
    case kDmsClient:
      LOGE("sprint_client_init: DMS");
      return qmi_client_init(entry, service, nullptr, nullptr, nullptr, &clients.dms);
    default:
      LOGE("sprint_client_init: Unknown");
      return -1;
  }
}

}  // namespace

int32_t qmi_kesext_sprint_client_init() {
  const qmi_idl_service_object_type nas = nas_get_service_object_internal_v01(1, 133, 6);
  const qmi_idl_service_object_type dms = dms_get_service_object_internal_v01(1, 40, 6);

  int32_t result = connectWithRetries(nas, kNasClient);
  LOGE("qmi_kesext_sprint_client_init: NAS Client Init rc: %d", result);
  if (result != 0) return result;

  result = connectWithRetries(dms, kDmsClient);
  LOGE("qmi_kesext_sprint_client_init: DMS Client Init rc: %d", result);
  return result;
}

int32_t qmi_kesext_sprint_client_init_with_type(qmi_idl_service_object_type service, int32_t type) {
  if (service == nullptr) {
    LOGE("sprint_client_init: kesext_hook_get_serivce_object failed.\n");
    return -1;
  }
  QmiSignal signal{};
  ServiceNotifier notifier;
  int32_t result = notifier.init(service, &signal);
  LOGE("sprint_client_init: qmi_client_notifier_init \n");
  if (result != 0) {
    LOGE("sprint_client_init: qmi_client_notifier_init failed. rc = %d\n", result);
    return result;
  }
  const ServiceList list = fetchServiceList(service, waitForInstances(service, &signal));
  LOGE("sprint_client_init: qmi_client_get_service_list() returned %d num_entries = %d num_services = %d\n",
       list.result, list.num_entries, list.num_services);
  if (list.result != 0) return list.result;

  result = connect(&list.entries[0], service, type);
  if (result != 0) {
    LOGE("sprint_client_init: qmi_client_init failed. rc = %d\n", result);
    return result;
  }
  LOGE("sprint_client_init Succeeded\n");
  return 0;
}

int32_t qmi_kesext_sprint_nas_send_msg_sync(uint32_t msg_id, const void* request, uint32_t request_length,
                                            void* response, uint32_t response_length) {
  if (clients.nas == nullptr) {
    LOGE("qmi_kesext_sprint_nas_send_msg_sync: Handler not initialized!");
    return -1;
  }
  return qmi_client_send_msg_sync(clients.nas, msg_id, request, request_length, response, response_length,
                                  kSendTimeoutMs);
}

int32_t qmi_kesext_sprint_dms_send_msg_sync(uint32_t msg_id, const void* request, uint32_t request_length,
                                            void* response, uint32_t response_length) {
  if (clients.dms == nullptr) {
    LOGE("qmi_kesext_sprint_dms_send_msg_sync: Handler not initialized!");
    return -1;
  }
  return qmi_client_send_msg_sync(clients.dms, msg_id, request, request_length, response, response_length,
                                  kSendTimeoutMs);
}

}  // namespace kesext
