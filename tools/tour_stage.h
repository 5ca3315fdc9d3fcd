// The steps of a tour: what is sent, what comes, and whether that is as it should be.
#pragma once

#include <string>
#include <string_view>

#include "handset/bytes.h"
#include "tools/console.h"
#include "tools/station.h"

namespace tools {

class TourStage {
 public:
  TourStage(Station& station, const Console& console) : station_(station), console_(console) {}

  /// Closes the request pipe: the process has to end with status 0.
  void end();

  void section(std::string_view title) const { console_.section(title); }
  void step(std::string_view title) const { console_.step(title); }
  void show(std::string_view text) const { console_.block(text); }
  /// Sends a request, shows it with its answer, and holds the answer against what it should be. Throws
  /// ProcessTrouble, like all that wait for the process, when nothing comes.
  void ask(std::string_view title, handset::ByteView request, handset::ByteView expected);
  /// The payload of the last answer to a CDMA request.
  [[nodiscard]] handset::ByteView lastPayload() const;
  /// Lets the modem send an indication, and holds the unsolicited message that follows against the expected.
  void indicate(std::string_view title, uint16_t id, handset::ByteView indication,
                handset::ByteView expected);
  /// Notes whether something else than an answer is as it should be.
  void check(bool good, std::string_view what);

  Station& station() { return station_; }
  handset::Modem& modem() { return station_.modem(); }
  handset::Folder& folder() { return station_.folder(); }
  [[nodiscard]] int steps() const { return steps_; }
  [[nodiscard]] int wrong() const { return wrong_; }

 private:
  void compare(handset::ByteView received, handset::ByteView expected);

  Station& station_;
  const Console& console_;
  handset::Bytes last_answer_;
  int steps_ = 0;
  int wrong_ = 0;
};

}  // namespace tools
