#include "platform/properties.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platform/device_path.h"
#include "platform/host/unique_fd.h"

namespace {

using PathBuffer = std::array<char, kDevicePathMax>;

/// False when the key names no file of the folder.
bool propertyPath(const char* key, PathBuffer& path) {
  if (key == nullptr || key[0] == '\0' || strchr(key, '/') != nullptr) return false;
  PathBuffer handset_path;
  const int length = snprintf(handset_path.data(), handset_path.size(), "/properties/%s", key);
  if (length < 0 || static_cast<size_t>(length) >= handset_path.size()) return false;
  return device_path(handset_path.data(), path.data(), path.size())[0] != '\0';
}

/// The value's length, or -1 when there is no such property. `value` holds PROPERTY_VALUE_MAX bytes.
int readValue(const char* key, char* value) {
  PathBuffer path;
  if (!propertyPath(key, path)) return -1;
  const host::UniqueFd file(open(path.data(), O_RDONLY | O_CLOEXEC));
  if (!file.valid()) return -1;

  // With the terminator's place filled too, the line feed after a value of the greatest length is seen.
  size_t size = 0;
  while (size < PROPERTY_VALUE_MAX) {
    const ssize_t got = read(file.get(), value + size, PROPERTY_VALUE_MAX - size);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return -1;
    if (got == 0) break;
    size += static_cast<size_t>(got);
  }
  if (size == PROPERTY_VALUE_MAX || (size > 0 && value[size - 1] == '\n')) --size;
  value[size] = '\0';
  return static_cast<int>(strlen(value));
}

bool writeValue(int file, const char* value) {
  const size_t length = strlen(value);
  std::array<char, PROPERTY_VALUE_MAX + 1> bytes{};
  memcpy(bytes.data(), value, length);
  size_t size = length;
  // One line feed at the end would not count as part of the value.
  if (length > 0 && value[length - 1] == '\n') bytes[size++] = '\n';
  ssize_t written = 0;
  do {
    written = write(file, bytes.data(), size);
  } while (written < 0 && errno == EINTR);
  return written == static_cast<ssize_t>(size);
}

}  // namespace

int property_get(const char* key, char* value, const char* default_value) {
  const int length = readValue(key, value);
  if (length >= 0) return length;
  const char* fallback = default_value != nullptr ? default_value : "";
  const size_t fallback_length = strnlen(fallback, PROPERTY_VALUE_MAX - 1);
  memcpy(value, fallback, fallback_length);
  value[fallback_length] = '\0';
  return static_cast<int>(fallback_length);
}

int property_set(const char* key, const char* value) {
  PathBuffer path;
  if (value == nullptr || strnlen(value, PROPERTY_VALUE_MAX) >= PROPERTY_VALUE_MAX) return -1;
  if (!propertyPath(key, path)) return -1;

  PathBuffer folder;
  if (device_path("/properties", folder.data(), folder.size())[0] == '\0') return -1;
  if (mkdir(folder.data(), 0755) != 0 && errno != EEXIST) return -1;
  PathBuffer fresh_path;
  if (device_path("/properties/.new.XXXXXX", fresh_path.data(), fresh_path.size())[0] == '\0') return -1;
  const host::UniqueFd file(mkostemp(fresh_path.data(), O_CLOEXEC));
  if (!file.valid()) return -1;
  if (fchmod(file.get(), 0644) == 0 && writeValue(file.get(), value) &&
      rename(fresh_path.data(), path.data()) == 0) {
    return 0;
  }
  unlink(fresh_path.data());
  return -1;
}
