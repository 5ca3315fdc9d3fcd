#include "tools/text/words.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <charconv>
#include <fstream>
#include <numeric>
#include <utility>

#include "handset/bytes.h"
#include "tools/text/usage_error.h"

namespace tools {

namespace {

constexpr size_t kOffered = 3;
/// More than any record takes.
constexpr size_t kFileMax = size_t{256} * 1024;  // bytes

/// How many characters have to be put in, taken out or replaced to make one of the other.
size_t distance(std::string_view a, std::string_view b) {
  std::vector<size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), size_t{0});
  for (size_t i = 0; i < a.size(); ++i) {
    size_t diagonal = std::exchange(row[0], i + 1);
    for (size_t j = 0; j < b.size(); ++j) {
      const size_t replaced = diagonal + (a[i] == b[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, row[j] + 1, row[j + 1] + 1});
    }
  }
  return row.back();
}

std::vector<uint8_t> readFile(std::string_view what, const std::string& path) {
  std::vector<uint8_t> bytes(kFileMax + 1);
  std::ifstream file(path, std::ios::binary);
  file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  if (!file.is_open() || file.bad())
    throw UsageError(fmt::format("{}: the file {} cannot be read", what, path));
  bytes.resize(static_cast<size_t>(file.gcount()));
  if (bytes.size() > kFileMax)
    throw UsageError(fmt::format("{}: the file {} has more than {} bytes", what, path, kFileMax));
  return bytes;
}

}  // namespace

std::vector<std::string> splitWords(std::string_view line) {
  std::vector<std::string> words;
  char quote = 0;
  bool in_word = false;
  for (size_t i = 0; i < line.size(); ++i) {
    const char c = line[i];
    if (quote == 0 && (c == ' ' || c == '\t')) {
      in_word = false;
      continue;
    }
    if (!in_word) words.emplace_back();
    in_word = true;
    if (c == quote)
      quote = 0;
    else if (quote == 0 && (c == '"' || c == '\''))
      quote = c;
    else if (c == '\\' && quote != '\'' && i + 1 < line.size())
      words.back() += line[++i];
    else
      words.back() += c;
  }
  if (quote != 0) throw UsageError(fmt::format("the quote {} is not closed", quote));
  return words;
}

std::vector<std::string_view> nearest(std::string_view word, std::span<const std::string_view> candidates) {
  std::vector<std::pair<size_t, std::string_view>> ranked;
  for (const std::string_view candidate : candidates) {
    const bool begins = !word.empty() && candidate.starts_with(word);
    const size_t far = begins ? 0 : distance(word, candidate);
    if (far <= 1 + std::max(word.size(), candidate.size()) / 3) ranked.emplace_back(far, candidate);
  }
  std::stable_sort(ranked.begin(), ranked.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  std::vector<std::string_view> offered;
  for (size_t i = 0; i < std::min(kOffered, ranked.size()); ++i)
    offered.push_back(ranked[i].second);
  return offered;
}

std::string didYouMean(std::string_view word, std::span<const std::string_view> candidates) {
  const std::vector<std::string_view> near = nearest(word, candidates);
  return near.empty() ? "" : fmt::format("; did you mean {}?", fmt::join(near, ", "));
}

int64_t parseNumber(std::string_view what, std::string_view text, int64_t least, int64_t most) {
  const bool negative = text.starts_with('-');
  std::string_view digits = negative ? text.substr(1) : text;
  const bool hexadecimal = digits.starts_with("0x") || digits.starts_with("0X");
  if (hexadecimal) digits.remove_prefix(2);
  int64_t value = 0;
  const auto [end, error] =
      std::from_chars(digits.data(), digits.data() + digits.size(), value, hexadecimal ? 16 : 10);
  value = negative ? -value : value;
  if (digits.empty() || digits.front() == '-' || error != std::errc() ||
      end != digits.data() + digits.size() || value < least || value > most)
    throw UsageError(fmt::format("{} takes a number from {} to {}, not '{}'", what, least, most, text));
  return value;
}

std::vector<uint8_t> parseBytes(std::string_view what, std::string_view text) {
  constexpr std::string_view kText = "text:";
  if (text.starts_with(kText)) return handset::bytesOf(text.substr(kText.size()));
  if (text.starts_with('@')) return readFile(what, std::string(text.substr(1)));
  try {
    return handset::hex(text);
  } catch (const std::invalid_argument& error) {
    throw UsageError(
        fmt::format("{} takes bytes as hexadecimal digits, text:CHARACTERS or @FILE, not '{}' ({})", what,
                    text, error.what()));
  }
}

}  // namespace tools
