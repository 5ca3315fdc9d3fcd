#include <fmt/format.h>

#include <array>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "tools/commands/commands.h"
#include "tools/records/encode.h"
#include "tools/shell/completion.h"
#include "tools/text/usage_error.h"
#include "tools/text/words.h"

namespace tools {

namespace {

constexpr std::array<const char*, 3> kShells{"bash", "zsh", "fish"};

/// Each asks the tool for what the line may go on with; where that is nothing, file names are offered.
/// zsh's is sourced, or installed: its first Tab then runs the whole file as the function.
constexpr std::array<const char*, 3> kScripts{
    R"sh(_hookctl() {
  local IFS=$'\n'
  COMPREPLY=($("$1" completion --words "${COMP_LINE:0:COMP_POINT}" 2>/dev/null))
  [[ ${#COMPREPLY[@]} == 1 && ${COMPREPLY[0]} == *= ]] && compopt -o nospace
  return 0
}
complete -o default -F _hookctl hookctl
)sh",
    R"sh(#compdef hookctl
_hookctl() {
  local -a found
  found=(${(f)"$(${(Q)words[1]} completion --words "${(j: :)words[1,CURRENT-1]} $PREFIX" 2>/dev/null)"})
  (( $#found )) || { _files; return; }
  compadd -S '' -- ${(M)found:#*=}
  compadd -- ${found:#*=}
}
if [[ $funcstack[1] == _hookctl ]]; then _hookctl; else compdef _hookctl hookctl; fi
)sh",
    R"sh(complete -c hookctl -a '(hookctl completion --words (commandline -cp | string collect) 2>/dev/null)'
)sh"};

struct CompletionOptions {
  std::optional<size_t> shell;
  std::optional<std::string> line;
};

/// A command line up to the cursor.
struct CommandLine {
  std::vector<std::string> before;  // the words before the one that is being typed
  std::string word;
};

CommandLine read(const std::string& line) {
  CommandLine read;
  // A quote may still be open.
  for (const char* end : {"", "'", "\""}) {
    try {
      read.before = splitWords(line + end);
    } catch (const UsageError&) {
      continue;
    }
    const bool begun = *end != 0 || (!line.empty() && line.back() != ' ');
    if (!begun || read.before.empty()) break;
    read.word = read.before.back();
    read.before.pop_back();
    break;
  }
  return read;
}

/// What the modem is told is one word for a command line, and several for it.
std::vector<std::string> modemLines(const std::string& begun) {
  constexpr Syntax kModem[] = {{"modem", "COMMAND"}};
  const std::string done = begun.substr(0, begun.find_last_of(' ') + 1);
  std::vector<std::string> words = splitWords("modem " + done);
  std::vector<std::string> lines;
  for (const std::string& word : candidates(kModem, words, begun.substr(done.size())))
    lines.push_back(done + word);
  return lines;
}

std::vector<std::string> candidatesFor(const CLI::App& tool, const CommandLine& line) {
  const CLI::App* command = &tool;
  const CLI::Option* valued = nullptr;  // the option whose value comes next
  std::vector<std::string> rest;
  for (size_t i = 1; i < line.before.size(); ++i) {
    const std::string& word = line.before[i];
    const CLI::Option* option = command->get_option_no_throw(word);
    if (option == nullptr) option = tool.get_option_no_throw(word);
    const bool is_value = valued != nullptr;
    valued = !is_value && option != nullptr && option->get_items_expected_max() > 0 ? option : nullptr;
    if (is_value || option != nullptr) continue;
    if (command == &tool)
      command = &findCommand(tool, word);
    else
      rest.push_back(word);
  }
  if (valued != nullptr) return valued->get_name() == "--modem" ? modemLines(line.word) : rest = {};
  constexpr Syntax kSend[] = {{kForce, "REQUEST"}};
  if (command->get_name() == "send" && !line.word.starts_with('-')) return candidates(kSend, rest, line.word);
  std::set<std::string> found;
  const auto offer = [&](const std::string& name) {
    if (name.starts_with(line.word)) found.insert(name);
  };
  if (line.word.starts_with('-')) {
    for (const CLI::App* app : {command, &tool})
      for (const CLI::Option* option : app->get_options())
        if (option->get_name().starts_with("--")) offer(option->get_name());
  } else if (command->get_name() == "completion") {
    for (const char* shell : kShells)
      offer(shell);
  } else if (command == &tool || (command->get_name() == "help" && rest.empty())) {
    for (const CLI::App* each : tool.get_subcommands({}))
      offer(each->get_name());
  }
  return {found.begin(), found.end()};
}

}  // namespace

void addCompletionCommand(CLI::App& tool, Common& /*common*/) {
  CLI::App* command = tool.add_subcommand(
      "completion", "Prints a script for bash, zsh or fish, which then completes hookctl's command lines");
  auto options = std::make_shared<CompletionOptions>();
  command->add_option("shell", options->shell, "bash, zsh or fish")
      ->option_text("SHELL")
      ->transform(oneOf({kShells.begin(), kShells.end()}));
  command->add_option("--words", options->line, "what this line may go on with")->group("");
  command->footer(R"(Commands, options, requests with their arguments, and what --modem takes are completed.

Examples:
  source <(hookctl completion bash)
  hookctl completion fish > ~/.config/fish/completions/hookctl.fish

An installed hookctl has brought them along.)");
  command->callback([&tool, options] {
    if (options->line)
      for (const std::string& word : candidatesFor(tool, read(*options->line)))
        fmt::print("{}\n", word);
    else if (options->shell)
      fmt::print("{}", kScripts[*options->shell]);
    else
      throw UsageError("completion takes bash, zsh or fish");
  });
}

}  // namespace tools
