// Silent reboot of the modem.
#pragma once

#include <cstdint>

#include "core/ground/hook_message.h"
#include "generic/utility_messages.h"

namespace kesext {

/// Asks the modem to reboot and answers with its response's data, or with a failure byte.
int handleSilentRebootRequest(const HookRequest& request, uint32_t argument, uint32_t reserved);

/// Answers with the response's data.
void handleSilentRebootResponse(const HookRequest& request, const utils_resp_msg_v01& response);

}  // namespace kesext
