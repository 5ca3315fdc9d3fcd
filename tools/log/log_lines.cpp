#include "tools/log/log_lines.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <utility>

#include "core/ground/log.h"

namespace tools {

namespace {

constexpr std::string_view kTag = KESEXT_LOG_TAG;
/// Before the tag where Android moves the line to the radio's log by itself.
constexpr std::string_view kMoved = "use-Rlog/RLOG-";
constexpr std::string_view kPriorityLetters = "VDIWEF";
/// Where a log has no years, as of a leap year.
constexpr int64_t kYearWithoutName = 2000;
constexpr int64_t kYear = int64_t{366} * 86'400'000;  // milliseconds
/// Nothing takes as long: between such times the clock was set. Milliseconds.
constexpr int64_t kTooLong = 3'600'000;

void removeColours(std::string& line) {
  constexpr std::string_view kIntroducer = "\x1b[";
  for (size_t at = 0; (at = line.find(kIntroducer, at)) != std::string::npos;) {
    const size_t end = line.find_first_not_of("0123456789;", at + kIntroducer.size());
    line.erase(at, end == std::string::npos ? end : end + 1 - at);
  }
}

void removeBlanks(std::string_view& text) {
  text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
}

/// The next word, up to a blank or to the other character, taken off the text; empty at its end.
std::string_view takeWord(std::string_view& text, char other = ' ') {
  const auto parts = [other](char character) { return character == ' ' || character == other; };
  const auto* begin = std::find_if_not(text.begin(), text.end(), parts);
  const auto* end = std::find_if(begin, text.end(), parts);
  text.remove_prefix(static_cast<size_t>(end - text.begin()));
  return {begin, static_cast<size_t>(end - begin)};
}

/// Of "YYYY-MM-DD hh:mm:ss.f", the same without a year, or "s.f", each with a fraction of any length; nothing
/// for any other text.
std::optional<int64_t> millisOf(std::string_view time) {
  constexpr int64_t kNumberMax = 1'000'000'000'000;
  std::array<int64_t, 7> numbers{};
  size_t count = 0;
  int64_t digits = 0;  // of the last, the fraction
  for (; !time.empty() && count < numbers.size(); ++count) {
    const auto [end, error] = std::from_chars(time.data(), time.data() + time.size(), numbers[count]);
    if (error != std::errc{} || numbers[count] < 0 || numbers[count] > kNumberMax) return std::nullopt;
    digits = end - time.data();
    time.remove_prefix(std::min(static_cast<size_t>(digits) + 1, time.size()));
  }
  if (!time.empty() || (count != 2 && count < 6)) return std::nullopt;
  std::rotate(numbers.begin(), numbers.begin() + static_cast<ptrdiff_t>(count), numbers.end());
  auto [year, month, day, hours, minutes, seconds, millis] = numbers;
  for (; digits > 3; --digits)
    millis /= 10;
  for (; digits < 3; ++digits)
    millis *= 10;
  if (count > 2) {
    const std::chrono::year_month_day date{
        std::chrono::year(static_cast<int>(count == 7 ? year : kYearWithoutName)),
        std::chrono::month(static_cast<unsigned>(month)), std::chrono::day(static_cast<unsigned>(day))};
    if (!date.ok()) return std::nullopt;
    hours += int64_t{std::chrono::sys_days(date).time_since_epoch().count()} * 24;
  }
  return ((hours * 60 + minutes) * 60 + seconds) * 1000 + millis;
}

/// The last two of the ids of user, process and thread, of which the user's may be a name. Nothing when there
/// is something else, as where another process's text has the tag in it.
std::optional<std::array<int32_t, 2>> lastIds(std::string_view words) {
  const auto is_of_ids = [](char character) {
    return (character >= 'a' && character <= 'z') || (character >= '0' && character <= '9') ||
           character == '_';
  };
  std::array<int32_t, 2> ids{};
  for (std::string_view word; !(word = takeWord(words, ':')).empty();) {
    if (word[0] == '+' || word[0] == '-') continue;  // the time's zone
    if (!std::all_of(word.begin(), word.end(), is_of_ids)) return std::nullopt;
    ids[0] = std::exchange(ids[1], 0);
    std::from_chars(word.data(), word.data() + word.size(), ids[1]);
  }
  return ids;
}

/// What stands before the priority: nothing, or date and time or seconds, and the ids. False when it is
/// something else.
bool readHead(std::string_view head, LogLine& line) {
  std::string_view words = head;
  const std::string_view first = takeWord(words);
  if (first.empty()) return true;
  const bool dated = first.find('-') != std::string_view::npos;
  const std::string_view last = dated ? takeWord(words) : first;
  line.time = {first.data(), static_cast<size_t>(last.data() + last.size() - first.data())};
  line.millis = millisOf(line.time);
  const auto ids = lastIds(words);
  if (!line.millis || !ids) return false;
  line.process = (*ids)[0];
  return true;
}

/// A line with a priority and a tag, its text what stands behind these: of "HEAD P TAG   : TEXT" or
/// "HEAD P/TAG   (IDS): TEXT" from the colon or the bracket of the long form on.
std::optional<LogLine> readTagged(std::string_view text) {
  const size_t tag = text.find(kTag);
  if (tag == std::string_view::npos) return std::nullopt;
  const size_t begin = tag - (text.substr(0, tag).ends_with(kMoved) ? kMoved.size() : 0);
  if (begin < 2) return std::nullopt;
  const size_t priority = begin - 2;
  const char parting = text[begin - 1];
  if ((parting != ' ' && parting != '/') || kPriorityLetters.find(text[priority]) == std::string_view::npos)
    return std::nullopt;
  if (priority > 0 && text[priority - 1] != ' ') return std::nullopt;
  LogLine line;
  if (!readHead(text.substr(0, priority), line)) return std::nullopt;
  // The shell shows them behind a margin.
  line.bench = parting == ' ' && text.find_first_not_of(' ') == priority;
  line.text = text.substr(tag + kTag.size());
  removeBlanks(line.text);
  if (const size_t end = line.text.find(')'); line.text.starts_with('(') && end != std::string_view::npos) {
    const auto ids = lastIds(line.text.substr(1, end - 1));
    if (!ids) return std::nullopt;
    line.process = (*ids)[1];
    line.text.remove_prefix(end + 1);
  }
  return line;
}

}  // namespace

std::optional<LogLine> LogReader::read(std::string& line) {
  if (line.find('\x1b') != std::string::npos) removeColours(line);
  while (line.ends_with('\r'))
    line.pop_back();
  std::string_view text = line;
  if (text.starts_with("[ ") && text.ends_with(']')) {
    text.remove_prefix(1);
    in_block_ = true;
    block_ = readTagged(text);
    if (!block_ || block_->text != "]") {
      block_.reset();
      return std::nullopt;
    }
    block_time_ = block_->time;
    block_->time = block_time_;
    return std::nullopt;
  }
  if (in_block_) {
    in_block_ = !text.empty();
    if (block_) block_->text = text;
    return in_block_ ? block_ : std::nullopt;
  }
  std::optional<LogLine> found = readTagged(text);
  if (!found || !found->text.starts_with(':')) return std::nullopt;
  found->text.remove_prefix(found->text.starts_with(": ") ? 2 : 1);
  return found;
}

std::optional<int64_t> millisBetween(std::optional<int64_t> from, std::optional<int64_t> to) {
  if (!from || !to) return std::nullopt;
  int64_t passed = *to - *from;
  if (passed < 0) passed += kYear;
  if (passed < 0 || passed >= kTooLong) return std::nullopt;
  return passed;
}

}  // namespace tools
