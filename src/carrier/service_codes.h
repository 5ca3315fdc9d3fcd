// The service programming code (SPC) and the A-key. The modem judges every code; none is kept or compared
// here, and none is checked for digits. To change the code is a step of NAM programming.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/ground/carrier_response.h"

namespace kesext {

inline constexpr size_t kAkeySize = 26;

/// Hands a code and an A-key of `akey_length` bytes to the modem, which keeps the key. False when the length
/// is not kAkeySize, or on any failure.
bool qcril_qmi_nas_kes_cdma_validate_and_write_akey(const uint8_t* code, const uint8_t* akey,
                                                    uint32_t akey_length);

/// Answers whether the modem accepts the request's code.
void kesext_hook_sprint_check_subsidy_lock_passwd(const HookRequest& request, uint32_t argument,
                                                  CarrierResponse& answer);

/// Stores the A-key of the request's payload under the request's code.
void kesext_hook_sprint_write_akey(const HookRequest& request, uint32_t argument, CarrierResponse& answer);

}  // namespace kesext
