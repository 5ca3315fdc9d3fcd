#include "carrier/baseband_properties.h"

#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "core/ground/log.h"
#include "nv/rde_messages.h"
#include "nv/rde_operations.h"
#include "platform/properties.h"

namespace kesext {

namespace {

constexpr int32_t kLteBandElement = 53;
constexpr int32_t kFlexVersionElement = 8028;
constexpr int32_t kFsgVersionElement = 8029;

constexpr size_t kLteBandElementSize = 16;
constexpr size_t kVersionElementSize = 1024;
static_assert(kVersionElementSize > kRdeDataMax, "a version ends with a zero byte");

/// Most characters that are published.
constexpr int kVersionNumberMax = 13;
constexpr int kVersionTextMax = 63;

/// Publishes what follows the last '-' of the version.
void publishVersionNumber(const char* version, bool readable) {
  char number[kVersionNumberMax + 1] = "Unknown";
  if (readable) {
    if (const char* delimiter = std::strrchr(version, '-'))
      std::snprintf(number, sizeof number, "%.*s", kVersionNumberMax, delimiter + 1);
    else
      LOGE("kes_qmi_read_baseband_config_version: no valid delimiter in %s", version);
  }
  property_set("ril.baseband.config.ver_num", number);
}

/// Reads a version text. The element's status; the text is empty when it could not be read.
uint32_t readVersion(int32_t element, char (&version)[kVersionElementSize]) {
  std::memset(version, 0, sizeof version);
  return kes_qmi_sprint_rde_read(element, 0, 0, reinterpret_cast<uint8_t*>(version), sizeof version, nullptr);
}

}  // namespace

void kes_qmi_read_lte_bc_config() {
  uint8_t bands[kLteBandElementSize] = {};
  char text[21] = "0";
  if (kes_qmi_sprint_rde_read(kLteBandElement, 0, 0, bands, sizeof bands, nullptr) == kRdeSuccess) {
    int64_t bits = 0;
    std::memcpy(&bits, bands, sizeof bits);
    std::snprintf(text, sizeof text, "%" PRId64, bits);
  }
  property_set("ril.lte.bc.config", text);
}

void kes_qmi_read_baseband_config_version() {
  char version[kVersionElementSize];
  uint32_t result = readVersion(kFsgVersionElement, version);
  LOGE("kes_qmi_read_baseband_config_version: fsg version NV read status(%d)", result);
  publishVersionNumber(version, result == kRdeSuccess);

  result = readVersion(kFlexVersionElement, version);
  LOGE("kes_qmi_read_baseband_config_version: flex nv status(%d)", result);
  if (result != kRdeSuccess) return;
  version[kVersionTextMax] = '\0';
  property_set("ril.baseband.config.version", version);
}

}  // namespace kesext
