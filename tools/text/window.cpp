#include "tools/text/window.h"

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <sstream>

namespace tools {

WindowSize windowSize() {
  const auto told = [](const char* name, size_t otherwise) {
    const char* text = std::getenv(name);
    const size_t count = text == nullptr ? 0 : std::strtoul(text, nullptr, 10);
    return count == 0 ? otherwise : count;
  };
  winsize size{};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 && size.ws_row > 0)
    return {size.ws_col, size.ws_row};
  return {told("COLUMNS", WindowSize{}.columns), told("LINES", WindowSize{}.rows)};
}

std::vector<std::string> atBlanks(std::string_view text) {
  std::istringstream words{std::string(text)};
  return {std::istream_iterator<std::string>(words), {}};
}

std::vector<std::string> inRows(std::span<const std::string> items, size_t width, size_t blanks) {
  std::vector<std::string> rows;
  for (const std::string& item : items) {
    if (rows.empty() || rows.back().size() + blanks + item.size() > width)
      rows.push_back(item);
    else
      rows.back() += std::string(blanks, ' ') + item;
  }
  return rows;
}

std::string wrapped(std::span<const std::string> items, size_t indent) {
  constexpr size_t kLeast = 20;
  std::string text;
  for (const std::string& row : inRows(items, std::max(windowSize().columns, indent + kLeast) - indent))
    text += fmt::format("{:{}}{}\n", "", indent, row);
  return text;
}

}  // namespace tools
