// The C entry points of the framework: they check what they are given and pass it on.
#include "platform/qmi_client.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <memory>
#include <new>

#include "platform/host/frame.h"
#include "platform/host/link_results.h"
#include "platform/host/link_socket.h"
#include "platform/host/modem_client.h"
#include "platform/host/service_notifier.h"
#include "platform/host/service_object.h"

using host::kDone;
using host::kLocalError;
using host::kNoService;
using host::kNotDecoded;

/// One of the two.
struct qmi_client_struct {
  std::unique_ptr<host::ModemClient> client;
  std::unique_ptr<host::ServiceNotifier> notifier;
};

namespace {

/// For the modem's answer. Start-up counts on a lookup to take no longer than its own waits.
constexpr uint32_t kLookupTimeoutMs = 1000;
constexpr uint32_t kConnectTimeoutMs = 5000;

constexpr uint32_t kMessageIdMax = 0xFFFF;

/// First word of an entry that qmi_client_get_service_list filled in; the service and the instance's number,
/// counted from 1, follow.
constexpr uint32_t kServiceInfoMark = 0x514D4953;

host::Deadline deadlineIn(uint32_t milliseconds) {
  return std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
}

bool initSignal(QmiSignal& signal) {
  signal.sig_set = 0;
  signal.timed_out = 0;
  return pthread_mutex_init(&signal.mutex, nullptr) == 0 && pthread_cond_init(&signal.cond, nullptr) == 0;
}

bool namesInstanceOf(const qmi_service_info& entry, host::Service service) {
  return entry.words[0] == kServiceInfoMark && entry.words[1] == static_cast<uint32_t>(service) &&
         entry.words[2] != 0;
}

}  // namespace

qmi_client_error_type qmi_client_notifier_init(qmi_idl_service_object_type service_obj, QmiSignal* signal,
                                               qmi_client_type* notifier) {
  if (service_obj == nullptr || signal == nullptr || notifier == nullptr) return kLocalError;
  std::unique_ptr<qmi_client_struct> handle(new (std::nothrow) qmi_client_struct);
  if (handle == nullptr) return kLocalError;
  handle->notifier.reset(new (std::nothrow) host::ServiceNotifier);
  if (handle->notifier == nullptr || !initSignal(*signal)) return kLocalError;
  if (!handle->notifier->start(service_obj->service, signal)) return kLocalError;
  *notifier = handle.release();
  return kDone;
}

qmi_client_error_type qmi_client_get_service_list(qmi_idl_service_object_type service_obj,
                                                  qmi_service_info* service_info_array, uint32_t* num_entries,
                                                  uint32_t* num_services) {
  if (service_obj == nullptr || num_services == nullptr) return kLocalError;
  if (service_info_array != nullptr && num_entries == nullptr) return kLocalError;
  *num_services = 0;
  host::LinkSocket socket;
  int32_t count = 0;
  const qmi_client_error_type result =
      socket.connectAndAsk(host::FrameKind::lookup, service_obj->service, host::FrameKind::services,
                           deadlineIn(kLookupTimeoutMs), count);
  if (result != kDone) return result;
  if (count <= 0) return kNoService;
  *num_services = static_cast<uint32_t>(count);
  if (service_info_array == nullptr) return kDone;
  *num_entries = std::min(*num_entries, *num_services);
  for (uint32_t entry = 0; entry < *num_entries; ++entry) {
    service_info_array[entry] = {{kServiceInfoMark, static_cast<uint32_t>(service_obj->service), entry + 1}};
  }
  return kDone;
}

qmi_client_error_type qmi_client_init(const qmi_service_info* service_info,
                                      qmi_idl_service_object_type service_obj, qmi_client_ind_cb ind_cb,
                                      void* ind_cb_data, qmi_client_os_params* /*os_params*/,
                                      qmi_client_type* user_handle) {
  if (service_info == nullptr || service_obj == nullptr || user_handle == nullptr) return kLocalError;
  if (!namesInstanceOf(*service_info, service_obj->service)) return kLocalError;
  std::unique_ptr<qmi_client_struct> handle(new (std::nothrow) qmi_client_struct);
  if (handle == nullptr) return kLocalError;
  handle->client.reset(new (std::nothrow) host::ModemClient);
  if (handle->client == nullptr) return kLocalError;
  const qmi_client_error_type result =
      handle->client->connect(service_obj->service, deadlineIn(kConnectTimeoutMs));
  if (result != kDone) return result;
  // Stored before an indication can run, whose handler may send.
  *user_handle = handle.get();
  if (!handle->client->start(handle.get(), ind_cb, ind_cb_data)) {
    *user_handle = nullptr;
    return kLocalError;
  }
  (void)handle.release();
  return kDone;
}

qmi_client_error_type qmi_client_send_msg_sync(qmi_client_type user_handle, uint32_t msg_id,
                                               const void* req_c_struct, uint32_t req_c_struct_len,
                                               void* resp_c_struct, uint32_t resp_c_struct_len,
                                               uint32_t timeout_msecs) {
  if (user_handle == nullptr || user_handle->client == nullptr || msg_id > kMessageIdMax) return kLocalError;
  if (req_c_struct == nullptr && req_c_struct_len > 0) return kLocalError;
  if (resp_c_struct == nullptr && resp_c_struct_len > 0) return kLocalError;
  return user_handle->client->exchange({.message_id = static_cast<uint16_t>(msg_id),
                                        .request = req_c_struct,
                                        .request_size = req_c_struct_len,
                                        .response = resp_c_struct,
                                        .response_size = resp_c_struct_len},
                                       deadlineIn(timeout_msecs));
}

qmi_client_error_type qmi_client_message_decode(qmi_client_type user_handle,
                                                qmi_idl_message_type /*req_resp_ind*/, uint32_t /*msg_id*/,
                                                const void* src, uint32_t src_len, void* dst,
                                                uint32_t dst_len) {
  if (user_handle == nullptr) return kLocalError;
  if ((src == nullptr && src_len > 0) || (dst == nullptr && dst_len > 0)) return kLocalError;
  if (src_len != dst_len) return kNotDecoded;
  if (dst_len > 0) memcpy(dst, src, dst_len);
  return kDone;
}

qmi_client_error_type qmi_client_release(qmi_client_type user_handle) {
  if (user_handle == nullptr) return kLocalError;
  // A callback cannot wait for its own end.
  if (user_handle->client != nullptr && user_handle->client->isInCallback()) return kLocalError;
  delete user_handle;
  return kDone;
}
