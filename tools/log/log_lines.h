// The lines of a log that are the process's: from a workstation, or in the forms of logcat that have the tag
// before the text.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tools {

struct LogLine {
  std::string_view text;          // what the process said
  std::string_view time;          // as the log has it, empty without one
  std::optional<int64_t> millis;  // since some beginning; in a log without years, of the year
  int32_t process = 0;            // 0 where the log does not say, as on a workstation
  bool bench = false;             // a workstation's
};

class LogReader {
 public:
  /// What a line is of the process's log; nothing when it is another's. The line loses its colours; the
  /// result's texts last until the next call, and as long as the line does.
  std::optional<LogLine> read(std::string& line);

 private:
  bool in_block_ = false;         // of a log in long form, below a header
  std::optional<LogLine> block_;  // the header, where it is the process's
  std::string block_time_;
};

/// From one time of a log to a later one; nothing when one is missing or the clock was set in between.
std::optional<int64_t> millisBetween(std::optional<int64_t> from, std::optional<int64_t> to);

}  // namespace tools
