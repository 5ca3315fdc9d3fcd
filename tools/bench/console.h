// What the tools print: records with their fields beside the raw bytes.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "handset/bytes.h"
#include "handset/timeout.h"
#include "tools/records/decode.h"

namespace tools {

/// Lets everything printed so far go out. Throws std::system_error when the reader has gone.
void flushOutput();

/// Whether standard output is a terminal that can do more than print line by line.
bool isCapableTerminal();

/// Prints a line on standard error, as far as there is anybody to read it.
void complain(const std::string& text);

enum class ColourWhen { automatic, always, never };

/// How a step of a scenario went.
enum class Outcome { good, wrong, notPlayed };
std::string_view outcomeName(Outcome outcome);

/// When something was, and how long it took, as far as that is known.
struct Moment {
  std::optional<handset::Instant> time;
  std::optional<handset::Instant> since;
};

/// Seconds since this tool began, to a millisecond.
double secondsSinceStart(handset::Instant time);

/// Milliseconds from one moment to another, to a tenth.
double tookMs(handset::Instant since, handset::Instant until);

/// Writes to standard output.
class Console {
 public:
  /// `automatic` is colour on a terminal only. With `times`, what is known to be of a moment begins with
  /// that, in seconds since the start.
  explicit Console(ColourWhen when, bool times = false);

  void section(std::string_view title) const;
  void step(std::string_view title) const;
  /// One record: a row for each field, its bytes on the left; in the end where it stops making sense.
  void record(std::string_view direction, const DecodedRecord& decoded, handset::ByteView bytes,
              const Moment& moment = {}) const;
  /// What crossed the modem link: its line, and one below for what became of it.
  void trace(const std::vector<std::string>& lines, std::optional<handset::Instant> time = {}) const;
  void note(std::string_view text, std::optional<handset::Instant> time = {}) const;
  /// A line of a log's story; one that is not good stands out.
  void happening(bool good, std::string_view line) const;
  /// A line of a list of steps.
  void outcome(size_t number, Outcome outcome, std::string_view title) const;

 private:
  [[nodiscard]] std::string_view paint(std::string_view escape) const { return colour_ ? escape : ""; }

  /// What a line begins with: its time, or blanks of the same width.
  [[nodiscard]] std::string margin(std::optional<handset::Instant> time = {}) const;

  bool colour_;
  bool times_;
};

}  // namespace tools
