// The name of a network by its MCC and MNC.
#pragma once

#include <cstdint>

#include "core/ground/hook_message.h"

namespace kesext {

/// Answers with the network's short name in UTF-8, or with a failure byte when the modem has none in the GSM
/// default alphabet.
int handlePlmnNameRequest(const HookRequest& request, uint32_t argument, uint32_t reserved);

}  // namespace kesext
