#include "core/test_notification.h"

#include <cstdio>

#include "core/ground/hook_ids.h"
#include "core/ground/log.h"
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
  char text[kNotificationLength] = {};
  // A number of more than four digits loses its last ones.
  std::snprintf(text, kNotificationTextMax + 1, "%s-%d", "UNSOLNOTIFY9876",
                static_cast<int>(next_notification++));
  if (!sendCdmaUnsol(UNSOL_TEST_NOTIFICATION, text, sizeof text)) LOGE("sendUnsolNotify: out of memory!");
  return 0;
}

}  // namespace kesext
