// The carrier's requests, which are offered here before any other handler.
#pragma once

#include <cstdint>

#include "core/ground/hook_message.h"

namespace kesext {

/// 0 when the request was served and answered, 0xFFFFFFFF when the carrier does not serve its id.
uint32_t kesext_hook_sprint_handler(const HookRequest* request, uint32_t argument, uint32_t reserved);

}  // namespace kesext
