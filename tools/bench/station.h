// A bench: a handset folder, its simulated modem, and the process between the two.
#pragma once

#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "handset/bytes.h"
#include "handset/folder.h"
#include "handset/modem.h"
#include "handset/parent.h"
#include "tools/bench/happening.h"

namespace tools {

/// The process did not do what it is for. The message has how it ended, if it did, and its last log lines.
struct ProcessTrouble : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// "the process has ended with status 0": of an exit status, or minus the signal that ended it.
std::string describeEnd(int status);

struct StationOptions {
  std::string executable;
  std::string root;  // of a handset folder that is kept; empty: a fresh one, which goes with the station
  int instance_id = 0;
  bool share_modem = false;  // use a modem that runs in the folder already
};

struct Answer {
  handset::Bytes bytes;
  handset::Instant asked;
  handset::Instant came;
};

/// How long a wait for an answer is nothing to speak of.
inline constexpr handset::Millis kUsualWait{2000};

/// An indication that the process knows nothing of, and only logs.
inline constexpr uint16_t kUnknownIndication = 0xFFFF;

class Station {
 public:
  /// Starts the modem, but not the process. Throws UsageError when another one runs in the folder and is not
  /// to be shared, and when the process could not get into the folder.
  explicit Station(const StationOptions& options);
  Station(const Station&) = delete;
  Station& operator=(const Station&) = delete;
  ~Station();

  /// Starts the process and waits until it serves requests, with a word on standard error when that takes
  /// longer than kUsualWait. Throws ProcessTrouble.
  void start();
  /// Closes the request pipe and gives the process's exit status; nothing when it does not end.
  std::optional<int> end();
  [[nodiscard]] bool started() const { return process_.has_value(); }

  /// The answer to a request, with a word on standard error when it takes longer than kUsualWait; `messages`
  /// takes those that come meanwhile. Throws ProcessTrouble when no answer comes.
  Answer ask(handset::ByteView request, Happenings* messages = nullptr);
  /// "still waiting, after 2 s: ..." with what the process waits for, as far as that is known.
  std::string stillWaiting();
  /// Waits until the process has handled every indication that was sent before: one that it knows nothing of
  /// comes behind them. False when it has no link to the modem. Throws ProcessTrouble.
  bool settle();
  /// What went wrong, for a message: `what`, how the process ended, its last log lines.
  [[nodiscard]] ProcessTrouble trouble(const std::string& what);

  /// Throws ProcessTrouble when none has been started.
  handset::Parent& process();
  handset::Modem& modem() { return modem_; }
  handset::Folder& folder() { return folder_; }
  /// Throws UsageError, with what to do instead, when the modem is another tool's.
  void needOwnModem(std::string_view instead) const;

 private:
  Station(const StationOptions& options, const std::unique_lock<std::recursive_mutex>& held);

  std::optional<int> waitForEnd(handset::Millis timeout);
  /// Until an answer can be read, or never will; false when the time passed.
  bool waitForAnswer(handset::Millis timeout, Happenings* messages);

  StationOptions options_;
  handset::Folder folder_;
  handset::Modem modem_;
  bool modem_is_shared_ = false;
  std::optional<handset::Parent> process_;
};

}  // namespace tools
