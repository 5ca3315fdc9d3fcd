#include "core/test_notification.h"

#include <cstdio>

#include "core/ground/hook_ids.h"
#include "core/ground/log.h"
#include "core/ground/message_buffer.h"
#include "core/ground/parent_pipes.h"

namespace kesext {

namespace {

/// Size of the text field, in bytes.
constexpr uint32_t kNotificationLength = 22;
/// Most characters that the field is filled with.
constexpr size_t kNotificationTextMax = 20;

/// Number of the next notification, indication thread only.
uint32_t next_notification = 12;

}  // namespace

int sendUnsolNotify(qmi_client_type, uint32_t, const uint8_t*, uint32_t, void*) {
  const uint32_t number = next_notification++;
  const MessageBuffer message = buildCdmaUnsol(UNSOL_TEST_NOTIFICATION, kNotificationLength);
  if (!message) {
    LOGE("sendUnsolNotify: out of memory!");
    return 0;
  }
  // A number of more than four digits is cut with the text, which the parent's test relies on.
  std::snprintf(reinterpret_cast<char*>(message.data() + kUnsolCdmaPayloadOffset), kNotificationTextMax + 1,
                "%s-%d", "UNSOLNOTIFY9876", static_cast<int>(number));
  writeUnsolToParent(message.data(), message.size());
  return 0;
}

}  // namespace kesext
