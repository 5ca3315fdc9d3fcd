// The PFP request and indication, which pass through.
#pragma once

#include <cstdint>

#include "core/ground/hook_message.h"
#include "platform/qmi_client.h"

namespace kesext {

/// Triggers PFP in the modem and answers with a status.
int handleMyPfpRequest(const HookRequest& request, uint32_t argument, uint32_t reserved);

/// Forwards the PFP record to the parent.
int myPfpIndHndlr(qmi_client_type client, uint32_t indication_id, const uint8_t* buffer,
                  uint32_t buffer_length, void* callback_data);

}  // namespace kesext
