// The modem client framework, as the handset's libqmi_cci and libqmi_common_so offer it.
#pragma once

#include <cstdint>

#include "platform/qmi_client_records.h"

extern "C" {

struct qmi_idl_service_object;
/// Describes a service's messages to the framework; never looked into here.
using qmi_idl_service_object_type = const qmi_idl_service_object*;

/// 0: done. Any other value is the framework's or the modem's error code.
using qmi_client_error_type = int;

/// Connection parameters of the operating system; this process passes none.
struct qmi_client_os_params;

/// What qmi_client_message_decode is told that it decodes.
enum qmi_idl_message_type { QMI_IDL_REQUEST = 0, QMI_IDL_RESPONSE = 1, QMI_IDL_INDICATION = 2 };

/// Prepares `signal` and starts to watch for instances of the service.
qmi_client_error_type qmi_client_notifier_init(qmi_idl_service_object_type service_obj, QmiSignal* signal,
                                               qmi_client_type* notifier);

/// Without a list: counts the published instances, an error when there are none. With a list: fills up to
/// `*num_entries` entries and stores how many in `*num_entries`.
qmi_client_error_type qmi_client_get_service_list(qmi_idl_service_object_type service_obj,
                                                  qmi_service_info* service_info_array, uint32_t* num_entries,
                                                  uint32_t* num_services);

/// Connects to the instance of the entry. Without a callback, indications are dropped.
qmi_client_error_type qmi_client_init(const qmi_service_info* service_info,
                                      qmi_idl_service_object_type service_obj, qmi_client_ind_cb ind_cb,
                                      void* ind_cb_data, qmi_client_os_params* os_params,
                                      qmi_client_type* user_handle);

/// Sends a request and waits for its response, at most `timeout_msecs`. May be called from several threads
/// at once. On any error the response structure is left as it was.
qmi_client_error_type qmi_client_send_msg_sync(qmi_client_type user_handle, uint32_t msg_id,
                                               const void* req_c_struct, uint32_t req_c_struct_len,
                                               void* resp_c_struct, uint32_t resp_c_struct_len,
                                               uint32_t timeout_msecs);

/// Decodes an encoded message into the structure `dst` of `dst_len` bytes, which an error leaves as it was.
qmi_client_error_type qmi_client_message_decode(qmi_client_type user_handle,
                                                qmi_idl_message_type req_resp_ind, uint32_t msg_id,
                                                const void* src, uint32_t src_len, void* dst,
                                                uint32_t dst_len);

/// Releases a client or a notifier. After the return no signal is set and no callback runs.
qmi_client_error_type qmi_client_release(qmi_client_type user_handle);
}
