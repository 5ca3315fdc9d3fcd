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
constexpr size_t kBytesMax = size_t{256} * 1024;  // bytes

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
  std::vector<uint8_t> bytes(kBytesMax + 1);
  std::ifstream file(path, std::ios::binary);
  file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  if (!file.is_open() || file.bad())
    throw UsageError(fmt::format("{}: the file {} cannot be read", what, path));
  bytes.resize(static_cast<size_t>(file.gcount()));
  if (bytes.size() > kBytesMax)
    throw UsageError(fmt::format("{}: the file {} has more than {} bytes", what, path, kBytesMax));
  return bytes;
}

/// Parts of hexadecimal digits with blanks between them; "A5*16" is sixteen times the same.
std::vector<uint8_t> readDigits(std::string_view what, std::string_view text) {
  constexpr std::string_view kBlanks = " \t\n";
  std::vector<uint8_t> bytes;
  while (!text.empty()) {
    const std::string_view part = text.substr(0, text.find_first_of(kBlanks));
    text.remove_prefix(std::min(part.size() + 1, text.size()));
    const size_t star = part.find('*');
    const std::vector<uint8_t> unit = handset::hex(part.substr(0, star));
    const size_t room = kBytesMax - std::min(kBytesMax, bytes.size());
    const auto most = static_cast<int64_t>(room / std::max<size_t>(1, unit.size()));
    const int64_t times =
        star == std::string_view::npos ? 1 : parseNumber(what, part.substr(star + 1), 1, most);
    for (int64_t i = 0; i < times; ++i)
      bytes.insert(bytes.end(), unit.begin(), unit.end());
  }
  return bytes;
}

bool isPrintable(uint8_t byte) {
  return byte >= 0x20 && byte < 0x7F;
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
    if (!in_word && c == '#') break;
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
    const size_t longer = std::max(word.size(), candidate.size());
    const size_t most = 1 + longer / 3;
    if (!begins && longer - std::min(word.size(), candidate.size()) > most) continue;
    const size_t far = begins ? 0 : distance(word, candidate);
    if (far <= most) ranked.emplace_back(far, candidate);
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

std::chrono::milliseconds parseSeconds(std::string_view what, std::string_view text, int64_t most) {
  double seconds = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
  const bool fits = seconds >= 0 && seconds <= static_cast<double>(most);
  if (error != std::errc() || end != text.data() + text.size() || !fits)
    throw UsageError(fmt::format("{} takes seconds from 0 to {}, such as 0.5, not '{}'", what, most, text));
  return std::chrono::round<std::chrono::milliseconds>(std::chrono::duration<double>(seconds));
}

std::vector<uint8_t> parseBytes(std::string_view what, std::string_view text) {
  constexpr std::string_view kText = "text:";
  if (text.starts_with(kText)) return handset::bytesOf(text.substr(kText.size()));
  if (text.starts_with('@')) return readFile(what, std::string(text.substr(1)));
  try {
    return readDigits(what, text);
  } catch (const std::invalid_argument& error) {
    throw UsageError(
        fmt::format("{} takes bytes as hexadecimal digits, text:CHARACTERS or @FILE, not '{}' ({})", what,
                    text, error.what()));
  }
}

std::string writeBytes(std::span<const uint8_t> bytes) {
  constexpr size_t kTextLeast = 3;  // characters; what is shorter is printable by chance
  constexpr ptrdiff_t kRunLeast = 8;
  if (bytes.size() >= kTextLeast && std::all_of(bytes.begin(), bytes.end(), isPrintable))
    return "text:" + std::string(bytes.begin(), bytes.end());
  std::string text;
  bool after_run = false;
  for (auto at = bytes.begin(); at != bytes.end();) {
    const auto end = std::find_if(at, bytes.end(), [&](uint8_t byte) { return byte != *at; });
    const bool run = end - at >= kRunLeast;
    if (!text.empty() && (run || after_run)) text += ' ';
    text += run ? fmt::format("{:02X}*{}", *at, end - at) : handset::toHex({at, end}, "");
    after_run = run;
    at = end;
  }
  return text;
}

std::string quoteWord(std::string_view word) {
  if (!word.empty() && word.find_first_of(" \t\"'\\#") == std::string_view::npos) return std::string(word);
  std::string quoted = "'";
  for (const char c : word)
    quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return quoted + "'";
}

}  // namespace tools
