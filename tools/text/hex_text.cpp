#include "tools/text/hex_text.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace tools {

namespace {

constexpr size_t kHalfRow = 23;  // characters of "00 01 02 03 04 05 06 07"
constexpr std::string_view kBetween = " \t\r\n";
/// What parts digits besides commas and 0x: also of arrays, literals and addresses.
constexpr std::string_view kParts = " \t\r\n:;-{}[]()\"'";
constexpr std::string_view kDigits = "0123456789abcdefABCDEF";

bool isHex(std::string_view word) {
  return !word.empty() && word.find_first_not_of(kDigits) == std::string_view::npos;
}

/// The size of all the words when they have the same; 0 otherwise.
size_t groupSize(std::string_view text) {
  size_t size = 0;
  for (size_t at = 0; (at = text.find_first_not_of(kBetween, at)) != std::string_view::npos;) {
    const size_t end = std::min(text.find_first_of(kBetween, at), text.size());
    if (!isHex(text.substr(at, end - at)) || (size != 0 && size != end - at)) return 0;
    size = end - std::exchange(at, end);
  }
  return size;
}

/// Words of two bytes, the least significant first, as od -x prints them.
void swapPairs(std::string& digits) {
  for (size_t at = 0; at + 4 <= digits.size(); at += 4)
    std::swap_ranges(digits.begin() + static_cast<ptrdiff_t>(at),
                     digits.begin() + static_cast<ptrdiff_t>(at + 2),
                     digits.begin() + static_cast<ptrdiff_t>(at + 2));
}

}  // namespace

uint64_t HexText::bytesUpTo(std::string_view offset, int radix) const {
  const auto value = [radix](std::string_view text) {
    uint64_t number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number, radix);
    return number;
  };
  return value(offset) - value(first_offset_);
}

bool HexText::isNext(std::string_view offset) const {
  const auto by = [&](int radix) { return bytesUpTo(offset, radix) == digits_.size() / 2; };
  return squeezed_ || by(16) || by(8) || by(10);
}

bool HexText::beginsWithOffset(std::string_view word, std::string_view rest, bool has_column) const {
  if (!isHex(word)) return false;
  const size_t group = groupSize(rest);
  const bool ends = isDump() && rest.empty() && isNext(word);
  const bool known = word.find_first_not_of('0') == std::string_view::npos || (isDump() && isNext(word));
  switch (word.size()) {
    case 4:
      return group == 2 && rest.starts_with("  ") && known;
    case 6:
    case 7:
      return group == 2 || group == 4 || ends;
    case 8:
      return group == 2 ? has_column || known : ends;
    default:
      return false;
  }
}

HexRow HexText::read(std::string_view line) const {
  HexRow row;
  line = line.substr(0, line.find_last_not_of(kBetween) + 1);
  size_t at = std::min(line.find_first_not_of(kBetween), line.size());
  std::string_view word = line.substr(at, line.find_first_of(kBetween, at) - at);
  const size_t behind = at + word.size();
  const bool colon = word.size() > 4 && word.ends_with(':');
  if (colon) word.remove_suffix(1);
  if (word.starts_with("0x")) word.remove_prefix(2);
  const size_t data = std::min(line.find_first_not_of(kBetween, behind), line.size());
  // Two blanks are in front of the characters; where these have a frame, they may be among the bytes too.
  size_t column = line.find("  ", data);
  // But for eight bytes with the other eight behind them.
  if (const size_t other = column < line.size() ? line.find("  ", column + 2) : column;
      column - data == kHalfRow && other < line.size() && groupSize(line.substr(column, other - column)) == 2)
    column = other;
  if (const size_t frame = colon ? std::string_view::npos : line.find_first_of("|>", data);
      frame != std::string_view::npos)
    column = frame;
  column = std::min(column, line.size());
  const std::string_view rest = line.substr(behind, column - behind);
  const bool has_offset =
      colon ? isHex(word) && data < line.size() : beginsWithOffset(word, rest, column < line.size());
  if (has_offset) {
    row.offset = word;
    at = data;
    line = line.substr(0, column);
  }
  size_t group = 0;
  bool listed = false;
  const auto endGroup = [&] {
    // Of a list, a digit alone is a byte.
    if (listed && row.digits.size() - group == 1) row.digits.insert(group, 1, '0');
    group = row.digits.size();
  };
  for (; at < line.size() && line[at] != '#'; ++at) {
    const bool prefix =
        (line[at] == '0' || line[at] == '\\') && at + 1 < line.size() && (line[at + 1] | 0x20) == 'x';
    listed = listed || line[at] == ',';
    row.open = line[at] == ',' || (row.open && kBetween.find(line[at]) != std::string_view::npos);
    if (prefix) ++at;
    if (prefix || row.open || kParts.find(line[at]) != std::string_view::npos) {
      endGroup();
      continue;
    }
    if (kDigits.find(line[at]) == std::string_view::npos) {
      row.wrong = at;
      break;
    }
    row.digits += line[at];
  }
  endGroup();
  if (has_offset && !colon && groupSize(rest) == 4) swapPairs(row.digits);
  return row;
}

bool HexText::goesOn(const HexRow& row) const {
  if (row.offset.empty()) return open_;
  return isDump() && isNext(row.offset);
}

void HexText::add(const HexRow& row) {
  constexpr size_t kOctalWidth = 7;
  if (squeezed_) {
    const uint64_t until = bytesUpTo(row.offset, radix_);
    while (digits_.size() / 2 < until && digits_.size() <= kMost)
      digits_ += last_;
  }
  squeezed_ = false;
  if (!std::exchange(begun_, true)) {
    first_offset_ = row.offset;
    radix_ = first_offset_.size() == kOctalWidth ? 8 : 16;
  }
  for (const int radix : {8, 10, 16})
    if (!row.offset.empty() && bytesUpTo(row.offset, radix) == digits_.size() / 2 && !digits_.empty())
      radix_ = radix;
  if (digits_.size() <= kMost) digits_ += row.digits;
  last_ = row.digits;
  open_ = row.open;
}

}  // namespace tools
