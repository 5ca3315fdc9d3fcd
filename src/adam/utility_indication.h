// The vendor service's utility indication.
#pragma once

#include <cstdint>

#include "platform/qmi_client.h"

namespace kesext {

/// Handles utility indication 0x000F by its type: modem log packets are collected, three others forwarded to
/// the parent. Returns 0.
int utilsIndHndlr(qmi_client_type client, uint32_t indication_id, const uint8_t* buffer,
                  uint32_t buffer_length, void* callback_data);

}  // namespace kesext
