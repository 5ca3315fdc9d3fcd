// Antenna tuning: commands of the parent, and the tuner's events.
#pragma once

#include <cstdint>

#include "core/ground/hook_message.h"
#include "platform/qmi_client.h"

namespace kesext {

/// Passes a command of at most 24 bytes to the tuner and its response's data back. The send's result.
int kesext_hook_set_antenna_tuning(const HookRequest& request, uint32_t argument, uint32_t reserved);

/// Forwards the tuner events of one kind to the parent; others are only logged.
int tunerIndHndlr(qmi_client_type client, uint32_t indication_id, const uint8_t* buffer,
                  uint32_t buffer_length, void* callback_data);

}  // namespace kesext
