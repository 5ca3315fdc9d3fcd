#include "generic/sim_pin_notice.h"

#include <unistd.h>

#include <cctype>
#include <cstdio>
#include <cstring>
#include <limits>
#include <memory>
#include <optional>

#include "core/ground/device_file.h"
#include "core/ground/log.h"
#include "generic/utility_messages.h"

namespace kesext {

namespace {

constexpr const char* kBootInfoPath = "/proc/bootinfo";
constexpr const char* kRestartCountPath = "/sys/module/subsystem_restart/parameters/modem_restarts";
constexpr const char* kRestartReasonPath = "/sys/module/pil_q6v5_mss/parameters/ssr_reason";

constexpr size_t kBootInfoMax = 1023;  // characters
constexpr size_t kLineMax = 31;        // characters
constexpr const char* kKernelPanicReason = "0x00020000";

/// Reads a file with one read. False when it cannot be opened or read.
bool readOnce(const char* path, char (&text)[kBootInfoMax + 1]) {
  const DeviceFile file(path, O_RDONLY);
  if (!file) return false;
  const ssize_t count = read(file.descriptor(), text, kBootInfoMax);
  if (count < 0) return false;
  text[count] = '\0';
  return true;
}

using File = std::unique_ptr<FILE, int (*)(FILE*)>;

File openForReading(const char* path) {
  return {std::fopen(DevicePath(path).text(), "re"), std::fclose};
}

/// The text behind the ": " that follows POWERUPREASON, up to a blank. Empty when there is none.
void powerUpReason(const char* boot_info, char (&reason)[kLineMax + 1]) {
  reason[0] = '\0';
  const char* label = std::strstr(boot_info, "POWERUPREASON");
  if (label == nullptr) return;
  const char* text = std::strstr(label, ": ");
  if (text == nullptr) return;
  text += 2;
  size_t length = 0;
  while (length < kLineMax && text[length] != '\0' &&
         std::isspace(static_cast<unsigned char>(text[length])) == 0)
    ++length;
  std::memcpy(reason, text, length);
  reason[length] = '\0';
}

bool is_kernel_panic() {
  char boot_info[kBootInfoMax + 1];
  if (!readOnce(kBootInfoPath, boot_info)) return false;
  LOGD("is_kernel_panic looking for POWERUPREASON");
  char reason[kLineMax + 1];
  powerUpReason(boot_info, reason);
  LOGD("is_kernel_panic POWERUPREASON=%s", reason);
  return std::strcmp(reason, kKernelPanicReason) == 0;
}

/// The decimal digits of a line, in order, as a number, at most the largest there is. Nothing without a
/// digit.
std::optional<int32_t> joinDigits(const char* line) {
  constexpr int64_t kMost = std::numeric_limits<int32_t>::max();
  std::optional<int64_t> number;
  for (; *line != '\0'; ++line) {
    if (*line < '0' || *line > '9') continue;
    number = number.value_or(0) * 10 + (*line - '0');
    if (*number > kMost) number = kMost;
  }
  if (!number) return std::nullopt;
  return static_cast<int32_t>(*number);
}

/// How often the modem was restarted, or nothing when the kernel does not tell.
std::optional<int32_t> modemRestarts() {
  const File file = openForReading(kRestartCountPath);
  LOGD("is_modem_panic looking for BP Panic");
  if (!file) {
    LOGE("*** failed open the sys file : restart_count ***\n");
    return std::nullopt;
  }
  char line[kLineMax + 1];
  if (std::fgets(line, sizeof line, file.get()) == nullptr) return std::nullopt;
  const std::optional<int32_t> restarts = joinDigits(line);
  if (restarts) LOGE("modem_panic: %d", *restarts);
  return restarts;
}

/// Whether the kernel names a reason for the modem's last restart.
bool hasRestartReason() {
  LOGD("*** Try open the sys file bp panic_reason : %s\n", kRestartReasonPath);
  const File file = openForReading(kRestartReasonPath);
  if (!file) {
    LOGE("*** failed open the sys file : panic_reason ***\n");
    return false;
  }
  char line[kLineMax + 1];
  return std::fgets(line, sizeof line, file.get()) != nullptr && line[0] != '\0';
}

bool is_modem_panic() {
  if (const std::optional<int32_t> restarts = modemRestarts()) return *restarts > 0;
  return hasRestartReason();
}

}  // namespace

int32_t notify_auto_verify_sim_pin() {
  if (!is_kernel_panic() && !is_modem_panic()) {
    LOGD("notify_auto_verify_sim_pin from AP NOT called");
    return 0;
  }
  LOGD("notify_auto_verify_sim_pin from AP called");
  const utils_req_msg_v01 notice{.type = kUtilitySimPinNotice, .len = UTILS_REQ_DATA_SIZE_V01};
  utils_resp_msg_v01 response;
  return sendUtility(notice, response) == 0 ? 0 : -1;
}

}  // namespace kesext
