#include "platform/properties.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "platform/host/folder_file.h"
#include "platform/host/unique_fd.h"

namespace {

/// False when the key names no file of the folder.
bool propertyPath(const char* key, host::PathBuffer& path) {
  if (key == nullptr || key[0] == '\0' || strchr(key, '/') != nullptr) return false;
  return host::storePath(path, "/properties/%s", key);
}

/// The value's length, or -1 when there is none to be read. `value` holds PROPERTY_VALUE_MAX bytes.
int readValue(const char* key, char* value) {
  host::PathBuffer path;
  if (!propertyPath(key, path)) return -1;
  const host::UniqueFd file(open(path.data(), O_RDONLY | O_CLOEXEC));
  if (!file) return -1;

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
  const size_t length = value != nullptr ? strnlen(value, PROPERTY_VALUE_MAX) : PROPERTY_VALUE_MAX;
  host::PathBuffer path;
  if (length >= PROPERTY_VALUE_MAX || !propertyPath(key, path)) return -1;
  std::array<char, PROPERTY_VALUE_MAX> bytes{};
  memcpy(bytes.data(), value, length);
  // One line feed at the end would not count as part of the value.
  const bool ends_line = length > 0 && value[length - 1] == '\n';
  if (ends_line) bytes[length] = '\n';

  host::PathBuffer file;
  if (!host::writeNewFile("/properties", bytes.data(), length + (ends_line ? 1 : 0), file)) return -1;
  if (rename(file.data(), path.data()) == 0) return 0;
  unlink(file.data());
  return -1;
}
