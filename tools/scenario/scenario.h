// A scenario: a story of a handset in a file, step by step.
#pragma once

#include <string>
#include <vector>

#include "tools/scenario/steps.h"

namespace tools {

struct Step {
  std::string title;
  std::vector<Deed> deeds;
};

struct Scenario {
  std::string title;
  std::vector<Step> steps;
};

/// Reads and checks a whole file. Throws UsageError that tells the place and what would be right.
Scenario readScenario(const std::string& path);

}  // namespace tools
