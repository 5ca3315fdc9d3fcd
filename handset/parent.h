// The radio layer's end: starts the process and talks to it over its three pipes.
//
// Pipes keep no message boundaries. An answer is whatever one read gives, so take each answer before sending
// the next request. Unsolicited messages tell their own length and may pile up.
#pragma once

#include <sys/types.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "handset/bytes.h"
#include "handset/line_reader.h"
#include "handset/timeout.h"
#include "platform/host/unique_fd.h"

namespace handset {

/// The descriptors that the process finds its pipes at, and no others but standard input, output and error.
inline constexpr int kChildRequestsFd = 3;
inline constexpr int kChildResponsesFd = 4;
inline constexpr int kChildUnsolicitedFd = 5;

struct ParentOptions {
  std::string executable;
  std::string handset_root;
  int instance_id = 0;
  /// In place of the three descriptors and the instance id.
  std::optional<std::vector<std::string>> arguments;
};

/// Requests, answers and unsolicited messages may each be used by a thread of their own, the log by any.
class Parent {
 public:
  /// Starts the process, out of reach of a terminal's Ctrl-C, which is this process's to act upon. From here
  /// on this process ignores SIGPIPE and, where it may, is a member of the modem logs' group. Throws
  /// std::system_error when the executable cannot be started.
  explicit Parent(const ParentOptions& options);
  Parent(const Parent&) = delete;
  Parent& operator=(const Parent&) = delete;
  /// Ends the process: closes the request pipe, and kills it when it is not gone after 2 seconds.
  ~Parent();

  /// Writes one request with one write. False when the pipe did not take all of it.
  bool send(ByteView request, Millis timeout = kTimeout);
  /// The next answer; nothing when the time passed or the pipe ended.
  std::optional<Bytes> nextResponse(Millis timeout = kTimeout);
  /// The next unsolicited message; nothing when the time passed or the pipe ended. Throws
  /// std::runtime_error when its length makes no sense.
  std::optional<Bytes> nextUnsolicited(Millis timeout = kTimeout);

  void closeRequests() { requests_.reset(); }
  void closeResponses() { responses_.reset(); }
  void closeUnsolicited() { unsolicited_.reset(); }
  /// This process's ends of the pipes; −1 once closed.
  [[nodiscard]] int requestsFd() const { return requests_.get(); }
  [[nodiscard]] int responsesFd() const { return responses_.get(); }
  [[nodiscard]] int unsolicitedFd() const { return unsolicited_.get(); }

  [[nodiscard]] pid_t pid() const { return pid_; }
  /// Can be read once the process has ended.
  [[nodiscard]] int processFd() const { return ended_.get(); }
  void kill(int signal) const;
  /// Waits for the process to end: its exit status, or minus the signal that ended it. Nothing when the time
  /// passed first. The log is complete afterwards.
  std::optional<int> wait(Millis timeout = kTimeout);

  /// Waits for a log line with this text, behind the one that the last successful call found. Texts are
  /// compared without priority and tag.
  bool waitForLog(std::string_view text, Millis timeout = kTimeout);
  /// The same from a mark on; does not move where the other continues.
  bool waitForLogSince(size_t mark, std::string_view text, Millis timeout = kTimeout);
  /// The mark behind the first line since a mark of which this is a part; nothing when the time passed first.
  std::optional<size_t> waitForLogPart(size_t mark, std::string_view part, Millis timeout = kTimeout);
  /// The present end of the log.
  [[nodiscard]] size_t logMark() const { return log_->count(); }
  /// Lines as printed: "E RIL-KESEXT: text".
  [[nodiscard]] std::vector<std::string> logsSince(size_t mark) const { return log_->lines(mark); }
  [[nodiscard]] std::vector<StampedLine> stampedLogsSince(size_t mark) const {
    return log_->stampedLines(mark);
  }
  [[nodiscard]] std::vector<std::string> logs() const { return log_->lines(); }
  /// Lets the log so far go, for whoever works on and on.
  void forgetLogs() { log_->forget(log_->count()); }
  /// The lines since the last call, and a descriptor that can be read while there are some.
  std::vector<StampedLine> newLogs() { return log_->newLines(); }
  [[nodiscard]] int newLogsFd() const { return log_->newLinesFd(); }
  /// Waits until the log has everything that the process printed so far.
  void catchUpWithLog(Millis timeout = kTimeout) const { log_->catchUp(timeout); }

 private:
  host::UniqueFd requests_;
  host::UniqueFd responses_;
  host::UniqueFd unsolicited_;
  pid_t pid_ = -1;
  host::UniqueFd ended_;  // an eventfd
  std::thread end_watch_;
  std::optional<int> exit_status_;
  Bytes unsolicited_bytes_;  // read, but not yet handed out
  std::unique_ptr<LineReader> log_;
  size_t log_cursor_ = 0;
};

}  // namespace handset
