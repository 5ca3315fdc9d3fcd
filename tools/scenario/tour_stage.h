// The steps of a tour: what a person would type for them, what comes, and whether that is as it should be.
#pragma once

#include <cstdint>
#include <string_view>

#include "handset/bytes.h"
#include "tools/bench/console.h"
#include "tools/bench/station.h"

namespace tools {

/// Every step shows its words as a line that `hookctl shell` takes.
class TourStage {
 public:
  TourStage(Station& station, const Console& console) : station_(station), console_(console) {}

  /// Closes the request pipe: the process has to end with status 0.
  void end();

  void section(std::string_view title) const { console_.section(title); }
  void step(std::string_view title) const { console_.step(title); }
  void show(std::string_view text) const { console_.block(text); }
  /// Tells the modem something.
  void tell(std::string_view words);
  /// Sends a request, shows it with its answer, and holds the answer against what it should be. Throws
  /// ProcessTrouble, like all that wait for the process, when nothing comes.
  void ask(std::string_view title, std::string_view words, handset::ByteView expected);
  /// The payload of the last answer to a CDMA request.
  [[nodiscard]] handset::ByteView lastPayload() const;
  /// Lets the modem send an indication, and holds the unsolicited message that follows against the expected.
  void indicate(std::string_view title, std::string_view words, handset::ByteView expected);
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

/// The answer to a CDMA request with the code 000000, where the answer's header gives the code back.
handset::Bytes codedResponse(uint32_t id, uint32_t status, handset::ByteView payload = {});

}  // namespace tools
