// The GSM 7-bit default alphabet of 3GPP TS 23.038.
#pragma once

#include <cstdint>

namespace kesext {

/// Converts `length` unpacked characters, at most 32767, one per byte, to UTF-8 with a terminating zero in
/// `output`, which holds 2 * length + 1 bytes. Carriage returns are left out, bytes above 0x7F are copied,
/// and there is no extension table. The number of bytes before the zero, or 0 for a null pointer or no input.
uint16_t gsm_alphabet_to_utf8(const uint8_t* input, uint16_t length, char* output);

}  // namespace kesext
