#include "platform/device_path.h"

#include <cstdlib>
#include <cstring>

const char* device_path(const char* handset_path, char* path, size_t size) {
  if (size == 0) return "";
  path[0] = '\0';
  const char* root = handset_path[0] == '/' ? getenv("HANDSET_ROOT") : nullptr;
  const size_t root_length = root != nullptr ? strlen(root) : 0;
  const size_t path_length = strlen(handset_path);
  if (root_length >= size || path_length >= size - root_length) return path;
  if (root_length > 0) memcpy(path, root, root_length);
  memcpy(path + root_length, handset_path, path_length + 1);
  return path;
}
