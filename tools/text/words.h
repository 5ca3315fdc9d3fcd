// The words of a command line, and the nearest ones to a word that was not found.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tools {

using Words = std::span<const std::string>;

/// Splits at blanks; "..." and '...' keep them, a backslash keeps the character behind it. A '#' where a word
/// would begin makes the rest a comment. Throws UsageError when a quote is not closed.
std::vector<std::string> splitWords(std::string_view line);

/// Up to three of the candidates that are most like `word`, the nearest first; none that is unlike it.
std::vector<std::string_view> nearest(std::string_view word, std::span<const std::string_view> candidates);

/// The names of a table's rows, each once.
template <typename Rows>
std::vector<std::string_view> namesOf(const Rows& rows) {
  std::vector<std::string_view> names;
  for (const auto& row : rows)
    if (std::find(names.begin(), names.end(), row.name) == names.end()) names.push_back(row.name);
  return names;
}

/// "; did you mean a, b or c?", or nothing when nothing is near.
std::string didYouMean(std::string_view word, std::span<const std::string_view> candidates);

/// A whole number, decimal or 0x-hexadecimal. Throws UsageError, with `what` it is for, unless it lies from
/// `least` to `most`.
int64_t parseNumber(std::string_view what, std::string_view text, int64_t least, int64_t most);

/// Seconds, with a fraction or without. Throws UsageError, with `what` they are for, when they are more than
/// `most`.
std::chrono::milliseconds parseSeconds(std::string_view what, std::string_view text, int64_t most);

/// Bytes: hexadecimal digits, "text:..." or "@FILE"; "DIGITS*TIMES" repeats what digits up to a blank say.
/// Throws UsageError, with `what` they are for.
std::vector<uint8_t> parseBytes(std::string_view what, std::string_view text);

/// The short text that parseBytes reads these bytes from.
std::string writeBytes(std::span<const uint8_t> bytes);

/// The word as splitWords finds it in a line: quoted where it has to be.
std::string quoteWord(std::string_view word);

}  // namespace tools
