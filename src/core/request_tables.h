// Which handler serves which request id.
#pragma once

#include <cstdint>

#include "core/ground/hook_message.h"

namespace kesext {

struct HookTableRow {
  uint32_t msgId;
  uint32_t argument;  // handed to the handler unchanged; the RDE element of an NV handler
  HookHandler& handler;
};

/// The row that serves a CDMA id the carrier declined, or null.
const HookTableRow* findCdmaFallback(uint32_t msg_id);

/// The row that serves a generic id, or null.
const HookTableRow* findGenericHook(uint32_t msg_id);

}  // namespace kesext
