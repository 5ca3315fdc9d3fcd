#include "tools/log/log_lines.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <utility>

#include "core/ground/log.h"

namespace tools {

namespace {

constexpr std::string_view kTag = KESEXT_LOG_TAG;
constexpr std::string_view kPriorityLetters = "VDIWEF";
constexpr int64_t kMillisPerSecond = 1000;
constexpr int64_t kMillisPerDay = 86'400 * kMillisPerSecond;
/// Where a log has no years, as of a leap year.
constexpr int kYearWithoutName = 2000;
constexpr int64_t kYear = 366 * kMillisPerDay;
/// A clock is not set back as far as this: a year has ended.
constexpr int64_t kYearHasEnded = -300 * kMillisPerDay;

void removeColours(std::string& line) {
  constexpr std::string_view kIntroducer = "\x1b[";
  for (size_t at = 0; (at = line.find(kIntroducer, at)) != std::string::npos;) {
    const size_t end = line.find_first_not_of("0123456789;", at + kIntroducer.size());
    line.erase(at, end == std::string::npos ? end : end + 1 - at);
  }
}

std::string_view trimmed(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
  return text.substr(0, text.find_last_not_of(' ') + 1);
}

/// The next word, taken off the text; empty at its end.
std::string_view takeWord(std::string_view& text) {
  text = trimmed(text);
  const std::string_view word = text.substr(0, text.find(' '));
  text.remove_prefix(word.size());
  return word;
}

/// The number that a text begins with, taken off it together with the character behind it.
std::optional<int64_t> takeNumber(std::string_view& text) {
  int64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc{}) return std::nullopt;
  text.remove_prefix(std::min(static_cast<size_t>(end - text.data()) + 1, text.size()));
  return number;
}

/// Seconds and their fraction of any number of digits.
std::optional<int64_t> millisOfSeconds(std::string_view text) {
  const auto seconds = takeNumber(text);
  if (!seconds) return std::nullopt;
  std::string fraction(text.substr(0, 3));
  fraction.resize(3, '0');
  std::string_view digits = fraction;
  return *seconds * kMillisPerSecond + takeNumber(digits).value_or(0);
}

std::optional<int64_t> millisOfClock(std::string_view clock) {
  const auto hours = takeNumber(clock);
  const auto minutes = takeNumber(clock);
  const auto millis = millisOfSeconds(clock);
  if (!hours || !minutes || !millis) return std::nullopt;
  return (*hours * 60 + *minutes) * 60 * kMillisPerSecond + *millis;
}

/// "MM-DD" or "YYYY-MM-DD".
std::optional<int64_t> millisOfDate(std::string_view date) {
  int64_t year = kYearWithoutName;
  if (std::count(date.begin(), date.end(), '-') == 2) year = takeNumber(date).value_or(0);
  const auto month = takeNumber(date);
  const auto day = takeNumber(date);
  if (!month || !day) return std::nullopt;
  const std::chrono::year_month_day named{std::chrono::year(static_cast<int>(year)),
                                          std::chrono::month(static_cast<unsigned>(*month)),
                                          std::chrono::day(static_cast<unsigned>(*day))};
  if (!named.ok()) return std::nullopt;
  return std::chrono::sys_days(named).time_since_epoch().count() * kMillisPerDay;
}

/// What stands before the priority: nothing, or date and time or seconds, and the ids of user, process and
/// thread. False when it is something else, as when another process's text has the tag in it.
bool readHead(std::string_view head, LogLine& line) {
  int64_t ids[2] = {};  // the last two
  while (true) {
    const std::string_view word = takeWord(head);
    if (word.empty()) break;
    const bool begins = line.time.empty();
    const size_t colon = word.find(':');
    std::string_view left = word;
    if (begins && word.find('-') != std::string_view::npos) {
      const std::string_view clock = takeWord(head);
      const auto date = millisOfDate(word);
      const auto time = millisOfClock(clock);
      if (!date || !time) return false;
      line.time = {word.data(), static_cast<size_t>(clock.data() + clock.size() - word.data())};
      line.millis = *date + *time;
    } else if (begins && word.find('.') != std::string_view::npos) {
      line.time = word;
      line.millis = millisOfSeconds(word);
      if (!line.millis) return false;
    } else if (begins) {
      return false;
    } else if (word[0] != '+' && word[0] != '-') {  // a time zone
      constexpr std::string_view kOfIds = "abcdefghijklmnopqrstuvwxyz_0123456789:";
      if (word.find_first_not_of(kOfIds) != std::string_view::npos) return false;
      const auto id = takeNumber(left);
      if (id) ids[0] = std::exchange(ids[1], *id);
      const bool both = colon != std::string_view::npos && !left.empty();
      if (both) ids[0] = std::exchange(ids[1], takeNumber(left).value_or(0));
      if (!id && colon != std::string_view::npos) return false;
    }
  }
  line.process = static_cast<int32_t>(ids[0]);
  return true;
}

/// A line with a priority and a tag, and what of it stands behind the tag.
std::optional<LogLine> readTagged(std::string_view text, size_t tag, std::string_view& rest) {
  constexpr size_t kPrioritySize = 2;
  if (tag < kPrioritySize) return std::nullopt;
  const size_t priority = tag - kPrioritySize;
  const char parting = text[tag - 1];
  if (parting != ' ' && parting != '/') return std::nullopt;
  if (kPriorityLetters.find(text[priority]) == std::string_view::npos) return std::nullopt;
  if (priority > 0 && text[priority - 1] != ' ') return std::nullopt;
  std::string_view head = text.substr(0, priority);
  if (head.starts_with('[')) head.remove_prefix(1);
  LogLine line;
  if (!readHead(head, line)) return std::nullopt;
  rest = text.substr(tag + kTag.size());
  return line;
}

}  // namespace

std::optional<LogLine> LogReader::read(std::string& line) {
  if (line.find('\x1b') != std::string::npos) removeColours(line);
  const std::string_view text = line;
  if (block_ != Block::none && !text.starts_with("[ ")) {
    if (text.empty()) block_ = Block::none;
    if (block_ != Block::own) return std::nullopt;
    LogLine found = block_head_;
    found.text = text;
    return found;
  }
  if (text.starts_with("[ ") && text.ends_with(']')) block_ = Block::foreign;
  const size_t tag = text.find(kTag);
  if (tag == std::string_view::npos) return std::nullopt;
  std::string_view rest;
  std::optional<LogLine> found = readTagged(text, tag, rest);
  if (!found) return std::nullopt;
  rest.remove_prefix(std::min(rest.find_first_not_of(' '), rest.size()));
  if (block_ == Block::foreign) {
    if (rest != "]") return std::nullopt;
    block_ = Block::own;
    block_time_ = found->time;
    block_head_ = *found;
    block_head_.time = block_time_;
    return std::nullopt;
  }
  if (rest.starts_with('(')) {
    rest.remove_prefix(1);
    rest.remove_prefix(std::min(rest.find_first_not_of(' '), rest.size()));
    found->process = static_cast<int32_t>(takeNumber(rest).value_or(0));  // and the parenthesis
  }
  if (!rest.starts_with(':')) return std::nullopt;
  found->text = rest.substr(rest.starts_with(": ") ? 2 : 1);
  return found;
}

std::optional<int64_t> millisBetween(std::optional<int64_t> from, std::optional<int64_t> to) {
  if (!from || !to) return std::nullopt;
  int64_t passed = *to - *from;
  if (passed < kYearHasEnded) passed += kYear;
  if (passed < 0) return std::nullopt;
  return passed;
}

}  // namespace tools
