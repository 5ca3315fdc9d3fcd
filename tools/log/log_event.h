// Something that happened, as a log tells it, and what many of these come to.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tools {

enum class EventKind { startUp, request, report, modemLog, trouble, end };

/// How a request or a start-up ended, as far as the log tells; from good to bad.
enum class Ending { answered, success, zeros, failed, cut, notServed };

/// "answered" and so on, as people read it.
std::string_view endingName(Ending ending);

/// "12 ms", "15.0 s".
std::string inSeconds(int64_t millis);

/// "once", "2 times".
std::string times(size_t count);

/// Words of a log as far as they are kept and fit to be shown.
std::string keptWords(std::string_view words);

/// What a line says that went wrong.
struct Problem {
  size_t line = 0;
  std::string words;
};

/// Something that happened, in the order in which such things ended.
struct LogEvent {
  EventKind happening = EventKind::trouble;
  size_t line = 0;  // the first of it
  int32_t process = 0;
  std::string time;              // of that line, as the log has it
  std::optional<int64_t> began;  // the same in milliseconds
  std::optional<int64_t> took;   // milliseconds
  std::string name;              // of a request or an indication
  Ending ending = Ending::answered;
  std::vector<std::string> details;
  std::vector<Problem> problems;  // the first few and the last
  size_t silences = 0;            // how often the modem let the time for an answer pass
  size_t count = 1;               // the same again and again, nothing in between

  /// Adds to what is told, unless that is much already; no words are nothing.
  void addDetail(std::string_view words);
  void addProblem(size_t of_line, std::string_view words);
  /// The worst of what the lines told is how it ended.
  void worsen(Ending by) { ending = std::max(ending, by); }

  /// Whether something went wrong.
  [[nodiscard]] bool failed() const;
  /// Whether the same happened, at another time.
  [[nodiscard]] bool isLike(const LogEvent& other) const;
};

/// What is held of a log for its end.
struct LogSummary {
  struct Requests {
    size_t count = 0;
    size_t failures = 0;
    int64_t timed = 0;
    int64_t longest = 0;  // milliseconds
    int64_t total = 0;    // milliseconds
  };
  struct Slow {
    int64_t took = 0;  // milliseconds
    size_t line = 0;
    std::string name;
  };
  size_t lines = 0;    // of the log
  size_t own = 0;      // of the process
  size_t unknown = 0;  // of those, lines that are in no row of the table
  Problem first_unknown;
  size_t starts = 0;
  size_t silences = 0;
  size_t troubles = 0;  // outside of requests
  std::map<std::string, Requests> requests;
  std::vector<Slow> slowest;  // the slowest first

  /// Counts what happened.
  void count(const LogEvent& event);
};

}  // namespace tools
