// A scenario: a story of a handset in a file, step by step, and the words that its steps are made of: what a
// step does, and what it expects. The format is the two tables of these; reading a word checks all of it, so
// that nothing wrong is found in the middle of a play.
#pragma once

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tools/bench/happening.h"
#include "tools/bench/station.h"
#include "tools/records/decode.h"
#include "tools/scenario/values.h"

namespace tools {

struct PlayedRecord {
  std::string_view direction;  // request, answer or message
  handset::Bytes bytes;
  DecodedRecord decoded;
  Moment moment;
};

/// A step while it is played: what it works with, what came, and what was not as expected.
struct Play {
  explicit Play(Station& at);
  /// Of the request, which comes before it.
  [[nodiscard]] const PlayedRecord& answer() const { return records.at(1); }

  Station& station;
  size_t log_mark = 0;      // where the log was when the step began
  size_t dropbox_mark = 0;  // how many entries there were
  std::vector<PlayedRecord> records;
  Happenings crossings;     // of the modem link, when they are recorded
  std::optional<int> exit;  // of the process that the step ended
  std::vector<std::string> wrong;
};

/// Something that a step does or looks at. Throws ProcessTrouble when the process is of no more use.
using Deed = std::function<void(Play&)>;

struct Step {
  std::string title;
  std::vector<Deed> deeds;
  std::vector<std::string> typed;  // the lines that do the same in the shell
  int exit_expected = 0;           // of a process that ends
};

/// What is known of the steps up to the word that is being read.
struct Reading {
  bool running = false;  // the process
  // Of this step:
  Step step;
  handset::Bytes request;
  bool indicates = false;
  bool ends_process = false;
};

struct StepWord {
  std::string_view name;
  std::string_view takes;
  std::string_view help;
  Deed (*read)(const Json& value, Reading& reading);  // throws UsageError
};

struct Scenario {
  std::string file;
  std::string title;  // the file's name when it has none
  int instance = 0;   // of the process
  std::vector<Step> steps;
};

/// Reads and checks a whole file. Throws UsageError that tells the place and what would be right.
Scenario readScenario(const std::string& path);

/// Files as they are, and of folders all that end in .json, also in folders in them, by name. Throws
/// UsageError when a folder has none.
std::vector<std::string> scenarioFiles(const std::vector<std::string>& paths);

/// What a file is made of, for a person who writes one.
std::string scenarioFormat();

/// What a step can do; at most one of them.
std::span<const StepWord> actionWords();
/// What "expect" can hold.
std::span<const StepWord> expectationWords();

}  // namespace tools
