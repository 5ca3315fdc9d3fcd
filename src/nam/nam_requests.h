// The small requests that sit directly on a NAM item.
#pragma once

#include "core/ground/carrier_response.h"

namespace kesext {

/// Answers with the 20 home SID/NID pairs, 40 words; zeros and a failure status when they cannot be read.
void kesext_hook_sprint_get_sid_nid_pairs(const HookRequest& request, uint32_t argument,
                                          CarrierResponse& answer);

/// Writes 20 home SID/NID pairs from 40 words, of which the low 16 bits count.
void kesext_hook_sprint_set_sid_nid_pairs(const HookRequest& request, uint32_t argument,
                                          CarrierResponse& answer);

/// Answers with the mobile protocol revision in the first of 4 bytes; zeros and a failure status when it
/// cannot be read.
void kesext_hook_sprint_get_mob_p_pre(const HookRequest& request, uint32_t argument, CarrierResponse& answer);

}  // namespace kesext
