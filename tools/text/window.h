// How much room there is for what is printed, and what fits into it.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tools {

struct WindowSize {
  size_t columns = 80;
  size_t rows = 24;
};

/// The terminal's that standard output is; without one what COLUMNS and LINES say.
WindowSize windowSize();

/// The words of a sentence.
std::vector<std::string> atBlanks(std::string_view text);

/// The items in order on rows of up to `width` characters, with blanks between them; an item that is longer
/// has a row of its own.
std::vector<std::string> inRows(std::span<const std::string> items, size_t width, size_t blanks = 1);

/// The same as text, each row behind an indent.
std::string wrapped(std::span<const std::string> items, size_t indent);

}  // namespace tools
