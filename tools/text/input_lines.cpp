#include "tools/text/input_lines.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace tools {

bool InputLines::fill() {
  wait_();
  ssize_t count = 0;
  do
    count = read(descriptor_, chunk_.data(), chunk_.size());
  while (count < 0 && errno == EINTR);
  if (count < 0) throw std::system_error(errno, std::generic_category(), "standard input");
  unread_ = {chunk_.data(), static_cast<size_t>(count)};
  return count > 0;
}

bool InputLines::next(std::string& line, size_t most) {
  line.clear();
  if (unread_.empty() && !fill()) return false;
  do {
    const size_t end = std::min(unread_.find('\n'), unread_.size());
    line += unread_.substr(0, std::min(end, most - line.size()));
    const bool ended = end < unread_.size();
    unread_.remove_prefix(ended ? end + 1 : end);
    if (ended) break;
  } while (fill());
  if (line.ends_with('\r')) line.pop_back();
  return true;
}

}  // namespace tools
