// Reading back the handset's CDMA subscription.
#pragma once

#include "core/ground/carrier_response.h"

namespace kesext {

/// Reads all items and answers with a NamInfo, which is all zero, with a failure status, when one read
/// failed.
void kesext_hook_sprint_get_nam_info(const HookRequest& request, uint32_t argument, CarrierResponse& answer);

}  // namespace kesext
