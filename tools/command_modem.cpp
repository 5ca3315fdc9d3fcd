#include <fmt/format.h>
#include <poll.h>
#include <unistd.h>

#include <iostream>
#include <memory>
#include <string>

#include "handset/message_table.h"
#include "tools/commands.h"
#include "tools/modem_control.h"
#include "tools/reference.h"
#include "tools/station.h"
#include "tools/usage_error.h"

namespace tools {

namespace {

constexpr int kGlanceMs = 200;

/// Shows what the modem was asked since the last time.
void showRequests(handset::Modem& modem) {
  for (const handset::Received& request : modem.requests()) {
    const handset::MessageRow* row = handset::findMessage(request.service, request.id);
    fmt::print("{:<7} 0x{:04X} {:<32} {:5} bytes\n", handset::serviceName(request.service), request.id,
               row != nullptr ? row->name : "(unknown)", request.body.size());
  }
  modem.clearRequests();
  flushOutput();
}

/// Whether there is a line to read, or the end of the input.
bool inputWaits() {
  pollfd input{STDIN_FILENO, POLLIN, 0};
  return poll(&input, 1, kGlanceMs) > 0;
}

void serve(handset::Modem& modem) {
  bool input_ended = false;
  while (true) {
    showRequests(modem);
    if (input_ended) {
      poll(nullptr, 0, kGlanceMs);
      continue;
    }
    if (!inputWaits()) continue;
    std::string line;
    input_ended = !std::getline(std::cin, line);
    try {
      const std::vector<std::string> words = splitWords(line);
      if (!words.empty()) commandModem(modem, words);
    } catch (const UsageError& error) {
      fmt::print(stderr, "{}\n", error.what());
    }
  }
}

}  // namespace

void addModemCommand(CLI::App& tool, Common& common) {
  CLI::App* command = tool.add_subcommand("modem", "Runs only the simulated modem, for a parent of your own");
  auto root = std::make_shared<std::string>();
  command->add_option("--root", *root, "the handset folder; made when missing, and kept")->required();
  command->footer("Lines of the input tell the modem what to do:\n" + modemReference() +
                  "\nExample:\n  hookctl modem --root /tmp/handset &\n"
                  "  HANDSET_ROOT=/tmp/handset qmi_kesext_hook 3 4 5 0");
  command->callback([&common, root] {
    Station station({.executable = common.executable, .root = *root});
    fmt::print("the modem listens in {}; Ctrl-C ends it\n", *root);
    serve(station.modem());
  });
}

}  // namespace tools
