// Synchronous requests to the modem's services. Each blocks for at most kSendTimeoutMs; 0 means that a
// response was decoded, whose own result field the caller then reads. The clients are connected at start-up.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace kesext {

inline constexpr uint32_t kSendTimeoutMs = 15000;

/// To the vendor extension service; may be called from several threads, but not from the indication callback:
/// it waits for the client to be connected. The framework's result.
int32_t qmi_kesext_hook_send_msg_sync(uint32_t msg_id, const void* request, uint32_t request_length,
                                      void* response, uint32_t response_length);

/// To the NAS service. The framework's result, or -1 when the client was never connected.
int32_t qmi_kesext_sprint_nas_send_msg_sync(uint32_t msg_id, const void* request, uint32_t request_length,
                                            void* response, uint32_t response_length);

/// To the DMS service. The framework's result, or -1 when the client was never connected.
int32_t qmi_kesext_sprint_dms_send_msg_sync(uint32_t msg_id, const void* request, uint32_t request_length,
                                            void* response, uint32_t response_length);

/// The request of a message that has none: it is sent with length 0.
struct NoRequest {};

/// The response, or its beginning, of most messages. What means success is the message's own.
struct ResultAndError {
  uint32_t result;
  uint32_t error;
};
static_assert(sizeof(ResultAndError) == 8 && offsetof(ResultAndError, error) == 4);

/// A message of a service: its id, and the structures of its request and response.
template <typename Request, typename Response>
struct VendorMessage {
  uint32_t id;
};
template <typename Request, typename Response>
struct NasMessage {
  uint32_t id;
};
template <typename Request, typename Response>
struct DmsMessage {
  uint32_t id;
};

/// The signature of the three sends above.
using SendMsgSync = int32_t (*)(uint32_t msg_id, const void* request, uint32_t request_length, void* response,
                                uint32_t response_length);

/// Clears the response to its last byte and sends. The framework's result.
template <typename Request, typename Response>
int32_t sendWith(SendMsgSync send, uint32_t msg_id, const Request& request, Response& response) {
  static_assert(std::is_trivially_copyable_v<Response>);
  std::memset(&response, 0, sizeof response);
  if constexpr (std::is_same_v<Request, NoRequest>) {
    return send(msg_id, nullptr, 0, &response, sizeof response);
  } else {
    static_assert(std::has_unique_object_representations_v<Request>, "padding would go to the modem");
    return send(msg_id, &request, sizeof request, &response, sizeof response);
  }
}

/// The typed send of each service: clears the response and sends. The framework's result.
template <typename Request, typename Response>
int32_t sendVendor(VendorMessage<Request, Response> message, const Request& request, Response& response) {
  return sendWith(qmi_kesext_hook_send_msg_sync, message.id, request, response);
}
template <typename Request, typename Response>
int32_t sendNas(NasMessage<Request, Response> message, const Request& request, Response& response) {
  return sendWith(qmi_kesext_sprint_nas_send_msg_sync, message.id, request, response);
}
template <typename Request, typename Response>
int32_t sendDms(DmsMessage<Request, Response> message, const Request& request, Response& response) {
  return sendWith(qmi_kesext_sprint_dms_send_msg_sync, message.id, request, response);
}

}  // namespace kesext
