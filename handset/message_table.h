// The messages that the modem answers: one row for each.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "platform/host/frame.h"

namespace handset {

using host::Service;

struct MessageRow {
  Service service;
  uint16_t id;
  std::string_view name;  // in words, for people
  size_t request_size;    // bytes, exactly
  size_t response_size;   // bytes, exactly
  uint8_t done;           // what the response's first byte, the low byte of its result, holds on success
};

/// All rows, in the order of service and id.
std::span<const MessageRow> messageTable();

/// The row of a message, or null when no service has it.
const MessageRow* findMessage(Service service, uint16_t id);

/// "vendor", "nas" or "dms"; "unknown" for a value that names no service.
std::string_view serviceName(Service service);

}  // namespace handset
