// What each record that crosses a pipe is called and made of: the one table that requests are named, put
// together, explained and read by.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "core/ground/hook_message.h"
#include "handset/fields.h"

namespace tools {

using handset::FieldKind;
using handset::Fields;
using handset::FieldSpec;
using handset::kRest;
using handset::kWordSize;
using handset::WhenAbsent;

constexpr bool isNumber(FieldKind kind) {
  return kind <= FieldKind::status;
}
constexpr bool isText(FieldKind kind) {
  return kind == FieldKind::text || kind == FieldKind::utf8 || kind == FieldKind::zeroEndedText;
}

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
  Fields request = {};       // the payload
  Fields answer = {};        // the payload of a successful answer
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
