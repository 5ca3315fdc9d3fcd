#include <fmt/format.h>
#include <unistd.h>

#include <csignal>
#include <memory>
#include <string>

#include "handset/line_reader.h"
#include "tools/bench/happening.h"
#include "tools/bench/modem_control.h"
#include "tools/bench/reference.h"
#include "tools/bench/station.h"
#include "tools/commands/commands.h"
#include "tools/commands/own_files.h"
#include "tools/text/usage_error.h"

namespace tools {

namespace {

/// How long a line of the input may wait.
constexpr handset::Millis kGlance{100};

/// Shows what has crossed the link since the last time.
void showCrossings(handset::Modem& modem, const Console& console) {
  modem.takeRequests();
  Happenings crossings;
  append(crossings, modem.takeCrossings());
  sortByTime(crossings);
  for (const Happening& crossing : crossings)
    show(console, crossing);
  flushOutput();
}

void obey(handset::Modem& modem, const std::string& line) {
  try {
    const std::vector<std::string> words = splitWords(line);
    if (words.empty() || words.front().starts_with('#')) return;
    modemOrder(words)(modem);
    fmt::print("    told     {}\n", line);
  } catch (const UsageError& error) {
    complain(error.what());
  }
}

/// Goes on when the input has ended; only an interruption is the end.
[[noreturn]] void serve(handset::Modem& modem, const Console& console) {
  handset::LineReader input(host::UniqueFd(dup(STDIN_FILENO)));
  size_t obeyed = 0;
  while (true) {
    for (const std::string& line : input.lines(obeyed)) {
      obey(modem, line);
      ++obeyed;
    }
    input.forget(obeyed);
    modem.waitForRequests(1, kGlance);
    showCrossings(modem, console);
  }
}

}  // namespace

void addModemCommand(CLI::App& tool, Common& common) {
  CLI::App* command = tool.add_subcommand(
      "modem", "Runs only the simulated modem, for a parent of your own, and shows what it is asked");
  auto root = std::make_shared<std::string>();
  auto times = std::make_shared<bool>();
  addShared(*command, {.root = root.get(), .times = times.get()});
  command->get_option("--root")->required();
  command->footer("Lines of the input tell the modem what to do; '#' begins a comment:\n" + modemReference() +
                  R"(
What it was told and what was written is kept in the folder, in modem.txt, until it is told reset.

Example, with a shell for a parent, which asks for the BSR timer:
  hookctl modem --root /tmp/handset &
  printf '\274\0\0\2\0\0\0\0\0\0\0\0\0\0\0\0\0\0' |
    HANDSET_ROOT=/tmp/handset )" +
                  find(kProcess).value_or(kProcess.name) +
                  R"( 0 4 5 0 4>/tmp/answers 5>/tmp/messages
  od -An -v -w24 -tx1 /tmp/answers | hookctl decode
  kill $!)");
  command->callback([&common, root, times] {
    // In the background of a terminal it is not to be stopped for reading, but to go on without its input.
    (void)std::signal(SIGTTIN, SIG_IGN);
    Station station({.root = *root});
    fmt::print("the modem listens in {}; Ctrl-C ends it\n", *root);
    flushOutput();
    station.modem().recordCrossings(true);
    serve(station.modem(), Console(common.colour, *times));
  });
}

}  // namespace tools
