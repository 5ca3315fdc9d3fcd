// Bytes as hexadecimal text.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kesext {

/// Most bytes that hexDump shows.
inline constexpr size_t kHexDumpMaxBytes = 1024;

/// Logs `count` bytes as one line of upper-case hexadecimal digits; more than kHexDumpMaxBytes only as an
/// overflow.
void hexDump(const uint8_t* bytes, size_t count);

/// Writes `count` bytes as upper-case hexadecimal digits into `text`, which holds 2 * count + 1 characters.
/// A count of 0 leaves `text` untouched.
void toHexString(uint32_t count, const uint8_t* bytes, char* text);

}  // namespace kesext
