// What each message of the modem link is made of: the one table that exchanges and indications are put
// together, refused and read by. Names and sizes as wholes are in handset/message_table.h.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "handset/bytes.h"
#include "handset/message_table.h"
#include "tools/records/record_table.h"

namespace tools {

/// A message's request and response; together the fields are as long as the message. A response whose message
/// says whether it was done begins with a field named "result"; where there is room for a reason, "error"
/// comes next.
struct LinkRow {
  handset::Service service;
  uint32_t id;
  Fields request;
  Fields response;
};

std::span<const LinkRow> linkTable();

/// The row of a message, or null when there is none.
const LinkRow* findLink(handset::Service service, uint32_t id);

/// A message as words have it: "rde-read"; "vendor 0x0123" for one that is not in the table.
std::string messageName(handset::Service service, uint32_t id);

/// The response that says that a message was not done: its result is not what the message has on success, its
/// error is this one where there is room for it. Nothing when the message has no result.
std::optional<handset::Bytes> refusal(const handset::MessageRow& message, uint32_t error);

/// An indication of the vendor service, with the fields that it is made of.
struct IndicationRow {
  uint16_t id;
  std::string_view name;
  std::string_view help;
  Fields fields;
  size_t size;  // bytes; what the fields leave is zero
};
std::span<const IndicationRow> indicationTable();

}  // namespace tools
