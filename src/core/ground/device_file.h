// Files of the handset: where they are on this machine, and descriptors that close with their owner.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include "platform/device_path.h"

namespace kesext {

/// Where a path of the handset is on this machine.
class DevicePath {
 public:
  explicit DevicePath(const char* handset_path) { device_path(handset_path, text_, sizeof text_); }
  [[nodiscard]] const char* text() const { return text_; }

 private:
  char text_[kDevicePathMax];
};

/// An open file of the handset. False, with errno set, when it could not be opened.
class DeviceFile {
 public:
  /// Flags and mode are those of open(); children do not inherit the descriptor.
  explicit DeviceFile(const char* handset_path, int flags, mode_t mode = 0)
      : descriptor_(open(DevicePath(handset_path).text(), flags | O_CLOEXEC, mode)) {}
  DeviceFile(const DeviceFile&) = delete;
  DeviceFile& operator=(const DeviceFile&) = delete;
  ~DeviceFile() {
    if (descriptor_ >= 0) close(descriptor_);
  }

  explicit operator bool() const { return descriptor_ >= 0; }
  [[nodiscard]] int descriptor() const { return descriptor_; }

 private:
  int descriptor_;
};

}  // namespace kesext
