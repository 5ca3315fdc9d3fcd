#include "platform/device_path.h"

#include <cstring>

const char* device_path(const char* handset_path, char* path, size_t size) {
  if (size == 0) return "";
  const size_t length = strlen(handset_path);
  path[0] = '\0';
  if (length < size) memcpy(path, handset_path, length + 1);
  return path;
}
