// The carrier's requests, which are offered here before any other handler.
#pragma once

#include <cstdint>

#include "core/ground/hook_message.h"

namespace kesext {

/// 0 when the request was served, which a null one counts as; 0xFFFFFFFF, without an answer, when the carrier
/// declines it: its id, a write without payload, or for want of memory.
uint32_t kesext_hook_sprint_handler(const HookRequest* request, uint32_t argument, uint32_t reserved);

}  // namespace kesext
