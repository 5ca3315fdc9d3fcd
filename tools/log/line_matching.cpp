#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <map>
#include <utility>
#include <vector>

#include "platform/host/link_results.h"
#include "tools/log/line_table.h"

namespace tools {

namespace {

using Key = std::pair<char, char>;

struct IndexedRow {
  std::string_view beginning;  // what every line of the row begins with
  const LineRow* row;
};

/// The rows by their first two characters, each in the table's order.
const std::map<Key, std::vector<IndexedRow>>& index() {
  static const auto kIndex = [] {
    std::map<Key, std::vector<IndexedRow>> rows;
    for (const auto table : {processLines(), serviceLines(), modemLines()}) {
      for (const LineRow& row : table) {
        const std::string_view literal = row.pattern.substr(0, row.pattern.find('%'));
        const std::string_view beginning = literal.substr(0, literal.find_last_not_of(' ') + 1);
        rows[{row.pattern[0], row.pattern[1]}].push_back({beginning, &row});
      }
    }
    return rows;
  }();
  return kIndex;
}

/// How many characters at the text's beginning a number of this kind takes.
size_t numberSize(char kind, std::string_view text) {
  const auto is_digit = [kind](char character) {
    return (character >= '0' && character <= '9') || (kind == 'x' && character >= 'a' && character <= 'f') ||
           (kind == 'X' && character >= 'A' && character <= 'F');
  };
  const size_t sign = kind == 'd' && text.starts_with('-') ? 1 : 0;
  const auto end =
      static_cast<size_t>(std::find_if_not(text.begin() + sign, text.end(), is_digit) - text.begin());
  return end == sign ? 0 : end;
}

/// How many characters a text of any kind takes that is followed by this literal part, the line's last one or
/// not; npos when that does not follow.
size_t textSize(std::string_view text, std::string_view literal, bool last) {
  if (!last) return text.find(literal);
  text = text.substr(0, text.find_last_not_of(' ') + 1);
  return text.ends_with(literal) ? text.size() - literal.size() : std::string_view::npos;
}

bool matches(std::string_view pattern, std::string_view text, Places& places) {
  size_t place = 0;
  while (true) {
    const size_t literal = std::min(pattern.find('%'), pattern.size());
    if (!text.starts_with(pattern.substr(0, literal))) {
      // Where blanks at the end are lost, an empty text in the last place takes the one before it along.
      const size_t words = pattern.find_last_not_of(' ', literal - 1) + 1;
      places[place] = {};
      return pattern.substr(literal) == "%s" && text == pattern.substr(0, words);
    }
    text.remove_prefix(literal);
    if (literal == pattern.size()) return text.find_first_not_of(' ') == std::string_view::npos;
    const char kind = pattern[literal + 1];
    pattern.remove_prefix(literal + 2);
    const std::string_view next = pattern.substr(0, pattern.find('%'));
    const size_t size =
        kind == 's' ? textSize(text, next, next.size() == pattern.size()) : numberSize(kind, text);
    if (size == std::string_view::npos || (kind != 's' && size == 0)) return false;
    places[place++] = text.substr(0, size);
    text.remove_prefix(size);
  }
}

/// The number in a place; 0 for one that is too large.
int64_t numberOf(std::string_view place) {
  return std::strtoll(std::string(place).c_str(), nullptr, 10);
}

/// What the workstation's results of sending mean.
constexpr std::pair<int, std::string_view> kSendResults[] = {
    {host::kLocalError, ", a bad argument or an error of this machine"},
    {host::kNoService, ", no such service or no link"},
    {host::kTimedOut, ", no answer in time"},
    {host::kNotDecoded, ", it does not decode"}};

std::string placeInWords(std::string_view place, char what, const LineContext& context) {
  const auto number = static_cast<int>(numberOf(place));
  switch (what) {
    case 'e':  // a write that was cut short leaves none
      return fmt::format("{} (errno {})", number == 0 ? "not all was written" : std::strerror(number), place);
    case 'c':
      for (const auto& [result, words] : kSendResults)
        if (context.bench && result == number) return fmt::format("code {}{}", place, words);
      return fmt::format("code {}", place);
    case 'n':
      return fmt::format("{} (0x{:X})", place, static_cast<uint32_t>(numberOf(place)));
    case 'b':
      return shortened(place);
    default:
      return place.empty() ? "none" : std::string(place);
  }
}

}  // namespace

const LineRow* findLine(std::string_view text, Places& places) {
  text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
  if (text.size() < 2) return nullptr;
  const auto rows = index().find({text[0], text[1]});
  if (rows == index().end()) return nullptr;
  for (const auto& [beginning, row] : rows->second)
    if (text.starts_with(beginning) && matches(row->pattern, text, places)) return row;
  return nullptr;
}

std::string inWords(std::string_view words, const Places& places, const LineContext& context) {
  std::string text;
  while (!words.empty()) {
    const size_t open = words.find('{');
    text += words.substr(0, open);
    if (open == std::string_view::npos) break;
    const size_t close = words.find('}', open);
    const std::string_view named = words.substr(open + 1, close - open - 1);
    if (named == "*")
      text += context.element;
    else if (named == "#")
      text += shortened(context.dump);
    else
      text += placeInWords(places[static_cast<size_t>(named[0] - '0')], named.size() > 1 ? named[1] : ' ',
                           context);
    words.remove_prefix(close + 1);
  }
  return text;
}

bool tellsTimeOut(std::string_view words, const Places& places) {
  const size_t named = words.find("c}");
  return named != std::string_view::npos && named > 0 &&
         numberOf(places[static_cast<size_t>(words[named - 1] - '0')]) == host::kTimedOut;
}

std::string shortened(std::string_view digits) {
  constexpr size_t kShown = 32;
  if (digits.empty()) return "no bytes";
  if (digits.size() <= kShown) return std::string(digits);
  return fmt::format("{}... ({} bytes)", digits.substr(0, kShown), digits.size() / 2);
}

}  // namespace tools
