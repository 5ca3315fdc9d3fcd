#include "platform/host/folder_file.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "platform/host/unique_fd.h"

namespace host {
namespace {

bool writeAll(int file, const void* bytes, size_t size) {
  ssize_t written = 0;
  do {
    written = write(file, bytes, size);
  } while (written < 0 && errno == EINTR);
  return written == static_cast<ssize_t>(size);
}

}  // namespace

bool storePath(PathBuffer& path, const char* format, ...) {
  PathBuffer handset_path;
  va_list args;
  va_start(args, format);
  const int length = vsnprintf(handset_path.data(), handset_path.size(), format, args);
  va_end(args);
  if (length < 0 || static_cast<size_t>(length) >= handset_path.size()) return false;
  return device_path(handset_path.data(), path.data(), path.size())[0] != '\0';
}

bool writeNewFile(const char* folder, const void* bytes, size_t size, PathBuffer& path) {
  if (!storePath(path, "%s", folder) || (mkdir(path.data(), 0755) != 0 && errno != EEXIST)) return false;
  if (!storePath(path, "%s/.new.XXXXXX", folder)) return false;
  const UniqueFd file(mkostemp(path.data(), O_CLOEXEC));
  if (!file) return false;
  if (fchmod(file.get(), 0644) == 0 && writeAll(file.get(), bytes, size)) return true;
  unlink(path.data());
  return false;
}

}  // namespace host
