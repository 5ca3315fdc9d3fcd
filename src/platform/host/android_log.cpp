#include "platform/android_log.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

/// Most lines fit; a longer one goes through the heap. Bytes.
constexpr size_t kUsualLineSize = 4608;
/// A longer tag is cut. Bytes.
constexpr size_t kTagSizeMax = 64;

char priorityLetter(int priority) {
  constexpr char kLetters[] = "??VDIWEF";
  return priority >= 0 && priority < static_cast<int>(sizeof kLetters - 1) ? kLetters[priority] : '?';
}

/// Stores as much of the line as `room`, which holds any tag, allows, without its line feed. Returns the
/// whole line's length.
[[gnu::format(printf, 5, 0)]] size_t formatLine(char* line, size_t room, int priority, const char* tag,
                                                const char* format, va_list args) {
  const size_t tag_length = strnlen(tag, kTagSizeMax);
  const size_t prefix = tag_length + 4;
  line[0] = priorityLetter(priority);
  line[1] = ' ';
  memcpy(line + 2, tag, tag_length);
  line[prefix - 2] = ':';
  line[prefix - 1] = ' ';
  const int text = vsnprintf(line + prefix, room - prefix, format, args);
  const size_t length = prefix + (text > 0 ? static_cast<size_t>(text) : 0);
  const bool ends_line = text > 0 && length < room && line[length - 1] == '\n';
  return ends_line ? length - 1 : length;
}

/// One write call; more only when the system took a part.
bool writeLine(const char* line, size_t length) {
  size_t written = 0;
  while (written < length) {
    const ssize_t taken = write(STDERR_FILENO, line + written, length - written);
    if (taken < 0 && errno == EINTR) continue;
    if (taken <= 0) return false;
    written += static_cast<size_t>(taken);
  }
  return true;
}

}  // namespace

int __android_log_print(int priority, const char* tag, const char* format, ...) {
  const int errno_before = errno;
  std::array<char, kUsualLineSize> usual_line;
  char* line = usual_line.data();
  size_t room = usual_line.size();
  char* long_line = nullptr;

  va_list args;
  va_start(args, format);
  va_list args_again;
  va_copy(args_again, args);
  errno = errno_before;
  size_t length = formatLine(line, room, priority, tag, format, args);
  if (length >= room) {
    long_line = static_cast<char*>(malloc(length + 1));
    if (long_line != nullptr) {
      line = long_line;
      room = length + 1;
      errno = errno_before;
      length = formatLine(line, room, priority, tag, format, args_again);
    } else {
      length = room - 1;
    }
  }
  va_end(args_again);
  va_end(args);

  line[length] = '\n';  // in place of the terminator
  const bool written = writeLine(line, length + 1);
  free(long_line);
  errno = errno_before;
  return written ? static_cast<int>(length) : -1;
}
