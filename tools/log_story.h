// What happened, of a log's lines: start-ups, requests, what the modem reported, modem logs, and what went
// wrong.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/line_table.h"
#include "tools/log_dumps.h"
#include "tools/log_lines.h"

namespace tools {

enum class Happening { startUp, request, report, modemLog, trouble, end };

/// How a request or a start-up ended, as far as the log tells.
enum class Ending { answered, success, zeros, failed, notServed, cut };

/// "answered" and so on, as people read it.
std::string_view endingName(Ending ending);

/// "12 ms", "15.0 s".
std::string inSeconds(int64_t millis);

/// "once", "2 times".
std::string times(size_t count);

/// What went wrong, and the number of the line that says so.
struct Problem {
  size_t line = 0;
  std::string words;
};

/// Something that happened, in the order in which such things ended.
struct LogEvent {
  Happening happening = Happening::trouble;
  size_t line = 0;  // the first of it
  int32_t process = 0;
  std::string time;              // of that line, as the log has it
  std::optional<int64_t> began;  // the same in milliseconds
  std::optional<int64_t> took;   // milliseconds
  std::string name;              // of a request or an indication
  Ending ending = Ending::answered;
  std::vector<std::string> details;
  std::vector<Problem> problems;
  size_t silences = 0;  // how often the modem let the time for an answer pass
  size_t count = 1;     // the same again and again, nothing in between

  /// Whether something went wrong.
  [[nodiscard]] bool failed() const;
};

/// What is held of a log for its end.
struct LogSummary {
  struct Requests {
    size_t count = 0;
    size_t failures = 0;
    size_t timed = 0;
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
};

class LogStory {
 public:
  /// `tell` is told of each event.
  explicit LogStory(std::function<void(const LogEvent&)> tell) : tell_(std::move(tell)) {}

  /// The log's next line; `line` is nothing for one of others.
  void take(const std::optional<LogLine>& line);
  /// The log has ended.
  void finish();
  [[nodiscard]] const LogSummary& summary() const { return summary_; }

 private:
  /// One of the processes that write to the log.
  struct Teller {
    int32_t process = 0;
    std::optional<LogEvent> start_up;
    std::optional<LogEvent> request;
    std::optional<LogEvent> report;
    LineContext context;
    const DumpAnnouncement* announced = nullptr;
    std::optional<Problem> asked;          // of the modem, and not yet answered
    size_t transfers = 0;                  // of elements
    std::vector<std::string> transferred;  // the first of them
    size_t waits = 0;
    std::optional<int64_t> last_time;  // of a line that is no report's
    bool writes_nam = false;
    size_t missing = 0;  // items, when it is written

    /// What the process is at: a request, its start-up, or nothing.
    LogEvent* current() { return request ? &*request : start_up ? &*start_up : nullptr; }
  };

  Teller& tellerOf(int32_t process);
  LogEvent begin(Happening happening, const LogLine& line) const;
  void note(Teller& teller, const LogLine& line, const LineRow& row, const Places& places);
  void noteStart(Teller& teller, const LogLine& line, const LineRow& row, const Places& places);
  void noteRequest(Teller& teller, const LogLine& line, const LineRow& row, const Places& places);
  void noteApart(Teller& teller, const LogLine& line, const LineRow& row, const Places& places);
  void noteSilence(Teller& teller, const LogLine& line);
  static void addTransfers(Teller& teller, LogEvent& event);
  void endStart(Teller& teller, std::optional<int64_t> now, Ending ending);
  void endRequest(Teller& teller, std::optional<int64_t> now, Ending ending);
  void endReport(Teller& teller);
  void cut(Teller& teller, std::string_view why);
  void tell(LogEvent event);
  void count(const LogEvent& event);

  std::function<void(const LogEvent&)> tell_;
  LogSummary summary_;
  std::vector<Teller> tellers_;
  std::optional<LogEvent> held_;  // told once something else happens
};

}  // namespace tools
