// Where the tour's steps take place: a handset folder, its modem, and the process.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "handset/bytes.h"
#include "handset/folder.h"
#include "handset/modem.h"
#include "handset/parent.h"
#include "tools/console.h"

namespace tools {

class TourStage {
 public:
  TourStage(std::string executable, const Console& console);

  /// Starts the process. False when it did not come to serve requests; its last log lines are then shown.
  bool start();
  /// Closes the request pipe: the process has to end with status 0.
  void end();

  void section(std::string_view title) const { console_.section(title); }
  /// Sends a request, shows it with its answer, and holds the answer against what it should be.
  void ask(std::string_view title, handset::ByteView request, handset::ByteView expected);
  /// The payload of the last answer to a CDMA request.
  [[nodiscard]] handset::ByteView lastPayload() const;
  void step(std::string_view title) const { console_.step(title); }
  void show(std::string_view text) const { console_.block(text); }
  /// Lets the modem send an indication, and holds the unsolicited message that follows against the expected.
  void indicate(std::string_view title, uint16_t id, handset::ByteView indication,
                handset::ByteView expected);
  /// Waits until the process has handled every indication that was sent before: a test notification comes
  /// behind them. False when it does not come.
  [[nodiscard]] bool settle();
  /// Notes whether something else than an answer is as it should be.
  void check(bool good, std::string_view what);

  handset::Modem& modem() { return modem_; }
  handset::Folder& folder() { return folder_; }
  [[nodiscard]] int steps() const { return steps_; }
  [[nodiscard]] int wrong() const { return wrong_; }

 private:
  void compare(const std::optional<handset::Bytes>& received, handset::ByteView expected);
  void showLastLogLines() const;

  std::string executable_;
  const Console& console_;
  handset::Folder folder_;
  handset::Modem modem_;
  std::optional<handset::Parent> parent_;
  handset::Bytes last_answer_;
  int steps_ = 0;
  int wrong_ = 0;
};

}  // namespace tools
