// What the process does by itself while somebody types or waits: unsolicited messages, log lines, its end.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>
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

/// Takes out what settling led to, which nobody asked for.
void dropSettling(Happenings& happenings);

/// How a wait went: what was waited for is there; the time passed; Ctrl-C.
enum class Waited { done, late, interrupted };

class ProcessNews {
 public:
  /// `report` is told of what is wrong.
  ProcessNews(Station& station, const Console& console, std::function<void(const std::string&)> report)
      : station_(station), console_(console), report_(std::move(report)) {}

  /// The station's process has just been started; nothing of it has been shown.
  void begin();
  /// Shows what is left of a process that has been ended.
  void finish();
  /// From here on, Ctrl-C ends a wait; twice, with no key between, it ends the tool.
  void takeCtrlC();

  /// Each shows meanwhile what comes, and throws std::system_error when the reader of the output has gone.
  /// Waits until somebody has typed something, or never will.
  Waited waitForInput(const Interlude& interlude);
  /// Waits until the process has written an answer, or never will.
  Waited waitForAnswer(std::optional<handset::Millis> timeout = {});
  /// Waits for one more unsolicited message than the calls before, or the process's end.
  Waited waitForMessage(handset::Millis timeout);
  /// Gives a process that has closed a pipe the time to end.
  Waited waitForEnd(handset::Millis timeout);
  /// Waits until what the modem has indicated is done with, and gives the messages that came of it. Throws
  /// ProcessTrouble.
  std::vector<handset::Bytes> settle();
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
    std::string trouble;
  };

  /// Waits until it is over, or the descriptor can be read or has ended.
  Waited wait(int fd, const std::function<bool()>& over, std::optional<handset::Millis> timeout = {},
              const Interlude& interlude = {});
  void takeMessages(News& news, size_t most);
  void takeLines(News& news);
  void show(News& news);

  Station& station_;
  const Console& console_;
  std::function<void(const std::string&)> report_;
  int ctrl_c_ = -1;           // can be read once Ctrl-C has come
  bool interrupted_ = false;  // it has, and no key since
  bool serving_ = false;
  bool shows_logs_ = false;
  bool shows_trace_ = false;
  bool hears_messages_ = false;  // the pipe has not ended
  size_t unclaimed_ = 0;         // messages that were shown and not yet waited for
};

}  // namespace tools
