// What crosses the modem link: a row for each message that the modem answers and for each indication, with
// the fields that they are made of.
#pragma once

#include <cstddef>
#include <cstdint>
#include <numeric>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "handset/bytes.h"
#include "handset/fields.h"
#include "platform/host/frame.h"

namespace handset {

using host::Service;
inline constexpr Service kServices[] = {Service::vendor, Service::nas, Service::dms};

/// How many bytes the fields take.
constexpr size_t sizeOf(Fields fields) {
  return std::accumulate(fields.begin(), fields.end(), size_t{0},
                         [](size_t sum, const FieldSpec& field) { return sum + field.size; });
}

/// What a field holds: a number or, if there is one, a text.
struct FieldValue {
  std::string_view field;
  int64_t number = 0;
  std::string_view text;
};

/// A response that says whether its message was done begins with a field named "result"; where there is room
/// for a reason, "error" comes next.
struct MessageRow {
  Service service;
  uint16_t id;
  std::string_view name;
  Fields request;
  Fields response;
  uint8_t done = 0;  // what the response's first byte, the low byte of its result, holds on success
  std::span<const FieldValue> says;  // what else is not zero, as long as the modem is told nothing else
  size_t request_size = sizeOf(request);
  size_t response_size = sizeOf(response);
};

/// All rows, in the order of service and id.
std::span<const MessageRow> messageTable();

/// The row of a message, or null when no service has it.
const MessageRow* findMessage(Service service, uint32_t id);

/// A message as words have it: "rde-read"; "vendor 0x0123" for one that is not in the table.
std::string messageName(Service service, uint32_t id);

/// The response that says that a message was not done: its result is not what the message has on success, its
/// error is this one where there is room for it. Nothing when the message has no result.
std::optional<Bytes> refusal(const MessageRow& message, uint32_t error);

/// An indication of the vendor service.
struct IndicationRow {
  uint16_t id;
  std::string_view name;
  std::string_view help;
  Fields fields;
  size_t size;  // bytes; what the fields leave is zero
};
std::span<const IndicationRow> indicationTable();

/// The row of an indication, or null when there is none.
const IndicationRow* findIndication(uint16_t id);

/// "vendor", "nas" or "dms"; "unknown" for a value that names no service.
std::string_view serviceName(Service service);

}  // namespace handset
