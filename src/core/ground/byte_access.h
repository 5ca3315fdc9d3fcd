// Integers in byte buffers, at any alignment.
#pragma once

#include <cstdint>

namespace kesext {

inline uint16_t loadLe16(const uint8_t* bytes) {
  return static_cast<uint16_t>(bytes[0] | bytes[1] << 8);
}

inline uint32_t loadLe32(const uint8_t* bytes) {
  return uint32_t{bytes[0]} | uint32_t{bytes[1]} << 8 | uint32_t{bytes[2]} << 16 | uint32_t{bytes[3]} << 24;
}

inline uint32_t loadBe24(const uint8_t* bytes) {
  return uint32_t{bytes[0]} << 16 | uint32_t{bytes[1]} << 8 | uint32_t{bytes[2]};
}

inline uint32_t loadBe32(const uint8_t* bytes) {
  return uint32_t{bytes[0]} << 24 | loadBe24(bytes + 1);
}

/// The same four bytes in the opposite order.
inline uint32_t swapBytes32(uint32_t value) {
  return value >> 24 | (value >> 8 & 0xFF00) | (value & 0xFF00) << 8 | value << 24;
}

inline void storeLe16(uint8_t* bytes, uint16_t value) {
  bytes[0] = static_cast<uint8_t>(value);
  bytes[1] = static_cast<uint8_t>(value >> 8);
}

inline void storeLe32(uint8_t* bytes, uint32_t value) {
  bytes[0] = static_cast<uint8_t>(value);
  bytes[1] = static_cast<uint8_t>(value >> 8);
  bytes[2] = static_cast<uint8_t>(value >> 16);
  bytes[3] = static_cast<uint8_t>(value >> 24);
}

}  // namespace kesext
