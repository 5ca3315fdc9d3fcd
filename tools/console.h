// What the tools print: records with their fields beside the raw bytes.
#pragma once

#include <string>
#include <string_view>

#include "handset/bytes.h"
#include "tools/decode.h"

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

/// Writes to standard output.
class Console {
 public:
  /// `automatic` is colour on a terminal only.
  explicit Console(ColourWhen when);

  void section(std::string_view title) const;
  void step(std::string_view title) const;
  /// One record: a row for each field, its bytes on the left; in the end where it stops making sense.
  void record(std::string_view direction, const DecodedRecord& decoded, handset::ByteView bytes) const;
  void note(std::string_view text) const;
  /// Lines of text, each ending in a line feed, as they stand.
  void block(std::string_view lines) const;
  /// A line of a log's story; one that is not good stands out.
  void happening(bool good, std::string_view line) const;
  /// A line of a list of steps.
  void outcome(size_t number, Outcome outcome, std::string_view title) const;
  void verdict(bool good, std::string_view text) const;

 private:
  [[nodiscard]] std::string_view paint(std::string_view escape) const { return colour_ ? escape : ""; }

  bool colour_;
};

}  // namespace tools
