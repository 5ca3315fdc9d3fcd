// What is to hold of a play with a fault.
#pragma once

#include "faults/player.h"

namespace faults {

/// One play with one fault.
struct Point {
  size_t scenario = 0;
  size_t fault_class = 0;
  uint32_t call = 0;  // 0: none fails
  uint32_t strikes = 0;
};

/// Lines that the undisturbed play does not have.
Texts newLines(const Outcome& calm, const Outcome& outcome);

/// What must hold and did not. Nothing is wrong where the fault's call did not come.
Texts judge(const Outcome& calm, const Outcome& outcome, const Point& point);

}  // namespace faults
