// What each record that crosses a pipe is called and made of: the one table that requests are named, put
// together, explained and read by.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "core/ground/hook_message.h"

namespace tools {

enum class FieldKind {
  number,  // unsigned, little-endian
  signedNumber,
  hexNumber,
  element,  // an RDE element's index
  status,   // a result code
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

struct FieldSpec {
  std::string_view name;
  size_t size;  // bytes, or kRest
  FieldKind kind;
  WhenAbsent when_absent = WhenAbsent::refused;
};

using Fields = std::span<const FieldSpec>;

/// A payload of which nothing is known.
inline constexpr FieldSpec kPlainPayload[] = {{"payload", kRest, FieldKind::bytes}};

enum class Family { cdma, generic };

/// What every CDMA request may have as well.
inline constexpr FieldSpec kSpcField{"spc", sizeof(kesext::OemHookHeader::spc), FieldKind::code,
                                     WhenAbsent::zeros};

struct RequestRow {
  Family family;
  uint32_t id;
  std::string_view command;  // what a person types
  std::string_view name;     // what it does
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

/// All requests that the process serves, by family and id.
std::span<const RequestRow> requestTable();

/// All unsolicited messages.
std::span<const UnsolicitedRow> unsolicitedTable();

/// The row of a request id, or null when the process serves no such request.
const RequestRow* findRequest(Family family, uint32_t id);

/// The row of an unsolicited message's id, or null.
const UnsolicitedRow* findUnsolicited(Family family, uint32_t id);

struct StatusRow {
  uint32_t status;
  std::string_view name;
};

/// The result codes that the process answers with.
std::span<const StatusRow> statusTable();

/// "success" and so on; "unknown" for a code that the process does not use.
std::string_view statusName(uint32_t status);

}  // namespace tools
