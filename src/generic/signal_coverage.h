// Signal coverage: requests with a selector and a text, and the modem's reports.
#pragma once

#include <cstdint>

#include "core/ground/hook_message.h"
#include "platform/qmi_client.h"

namespace kesext {

/// Sends the selector and the request's payload, at most 255 bytes of it, to the modem and answers with a
/// status. The send's result.
int kesext_handle_sig_cov_request(uint8_t selector, const HookRequest& request);

/// The request with selector 0, and the one whose selector is its first payload byte.
int handleSigCovRequest(const HookRequest& request, uint32_t argument, uint32_t reserved);
int handleSigCovSelectorRequest(const HookRequest& request, uint32_t argument, uint32_t reserved);

/// Forwards a coverage report to the parent.
int sigcovIndHndlr(qmi_client_type client, uint32_t indication_id, const uint8_t* buffer,
                   uint32_t buffer_length, void* callback_data);

}  // namespace kesext
