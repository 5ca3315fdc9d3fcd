#include "platform/dropbox.h"

#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>

#include "platform/host/folder_file.h"

namespace {

/// Names the file after the first free number from the present milliseconds on.
bool linkEntry(const char* file, const char* tag) {
  using std::chrono::duration_cast, std::chrono::milliseconds, std::chrono::system_clock;
  long long number = duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
  host::PathBuffer path;
  while (host::storePath(path, "/dropbox/%s@%lld.txt", tag, number++)) {
    if (link(file, path.data()) == 0) return true;
    if (errno != EEXIST) return false;
  }
  return false;
}

}  // namespace

bool NativeDropBoxWriter::addText(const char* tag, const char* text) {
  if (tag == nullptr || tag[0] == '\0' || strchr(tag, '/') != nullptr || text == nullptr) return false;
  host::PathBuffer file;
  if (!host::writeNewFile("/dropbox", text, strlen(text), file)) return false;
  const bool added = linkEntry(file.data(), tag);
  unlink(file.data());
  return added;
}
