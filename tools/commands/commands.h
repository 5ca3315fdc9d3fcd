// The commands of hookctl: each adds itself to the command line, and stores its exit status when it ran.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "tools/bench/console.h"

namespace tools {

inline constexpr int kStatusGood = 0;
inline constexpr int kStatusWrong = 1;
inline constexpr int kStatusUsage = 2;

inline constexpr const char* kTimesHelp = "what is shown begins with its time: seconds since the start";

inline constexpr const char* kTraceHelp = "also what the modem is asked and answers, and what it indicates";

/// What all commands share.
struct Common {
  std::string executable;  // the process
  ColourWhen colour = ColourWhen::automatic;
  int status = kStatusGood;
};

/// Of an option that takes one of these names: stores the name's place among them.
CLI::Validator oneOf(std::vector<std::string> names);

void addTourCommand(CLI::App& tool, Common& common);
void addPlayCommand(CLI::App& tool, Common& common);
void addSendCommand(CLI::App& tool, Common& common);
void addDecodeCommand(CLI::App& tool, Common& common);
void addExplainCommand(CLI::App& tool, Common& common);
void addModemCommand(CLI::App& tool, Common& common);
void addWatchCommand(CLI::App& tool, Common& common);
void addShellCommand(CLI::App& tool, Common& common);

}  // namespace tools
