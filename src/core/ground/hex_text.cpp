#include "core/ground/hex_text.h"

#include "core/ground/log.h"

namespace kesext {

void hexDump(const uint8_t* bytes, size_t count) {
  char text[2 * kHexDumpMaxBytes + 1];
  if (count > kHexDumpMaxBytes) {
    LOGE("HexDump=buffer overflow");
    return;
  }
  text[0] = '\0';
  toHexString(static_cast<uint32_t>(count), bytes, text);
  LOGE("HexDump: Data %s", text);
}

void toHexString(uint32_t count, const uint8_t* bytes, char* text) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  if (count == 0) return;
  for (uint32_t i = 0; i < count; ++i) {
    *text++ = kDigits[bytes[i] >> 4];
    *text++ = kDigits[bytes[i] & 0xF];
  }
  *text = '\0';
}

}  // namespace kesext
