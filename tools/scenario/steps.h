// The words that a scenario's steps are made of: what a step does, and what it expects. The format is these
// two tables; reading a word checks all of it, so that nothing wrong is found in the middle of a play.
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
  handset::Bytes bytes;
  DecodedRecord decoded;
  Moment moment;
};

/// A step while it is played: what it works with, what came, and what was not as expected.
struct Play {
  explicit Play(Station& at);

  Station& station;
  size_t log_mark = 0;      // where the log was when the step began
  size_t dropbox_mark = 0;  // how many entries there were
  std::optional<PlayedRecord> request;
  std::optional<PlayedRecord> answer;
  std::vector<PlayedRecord> messages;
  Happenings crossings;     // of the modem link, when they are recorded
  std::optional<int> exit;  // of the process that the step ended
  std::vector<std::string> wrong;
};

/// Something that a step does or looks at. Throws ProcessTrouble when the process is of no more use.
using Deed = std::function<void(Play&)>;

/// What is known of the steps up to the word that is being read.
struct Reading {
  bool running = false;  // the process
  // Of this step:
  handset::Bytes request;
  bool indicates = false;
  bool ends_process = false;
  int exit_expected = 0;
  std::vector<std::string> typed;  // the lines that do the same in the shell
};

struct StepWord {
  std::string_view name;
  std::string_view takes;
  std::string_view help;
  Deed (*read)(const Json& value, Reading& reading);  // throws UsageError
};

/// What a step can do; at most one of them.
std::span<const StepWord> actionWords();
/// What "expect" can hold.
std::span<const StepWord> expectationWords();

}  // namespace tools
