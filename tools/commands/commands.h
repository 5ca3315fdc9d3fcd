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

/// What all commands go by.
struct Common {
  std::string executable;  // the process, when it is not to be the tool's own
  ColourWhen colour = ColourWhen::automatic;
  int status = kStatusGood;

  /// The process to start. Throws UsageError when there is none.
  [[nodiscard]] std::string process() const;
};

/// Throws UsageError, with the nearest names, when there is no such command.
CLI::App& findCommand(const CLI::App& tool, const std::string& name);

/// Of an option that takes one of these names: stores the name's place among them.
CLI::Validator oneOf(std::vector<std::string> names);

/// The options that several commands have, and where they go; a command without one leaves it out.
struct SharedOptions {
  std::string* root = nullptr;
  int* instance = nullptr;
  bool* trace = nullptr;
  bool* times = nullptr;
};

void addShared(CLI::App& command, const SharedOptions& options);

void addTourCommand(CLI::App& tool, Common& common);
void addPlayCommand(CLI::App& tool, Common& common);
void addSendCommand(CLI::App& tool, Common& common);
void addDecodeCommand(CLI::App& tool, Common& common);
void addExplainCommand(CLI::App& tool, Common& common);
void addModemCommand(CLI::App& tool, Common& common);
void addWatchCommand(CLI::App& tool, Common& common);
void addShellCommand(CLI::App& tool, Common& common);
void addHelpCommand(CLI::App& tool, Common& common);
void addCompletionCommand(CLI::App& tool, Common& common);

}  // namespace tools
