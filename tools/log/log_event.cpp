#include "tools/log/log_event.h"

#include <fmt/format.h>

#include <tuple>

namespace tools {

namespace {

/// What is kept of one event, of words in characters, and of a log.
constexpr size_t kDetailsMax = 12;
constexpr size_t kProblemsMax = 4;
constexpr size_t kWordsMax = 160;
constexpr size_t kSlowestMax = 10;

}  // namespace

std::string_view endingName(Ending ending) {
  constexpr std::string_view kNames[] = {"answered", "success", "answered with zeros",
                                         "failed",   "cut",     "not served"};
  return kNames[static_cast<size_t>(ending)];
}

std::string inSeconds(int64_t millis) {
  if (millis < 1000) return fmt::format("{} ms", millis);
  return fmt::format("{:.1f} s", static_cast<double>(millis) / 1000);
}

std::string times(size_t count) {
  return count == 1 ? "once" : fmt::format("{} times", count);
}

std::string keptWords(std::string_view words) {
  size_t size = std::min(words.size(), kWordsMax);
  const auto continues = [](char byte) { return (static_cast<uint8_t>(byte) & 0xC0) == 0x80; };
  while (size < words.size() && size > 0 && continues(words[size]))
    --size;
  std::string kept(words.substr(0, size));
  std::replace_if(
      kept.begin(), kept.end(), [](unsigned char byte) { return byte < ' '; }, '?');
  return size < words.size() ? kept + "..." : kept;
}

void LogEvent::addDetail(std::string_view words) {
  if (!words.empty() && details.size() < kDetailsMax) details.push_back(keptWords(words));
}

void LogEvent::addProblem(size_t of_line, std::string_view words) {
  if (words.empty()) return;
  // The last one tells what came of those before it.
  if (problems.size() == kProblemsMax) problems.pop_back();
  problems.push_back({of_line, keptWords(words)});
}

bool LogEvent::failed() const {
  return ending == Ending::zeros || ending == Ending::failed || ending == Ending::notServed || silences > 0 ||
         !problems.empty();
}

bool LogEvent::isLike(const LogEvent& other) const {
  const auto words = [](const Problem& a, const Problem& b) { return a.words == b.words; };
  return std::tie(happening, process, name, details) ==
             std::tie(other.happening, other.process, other.name, other.details) &&
         std::equal(problems.begin(), problems.end(), other.problems.begin(), other.problems.end(), words);
}

void LogSummary::count(const LogEvent& event) {
  silences += event.silences;
  if (event.happening != EventKind::request) {
    troubles += event.failed() ? 1 : 0;
    return;
  }
  Requests& of_name = requests[event.name];
  ++of_name.count;
  of_name.failures += event.failed() ? 1 : 0;
  if (!event.took) return;
  ++of_name.timed;
  of_name.total += *event.took;
  of_name.longest = std::max(of_name.longest, *event.took);
  if (slowest.size() == kSlowestMax && slowest.back().took >= *event.took) return;
  const auto place =
      std::find_if(slowest.begin(), slowest.end(), [&](const Slow& slow) { return slow.took < *event.took; });
  slowest.insert(place, {*event.took, event.line, event.name});
  if (slowest.size() > kSlowestMax) slowest.pop_back();
}

}  // namespace tools
