// What happened, of a log's lines: start-ups, requests, what the modem reported, modem logs, and what went
// wrong.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/log/line_table.h"
#include "tools/log/log_dumps.h"
#include "tools/log/log_event.h"
#include "tools/log/log_lines.h"

namespace tools {

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
  /// One of the processes that write to the log, and what of it is known until its current event ends.
  struct Teller {
    int32_t process = 0;
    std::optional<LogEvent> current;  // a request or its start-up
    std::optional<LogEvent> report;
    std::optional<int64_t> last_time;  // of a line that is no report's
    LineContext context;
    const DumpAnnouncement* announced = nullptr;
    Problem asked;                         // the modem, and it has not answered; without words otherwise
    size_t transfers = 0;                  // of elements
    std::vector<std::string> transferred;  // the first of them
    size_t waits = 0;
    bool writes_nam = false;
    size_t missing = 0;  // items, when it is written
  };

  Teller& tellerOf(int32_t process);
  [[nodiscard]] LogEvent eventOf(EventKind happening, const LogLine& line) const;
  void note(Teller& teller, const LogLine& line, const LineRow& row, const Places& places);
  void noteCurrent(Teller& teller, const LogLine& line, const LineRow& row, const Places& places);
  void noteApart(Teller& teller, const LogLine& line, const LineRow& row, const Places& places);
  void tellAlone(EventKind happening, const LogLine& line, LineKind kind, std::string_view words);
  void begin(Teller& teller, EventKind happening, const LogLine& line, std::string_view why);
  void end(Teller& teller, std::optional<int64_t> now, Ending ending);
  void endReport(Teller& teller);
  void cut(Teller& teller, std::string_view why);
  void tell(LogEvent event);

  std::function<void(const LogEvent&)> tell_;
  LogSummary summary_;
  std::vector<Teller> tellers_;
  std::optional<LogEvent> held_;  // told once something else happens
};

}  // namespace tools
