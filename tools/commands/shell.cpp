#include <fmt/format.h>
#include <unistd.h>

#include <memory>
#include <optional>
#include <string>

#include "tools/bench/station.h"
#include "tools/commands/commands.h"
#include "tools/shell/line_editor.h"
#include "tools/shell/shell.h"
#include "tools/text/input_lines.h"

namespace tools {

namespace {

struct ShellOptions {
  std::string root;
  int instance = 0;
  bool times = false;
  bool trace = false;
  std::string record;
};

int converse(Station& station, const Console& console, const ShellOptions& options) {
  constexpr size_t kLineMax = size_t{1024} * 1024;  // characters
  const bool at_terminal = isatty(STDIN_FILENO) == 1 && isatty(STDOUT_FILENO) == 1;
  Shell shell(station, console, at_terminal);
  if (options.trace) shell.trace(true);
  if (!options.record.empty()) shell.record(options.record, options.instance);
  InputLines piped(STDIN_FILENO, [&shell] { shell.news().waitForInput({}); });
  std::optional<LineEditor> typed;
  if (at_terminal) {
    fmt::print("process {} serves requests in {}; help tells what to type, Ctrl-D ends\n",
               station.process().pid(), station.folder().root());
    typed.emplace([&shell](const Interlude& interlude) { return shell.news().waitForInput(interlude); },
                  [syntax = Shell::syntax()](std::string_view line) { return complete(syntax, line); });
  }
  std::string line;
  while ((typed ? typed->next(line) : piped.next(line, kLineMax)) && shell.run(line)) {
  }
  typed.reset();
  shell.end();
  return shell.troubled() && !at_terminal ? kStatusWrong : kStatusGood;
}

}  // namespace

void addShellCommand(CLI::App& tool, Common& common) {
  CLI::App* command =
      tool.add_subcommand("shell", "A prompt: requests by name, what the modem does, messages as they come");
  auto options = std::make_shared<ShellOptions>();
  addShared(*command, {&options->root, &options->instance, &options->trace, &options->times});
  command
      ->add_option("--record", options->record,
                   "writes the session to a file, as a scenario that hookctl play plays")
      ->option_text("FILE");
  command->footer(Shell::reference() + R"(
Unsolicited messages are shown when they come, above the line that is being typed, and so is
the end of a process that dies.

Without a terminal, lines are shown as if they had been typed, and '#' begins a comment. What is
wrong is reported on standard error with the line's number, and the status is then 1. What the
modem has indicated is waited for before the process ends.

A recorded session is a scenario of what was asked and told; it expects the answers, the messages
and what the modem was asked. A comment is the title of the step behind it.

Examples:
  hookctl shell
    hook> bsr-timer set 30
    hook> modem fail bsr-timer-read 90
    hook> modem indicate carrier-value 7
    hook> log since
  printf '%s\n' 'modem indicate carrier-value 7' | hookctl shell
  hookctl shell --record FILE; hookctl play FILE)");
  command->callback([&common, options] {
    Station station({.executable = common.process(),
                     .root = options->root,
                     .instance_id = options->instance,
                     .share_modem = true});
    if (!options->record.empty()) station.needOwnModem("a session with it cannot be recorded");
    station.start();
    common.status = converse(station, Console(common.colour, options->times), *options);
  });
}

}  // namespace tools
