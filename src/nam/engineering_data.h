// The data behind the handset's field-test screens. The modem sends its records spelled out as hexadecimal
// text.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/ground/carrier_response.h"

namespace kesext {

/// Most characters of the modem's text.
inline constexpr uint32_t kEngineeringTextMax = 1000;

enum EngineeringInfoType : uint32_t { kCallProcessingInfo = 0, kEvdoInfo = 1 };

/// Fetches a text into `text`, of kEngineeringTextMax characters, and its length. 1, or 0 with both as they
/// were when none was delivered or a pointer is null.
int kes_qmi_sprint_get_engineering_info(uint32_t type, uint8_t* text, uint32_t* text_length);

/// Decodes `length` characters into `out`, which holds (length + 1) / 2 bytes. A character that is no digit
/// is logged and counts as the last digit before it, as 0 when there was none.
void kesext_hook_sprint_hexstr_to_bin(const uint8_t* text, uint32_t length, uint8_t* out);

/// Answer with the call-processing and EVDO reports; with zeros when the modem delivers nothing.
void kesext_hook_sprint_get_call_processing_data(const HookRequest& request, uint32_t argument,
                                                 CarrierResponse& answer);
void kesext_hook_sprint_get_evdo_data(const HookRequest& request, uint32_t argument, CarrierResponse& answer);

}  // namespace kesext
