#include "tools/line_source.h"

#include <unistd.h>

#include <array>
#include <utility>

namespace tools {

std::optional<std::string> PlainLines::next() {
  size_t end = 0;
  while ((end = buffer_.find('\n')) == std::string::npos && !ended_) {
    wait_({});
    std::array<char, 4096> chunk{};
    const ssize_t count = read(STDIN_FILENO, chunk.data(), chunk.size());
    ended_ = count <= 0;
    if (!ended_) buffer_.append(chunk.data(), static_cast<size_t>(count));
  }
  if (buffer_.empty()) return std::nullopt;
  if (end == std::string::npos) return std::exchange(buffer_, {});
  std::string line = buffer_.substr(0, end);
  buffer_.erase(0, end + 1);
  return line;
}

}  // namespace tools
