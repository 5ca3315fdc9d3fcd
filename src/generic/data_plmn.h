// The data PLMN: the parent's request, and the modem's notice that it changed.
#pragma once

#include <cstdint>

#include "core/ground/hook_message.h"
#include "platform/qmi_client.h"

namespace kesext {

/// Answers with the modem's bare record of 568 bytes, without a header; zeros after a failed send.
int handleDataPlmnRequest(const HookRequest& request, uint32_t argument, uint32_t reserved);

/// Sends an unsolicited message without payload.
int dataPlmnIndHndlr(qmi_client_type client, uint32_t indication_id, const uint8_t* buffer,
                     uint32_t buffer_length, void* callback_data);

}  // namespace kesext
