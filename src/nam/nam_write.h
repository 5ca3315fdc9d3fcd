// Programming the handset's CDMA subscription.
#pragma once

#include "core/ground/carrier_response.h"

namespace kesext {

/// Writes all items of the payload's NamInfo, and changes the service programming code when it names another
/// one of six digits. Every step runs whatever came of the others; the answer's status tells whether one
/// failed.
void kesext_hook_sprint_set_nam_info(const HookRequest& request, uint32_t argument, CarrierResponse& answer);

}  // namespace kesext
