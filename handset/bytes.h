// Writing and reading messages byte by byte.
#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace handset {

using Bytes = std::vector<uint8_t>;
using ByteView = std::span<const uint8_t>;

/// The bytes of a text such as "07 00 00 02"; blanks are ignored. Throws on anything else and on an odd
/// digit.
inline Bytes hex(std::string_view text) {
  const auto nibble = [](char c) -> int {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    throw std::invalid_argument("not a hexadecimal digit: " + std::string(1, c));
  };
  Bytes bytes;
  int high = -1;
  for (const char c : text) {
    if (c == ' ' || c == '\n' || c == '\t') continue;
    if (high < 0) {
      high = nibble(c);
    } else {
      bytes.push_back(static_cast<uint8_t>(high * 16 + nibble(c)));
      high = -1;
    }
  }
  if (high >= 0) throw std::invalid_argument("odd number of hexadecimal digits");
  return bytes;
}

/// The bytes as two upper-case digits each, with `separator` between them.
inline std::string toHex(ByteView bytes, std::string_view separator = " ") {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string text;
  for (const uint8_t byte : bytes) {
    if (!text.empty()) text += separator;
    text += kDigits[byte >> 4];
    text += kDigits[byte & 0xF];
  }
  return text;
}

/// The characters of a text, without a terminator.
inline Bytes bytesOf(std::string_view text) {
  return {text.begin(), text.end()};
}

/// A plain record as it stands in memory.
template <typename Record>
Bytes recordBytes(const Record& record) {
  Bytes bytes(sizeof record);
  std::memcpy(bytes.data(), &record, sizeof record);
  return bytes;
}

/// All parts, one after the other; each is anything that converts to a ByteView.
template <typename... Parts>
Bytes concat(const Parts&... parts) {
  Bytes all;
  const auto append = [&all](ByteView part) { all.insert(all.end(), part.begin(), part.end()); };
  (append(ByteView(parts)), ...);
  return all;
}

/// Stores an integer at an offset, little-endian. Throws when it does not fit.
template <std::unsigned_integral T>
void putLe(std::span<uint8_t> bytes, size_t offset, T value) {
  if (offset > bytes.size() || bytes.size() - offset < sizeof(T)) throw std::out_of_range("putLe");
  for (size_t i = 0; i < sizeof(T); ++i)
    bytes[offset + i] = static_cast<uint8_t>(value >> (8 * i));
}

/// The little-endian integer at an offset. Throws when the bytes end before it does.
template <std::unsigned_integral T>
T getLe(ByteView bytes, size_t offset) {
  if (offset > bytes.size() || bytes.size() - offset < sizeof(T)) throw std::out_of_range("getLe");
  T value = 0;
  for (size_t i = 0; i < sizeof(T); ++i)
    value = static_cast<T>(value | static_cast<T>(bytes[offset + i]) << (8 * i));
  return value;
}

/// Stores an integer at an offset, big-endian. Throws when it does not fit.
template <std::unsigned_integral T>
void putBe(std::span<uint8_t> bytes, size_t offset, T value) {
  if (offset > bytes.size() || bytes.size() - offset < sizeof(T)) throw std::out_of_range("putBe");
  for (size_t i = 0; i < sizeof(T); ++i)
    bytes[offset + sizeof(T) - 1 - i] = static_cast<uint8_t>(value >> (8 * i));
}

/// The big-endian integer at an offset. Throws when the bytes end before it does.
template <std::unsigned_integral T>
T getBe(ByteView bytes, size_t offset) {
  if (offset > bytes.size() || bytes.size() - offset < sizeof(T)) throw std::out_of_range("getBe");
  T value = 0;
  for (size_t i = 0; i < sizeof(T); ++i) {
    value = static_cast<T>(value | static_cast<T>(bytes[offset + sizeof(T) - 1 - i]) << (8 * i));
  }
  return value;
}

/// One integer as bytes, to be put together with concat.
inline Bytes le16(uint16_t value) {
  Bytes bytes(sizeof(value));
  putLe(bytes, 0, value);
  return bytes;
}
inline Bytes le32(uint32_t value) {
  Bytes bytes(sizeof(value));
  putLe(bytes, 0, value);
  return bytes;
}
inline Bytes be16(uint16_t value) {
  Bytes bytes(sizeof(value));
  putBe(bytes, 0, value);
  return bytes;
}
inline Bytes be32(uint32_t value) {
  Bytes bytes(sizeof(value));
  putBe(bytes, 0, value);
  return bytes;
}

}  // namespace handset
