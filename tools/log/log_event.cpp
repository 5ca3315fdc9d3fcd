#include "tools/log/log_event.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace tools {

namespace {

/// What is kept of one event, of words in characters, and of a log.
constexpr size_t kDetailsMax = 12;
constexpr size_t kProblemsMax = 4;
constexpr size_t kWordsMax = 160;
constexpr size_t kSlowestMax = 10;

}  // namespace

void addDetail(LogEvent& event, std::string words) {
  if (words.empty() || event.details.size() == kDetailsMax) return;
  if (words.size() > kWordsMax) words = words.substr(0, kWordsMax) + "...";
  event.details.push_back(std::move(words));
}

void addProblem(LogEvent& event, Problem problem) {
  if (!problem.words.empty() && event.problems.size() < kProblemsMax)
    event.problems.push_back(std::move(problem));
}

void worsen(LogEvent& event, Ending ending) {
  const auto rank = [](Ending of) {
    constexpr Ending kFromGoodToBad[] = {Ending::answered, Ending::success, Ending::zeros,
                                         Ending::failed,   Ending::cut,     Ending::notServed};
    return std::find(std::begin(kFromGoodToBad), std::end(kFromGoodToBad), of);
  };
  if (rank(event.ending) < rank(ending)) event.ending = ending;
}

std::string inSeconds(int64_t millis) {
  if (millis < 1000) return fmt::format("{} ms", millis);
  return fmt::format("{:.1f} s", static_cast<double>(millis) / 1000);
}

std::string times(size_t count) {
  return count == 1 ? "once" : fmt::format("{} times", count);
}

std::string_view endingName(Ending ending) {
  switch (ending) {
    case Ending::answered:
      return "answered";
    case Ending::success:
      return "success";
    case Ending::zeros:
      return "answered with zeros";
    case Ending::failed:
      return "failed";
    case Ending::notServed:
      return "not served";
    case Ending::cut:
      return "cut";
  }
  return "";
}

bool LogEvent::failed() const {
  return ending == Ending::zeros || ending == Ending::failed || ending == Ending::notServed || silences > 0 ||
         !problems.empty();
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
