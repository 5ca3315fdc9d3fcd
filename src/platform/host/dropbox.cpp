#include "platform/dropbox.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>

#include "platform/device_path.h"
#include "platform/host/unique_fd.h"

namespace {

using PathBuffer = std::array<char, kDevicePathMax>;

/// False when there is no room for the path.
bool entryPath(const char* tag, long long number, PathBuffer& path) {
  PathBuffer handset_path;
  const int length = snprintf(handset_path.data(), handset_path.size(), "/dropbox/%s@%lld.txt", tag, number);
  if (length < 0 || static_cast<size_t>(length) >= handset_path.size()) return false;
  return device_path(handset_path.data(), path.data(), path.size())[0] != '\0';
}

/// Creates the entry's file under the first free number from the present milliseconds on, and stores its
/// path. Returns its descriptor, or -1.
int createEntry(const char* tag, PathBuffer& path) {
  using std::chrono::duration_cast, std::chrono::milliseconds, std::chrono::system_clock;
  long long number = duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
  while (entryPath(tag, number, path)) {
    const int file = open(path.data(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    if (file >= 0) return file;
    if (errno == EEXIST) ++number;
    if (errno != EEXIST && errno != EINTR) return -1;
  }
  return -1;
}

bool writeText(int file, const char* text) {
  const size_t length = strlen(text);
  ssize_t written = 0;
  do {
    written = write(file, text, length);
  } while (written < 0 && errno == EINTR);
  return written == static_cast<ssize_t>(length);
}

}  // namespace

bool NativeDropBoxWriter::addText(const char* tag, const char* text) {
  if (tag == nullptr || tag[0] == '\0' || strchr(tag, '/') != nullptr || text == nullptr) return false;
  PathBuffer folder;
  if (device_path("/dropbox", folder.data(), folder.size())[0] == '\0') return false;
  if (mkdir(folder.data(), 0755) != 0 && errno != EEXIST) return false;
  PathBuffer path;
  const host::UniqueFd file(createEntry(tag, path));
  if (!file.valid()) return false;
  if (writeText(file.get(), text)) return true;
  unlink(path.data());
  return false;
}
