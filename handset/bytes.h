// Writing and reading messages byte by byte.
#pragma once

#include <algorithm>
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

#include "core/ground/byte_access.h"

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

inline bool isZero(ByteView bytes) {
  return std::all_of(bytes.begin(), bytes.end(), [](uint8_t byte) { return byte == 0; });
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

/// The integers that messages are made of.
template <typename T>
concept Word = std::same_as<T, uint16_t> || std::same_as<T, uint32_t>;

/// Stores an integer at an offset, little-endian. Throws when it does not fit.
template <Word T>
void putLe(std::span<uint8_t> bytes, size_t offset, T value) {
  if (offset > bytes.size() || bytes.size() - offset < sizeof(T)) throw std::out_of_range("putLe");
  if constexpr (sizeof(T) == 2) {
    kesext::storeLe16(&bytes[offset], value);
  } else {
    kesext::storeLe32(&bytes[offset], value);
  }
}

/// The little-endian integer at an offset. Throws when the bytes end before it does.
template <Word T>
T getLe(ByteView bytes, size_t offset) {
  if (offset > bytes.size() || bytes.size() - offset < sizeof(T)) throw std::out_of_range("getLe");
  if constexpr (sizeof(T) == 2) {
    return kesext::loadLe16(&bytes[offset]);
  } else {
    return kesext::loadLe32(&bytes[offset]);
  }
}

/// The same with big-endian words.
template <std::same_as<uint32_t> T>
void putBe(std::span<uint8_t> bytes, size_t offset, T value) {
  putLe(bytes, offset, kesext::swapBytes32(value));
}
template <std::same_as<uint32_t> T>
T getBe(ByteView bytes, size_t offset) {
  return kesext::swapBytes32(getLe<T>(bytes, offset));
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
inline Bytes be32(uint32_t value) {
  Bytes bytes(sizeof(value));
  putBe(bytes, 0, value);
  return bytes;
}

}  // namespace handset
