#include "tools/shell/line_source.h"

namespace tools {

std::optional<std::string> PlainLines::next() {
  constexpr size_t kLineMax = size_t{1024} * 1024;  // characters
  std::string line;
  if (!input_.next(line, kLineMax)) return std::nullopt;
  return line;
}

}  // namespace tools
