// Where the handset's files are.
#pragma once

#include <cstddef>

/// Room that every path of the process fits into, with its terminator, in bytes.
inline constexpr size_t kDevicePathMax = 4096;

extern "C" {

/// Stores in `path`, of `size` bytes, where the handset's `handset_path` is found on this machine: the path
/// itself on a handset, and always of one that is not absolute. Returns `path`, which is empty when it had no
/// room.
const char* device_path(const char* handset_path, char* path, size_t size);
}
