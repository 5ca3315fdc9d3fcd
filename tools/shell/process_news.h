// What the process does by itself while somebody types or waits: unsolicited messages, log lines, its end.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "handset/bytes.h"
#include "handset/timeout.h"
#include "tools/bench/console.h"
#include "tools/bench/happening.h"
#include "tools/bench/station.h"

namespace tools {

/// What is done around each showing: a line that is being typed is taken away, and then drawn again.
struct Interlude {
  std::function<void()> before = [] {};
  std::function<void()> after = [] {};
};

class ProcessNews {
 public:
  /// `report` is told of what is wrong.
  ProcessNews(Station& station, const Console& console, std::function<void(const std::string&)> report)
      : station_(station), console_(console), report_(std::move(report)) {}

  /// The station's process has just been started; nothing of it has been shown.
  void begin();
  /// Shows what is left of a process that has been ended.
  void finish();
  /// Waits until the descriptor can be read or has ended, and shows meanwhile what comes. False when the time
  /// passed first, never without one. Throws std::system_error when the reader of the output has gone.
  bool waitToRead(int fd, const Interlude& interlude = {}, std::optional<handset::Millis> timeout = {});
  /// Shows one more unsolicited message than the calls before, and waits for it if it has not been shown
  /// already. False when the time passed or the process ended first.
  bool waitForMessage(handset::Millis timeout);
  /// Gives a process that has closed a pipe the time to end, and shows that. False when it does not.
  bool waitForEnd(handset::Millis timeout);
  /// Shows what there is by now of the log and the trace, as far as they are shown at all.
  void showLines();
  void showLogs(bool on);
  /// What crosses the modem link.
  void showTrace(bool on);

  /// Whether there is a process that serves requests.
  [[nodiscard]] bool serving() const { return serving_; }

 private:
  struct News {
    Happenings happenings;
    size_t messages = 0;  // of the happenings
    std::string trouble;
  };
  using Deadline = std::optional<std::chrono::steady_clock::time_point>;

  /// One wait for the descriptor or any news. Whether the descriptor can be read; nothing when the time
  /// passed.
  std::optional<bool> waitOnce(int fd, const Interlude& interlude, Deadline deadline);
  void takeMessages(News& news, size_t most);
  void takeLines(News& news);
  void show(News& news);

  Station& station_;
  const Console& console_;
  std::function<void(const std::string&)> report_;
  bool serving_ = false;
  bool shows_logs_ = false;
  bool shows_trace_ = false;
  bool hears_messages_ = false;  // the pipe has not ended
  size_t unclaimed_ = 0;         // messages that were shown and not yet waited for
};

}  // namespace tools
