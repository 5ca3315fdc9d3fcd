// A scenario: a story of a handset in a file, step by step.
#pragma once

#include <string>
#include <vector>

#include "tools/scenario/steps.h"

namespace tools {

struct Step {
  std::string title;
  std::vector<Deed> deeds;
  std::vector<std::string> typed;  // the lines that do the same in the shell
};

struct Scenario {
  std::string file;
  std::string title;  // the file's name when it has none
  std::vector<Step> steps;
};

/// Reads and checks a whole file. Throws UsageError that tells the place and what would be right.
Scenario readScenario(const std::string& path);

/// Files as they are, and of folders all that end in .json, also in folders in them, by name. Throws
/// UsageError when a folder has none.
std::vector<std::string> scenarioFiles(const std::vector<std::string>& paths);

/// What a file is made of, for a person who writes one.
std::string scenarioFormat();

}  // namespace tools
