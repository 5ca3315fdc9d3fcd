// The fields that records and messages are made of.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace handset {

enum class FieldKind {
  number,  // unsigned, little-endian
  signedNumber,
  hexNumber,
  element,  // an RDE element's index
  status,   // a result code; the last of the numbers
  bytes,
  text,           // up to the first zero byte
  utf8,           // text as it stands
  code,           // a service programming code, or zeros for none
  words,          // unsigned 4-byte numbers
  zeroEndedText,  // text with a terminator of its own
  zeros,          // always zero; anything else is pointed out
};

/// What stands in a request for a field that is not given.
enum class WhenAbsent { refused, zeros, lengthOfRest, leftOut };

/// The one field of a payload that takes what the others leave.
inline constexpr size_t kRest = SIZE_MAX;
/// Of the numbers of FieldKind::words, in bytes.
inline constexpr size_t kWordSize = 4;

/// How many digits a text has that is made of nothing else.
struct DigitCount {
  size_t least = 0;
  size_t most = 0;  // 0: it is any text
};

struct FieldSpec {
  std::string_view name;
  size_t size;  // bytes, or kRest
  FieldKind kind;
  WhenAbsent when_absent = WhenAbsent::refused;
  DigitCount digits = {};
};

using Fields = std::span<const FieldSpec>;

}  // namespace handset
