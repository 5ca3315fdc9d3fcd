#include <fmt/format.h>
#include <unistd.h>

#include <memory>
#include <optional>
#include <string>

#include "tools/bench/station.h"
#include "tools/commands/commands.h"
#include "tools/shell/line_editor.h"
#include "tools/shell/shell.h"

namespace tools {

namespace {

struct ShellOptions {
  std::string root;
  int instance = 0;
  bool times = false;
  bool trace = false;
};

std::unique_ptr<LineSource> linesFor(Shell& shell, bool prompts) {
  const WaitForInput wait = [&shell](const Interlude& interlude) {
    shell.news().waitToRead(STDIN_FILENO, interlude);
  };
  if (!prompts) return std::make_unique<PlainLines>(wait);
  return std::make_unique<LineEditor>(
      "hook> ", wait, [syntax = Shell::syntax()](std::string_view line) { return complete(syntax, line); });
}

int converse(Station& station, const Console& console, bool trace) {
  const bool prompts = isatty(STDIN_FILENO) == 1 && isatty(STDOUT_FILENO) == 1;
  Shell shell(station, console);
  if (trace) shell.trace(true);
  if (prompts)
    fmt::print("process {} serves requests in {}; help tells what to type, Ctrl-D ends\n",
               station.process().pid(), station.folder().root());
  else
    shell.countLines();
  {
    const std::unique_ptr<LineSource> lines = linesFor(shell, prompts);
    std::optional<std::string> line;
    do {
      line = lines->next();
    } while (line && shell.run(*line));
    if (!line && prompts) fmt::print("\n");
  }
  shell.end();
  return shell.troubled() && !prompts ? kStatusWrong : kStatusGood;
}

}  // namespace

void addShellCommand(CLI::App& tool, Common& common) {
  CLI::App* command =
      tool.add_subcommand("shell", "A prompt: requests by name, what the modem does, messages as they come");
  auto options = std::make_shared<ShellOptions>();
  addShared(*command, {&options->root, &options->instance, &options->trace, &options->times});
  command->footer(
      "A line is a request by name, with its arguments in order or as FIELD=VALUE, or one of\n" +
      Shell::commandReference() +
      "\nUnsolicited messages are shown when they come, decoded, above the line that is being typed. Tab\n"
      "completes names and arguments; the arrow keys bring earlier lines back. A process that dies is told "
      "of\n"
      "at once. Ctrl-D ends the session; Ctrl-C does so at any moment, and nothing is left running.\n"
      "\n"
      "Without a terminal, lines are read without a prompt; '#' begins a comment. A line that is wrong is\n"
      "reported on standard error with its number, and the status is then 1 in the end.\n"
      "\n"
      "Examples:\n"
      "  hookctl shell\n"
      "    hook> bsr-timer set 30\n"
      "    hook> modem fail bsr-timer-read 90\n"
      "    hook> modem indicate carrier-value 7\n"
      "    hook> log since\n"
      "  printf '%s\\n' 'modem indicate carrier-value 7' wait | hookctl shell");
  command->callback([&common, options] {
    Station station({.executable = common.executable,
                     .root = options->root,
                     .instance_id = options->instance,
                     .share_modem = true});
    station.start();
    common.status = converse(station, Console(common.colour, options->times), options->trace);
  });
}

}  // namespace tools
