// What each record that crosses a pipe is called and made of.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace tools {

enum class FieldKind {
  number,  // unsigned, little-endian
  signedNumber,
  hexNumber,
  element,  // an RDE element's index
  status,   // a result code
  bytes,
  text,   // up to the first zero byte
  utf8,   // text as it stands
  code,   // a service programming code, or zeros for none
  zeros,  // always zero; anything else is pointed out
};

/// The one field of a payload that takes what the others leave.
inline constexpr size_t kRest = SIZE_MAX;

struct FieldSpec {
  std::string_view name;
  FieldKind kind;
  size_t size;  // bytes, or kRest
};

using Fields = std::span<const FieldSpec>;

enum class Family { cdma, generic };

struct RequestRow {
  Family family;
  uint32_t id;
  std::string_view name;
  Fields request;            // the payload
  Fields answer;             // the payload of a successful answer
  bool bare_answer = false;  // which then has no header
};

struct UnsolicitedRow {
  Family family;
  uint32_t id;
  std::string_view name;
  Fields payload;
};

/// The row of a request id, or null when the process serves no such request.
const RequestRow* findRequest(Family family, uint32_t id);

/// The row of an unsolicited message's id, or null.
const UnsolicitedRow* findUnsolicited(Family family, uint32_t id);

/// "success" and so on; "unknown" for a code that the process does not use.
std::string_view statusName(uint32_t status);

}  // namespace tools
