#include <fmt/format.h>
#include <unistd.h>

#include <csignal>
#include <memory>
#include <string>

#include "handset/line_reader.h"
#include "handset/message_table.h"
#include "tools/commands.h"
#include "tools/modem_control.h"
#include "tools/reference.h"
#include "tools/station.h"
#include "tools/usage_error.h"

namespace tools {

namespace {

/// How long a line of the input may wait.
constexpr handset::Millis kGlance{100};

/// Shows what the modem was asked since the last time.
void showRequests(handset::Modem& modem) {
  for (const handset::Received& request : modem.takeRequests()) {
    const handset::MessageRow* row = handset::findMessage(request.service, request.id);
    fmt::print("{:<7} 0x{:04X} {:<32} {:5} bytes\n", handset::serviceName(request.service), request.id,
               row != nullptr ? row->name : "(unknown)", request.body.size());
  }
  flushOutput();
}

void obey(handset::Modem& modem, const std::string& line) {
  try {
    const std::vector<std::string> words = splitWords(line);
    if (words.empty()) return;
    commandModem(modem, words);
    fmt::print("told    {}\n", line);
  } catch (const UsageError& error) {
    complain(error.what());
  }
}

/// Goes on when the input has ended; only an interruption is the end.
[[noreturn]] void serve(handset::Modem& modem) {
  const handset::LineReader input(host::UniqueFd(dup(STDIN_FILENO)));
  size_t obeyed = 0;
  while (true) {
    for (const std::string& line : input.lines(obeyed)) {
      obey(modem, line);
      ++obeyed;
    }
    modem.waitForRequests(1, kGlance);
    showRequests(modem);
  }
}

}  // namespace

void addModemCommand(CLI::App& tool, Common& common) {
  CLI::App* command = tool.add_subcommand("modem", "Runs only the simulated modem, for a parent of your own");
  auto root = std::make_shared<std::string>();
  command->add_option("--root", *root, "the handset folder; made when missing, and kept")
      ->required()
      ->option_text("FOLDER");
  command->footer("Lines of the input tell the modem what to do:\n" + modemReference() +
                  "\nExample:\n  hookctl modem --root /tmp/handset &\n"
                  "  HANDSET_ROOT=/tmp/handset qmi_kesext_hook 3 4 5 0");
  command->callback([&common, root] {
    // In the background of a terminal it is not to be stopped for reading, but to go on without its input.
    (void)std::signal(SIGTTIN, SIG_IGN);
    Station station({.executable = common.executable, .root = *root});
    fmt::print("the modem listens in {}; Ctrl-C ends it\n", *root);
    flushOutput();
    serve(station.modem());
  });
}

}  // namespace tools
