// The one place where a carrier answer is put together.
#pragma once

#include <cstdint>

#include "core/ground/hook_message.h"

namespace kesext {

/// Writes the record of this header and its `msgLen` payload bytes; a null payload sends zeros. 1 when the
/// record was handed to the response pipe, even if the write failed, or 0 when there was no memory or the
/// length is negative.
uint32_t kesext_hook_sprint_send_response(const OemHookHeader& header, const uint8_t* payload);

}  // namespace kesext
