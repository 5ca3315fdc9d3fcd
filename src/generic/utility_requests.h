// Utility requests of the parent: the pass-through of a whole record, and the system-information filter.
#pragma once

#include <cstdint>

#include "core/ground/hook_message.h"
#include "generic/utility_messages.h"

namespace kesext {

/// Passes the utility record of the payload to the modem and its response's data back. The answer's status is
/// success even after a failed send, which shows as an answer without data.
int handleUtilsRequest(const HookRequest& request, uint32_t argument, uint32_t reserved);

/// Answers with the response's data. `data_size` is only logged.
int handleUtilsResponse(const HookRequest& request, const utils_resp_msg_v01& response, uint32_t data_size);

/// Sets the filter to the payload's first byte.
int handleSysInfoFilter(const HookRequest& request, uint32_t argument, uint32_t reserved);

}  // namespace kesext
