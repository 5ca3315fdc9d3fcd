// Files of a folder of the handset that others read meanwhile: each appears under its name only once its
// whole text is in it.
#pragma once

#include <array>
#include <cstddef>

#include "platform/device_path.h"

namespace host {

using PathBuffer = std::array<char, kDevicePathMax>;

/// Stores where the handset's path, given as to printf, is on this machine. False when there is no room for
/// it.
[[gnu::format(printf, 2, 3)]] bool storePath(PathBuffer& path, const char* format, ...);

/// Writes a new file into the folder, which is made when missing, and stores its path, for the caller to
/// rename or link and remove; until then its name begins with a dot. False, with nothing left, on any
/// failure.
bool writeNewFile(const char* folder, const void* bytes, size_t size, PathBuffer& path);

}  // namespace host
