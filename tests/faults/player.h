// One play of a scenario by a process whose calls fail after a plan, and what can be seen of it.
#pragma once

#include <set>
#include <string>
#include <utility>
#include <vector>

#include "faults/fault_plan.h"
#include "faults/kept_logs.h"
#include "tools/scenario/scenario.h"

namespace faults {

/// Names and contents. Logs of different times share a name here.
using Files = std::multiset<std::pair<std::string, std::string>>;

/// What can be seen of a step from outside.
struct SeenStep {
  std::vector<handset::Bytes> answers;
  std::vector<handset::Bytes> messages;
  Texts asked;  // of the modem
  bool operator==(const SeenStep&) const = default;
};

/// What a process has open.
struct Held {
  size_t descriptors = 0;
  size_t threads = 0;
};

struct Outcome {
  std::vector<SeenStep> steps;
  std::vector<handset::ModemState> states;  // of the modem when each step began
  Texts words;                              // of each step
  Texts lines;
  std::vector<int> exits;
  Files files;  // in the end
  Held first;   // by the last process, once it served
  Held last;    // and before it ended
  size_t struck_step = 0;
  std::string struck_call;  // empty: the fault's call did not come
  std::string trouble;      // the process was of no more use
  Texts malformed;
  Texts lost;  // of the modem logs and packages
};

/// Plays a scenario. With the modem's states of an undisturbed play, the modem is brought back to them before
/// each step, so that only the process can make a later answer another one.
Outcome play(const tools::Scenario& scenario, const std::string& executable, FaultPlan& plan,
             const std::vector<handset::ModemState>* states);

}  // namespace faults
