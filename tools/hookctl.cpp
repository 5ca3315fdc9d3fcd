#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <exception>
#include <string>
#include <system_error>

#include "tools/bench/interruption.h"
#include "tools/commands/commands.h"
#include "tools/text/usage_error.h"

namespace {

using namespace tools;

constexpr const char* kDescription =
    R"(Works at a bench with qmi_kesext_hook: starts it beside a simulated modem in a handset folder, sends it
requests by name, shows what comes back in words, and makes the modem misbehave.)";

constexpr const char* kExamples = R"(Examples:
  hookctl tour                        everything at work, each answer held against what it should be
  hookctl send rde read 10017         one request; its answer field by field
  hookctl send --json bsr-timer set 30
  hookctl shell                       a prompt: requests, what the modem does, messages as they come
  hookctl play scenarios/provisioning.json
  hookctl decode < logcat.txt         the records in a log, field by field
  hookctl explain logcat.txt          what happened, request by request, and what went wrong

The status is 0 when all was as it should be, 1 when not, 2 when the command line was wrong. HOOKCTL_ROOT
stands for --root. hookctl help COMMAND tells more; hookctl send --list tells the requests.)";

int run(int argc, char** argv) {
  CLI::App tool{kDescription, "hookctl"};
  tool.footer(kExamples);
  tool.require_subcommand(1);
  tool.failure_message([](const CLI::App*, const CLI::Error& error) {
    return fmt::format("hookctl: {}; hookctl COMMAND --help tells what there is\n", error.what());
  });
  tool.fallthrough();
  tool.set_version_flag("--version", "hookctl " HOOKCTL_VERSION);
  Common common;
  tool.add_option("--executable", common.executable,
                  "the process, instead of the one beside this tool or in its " HOOKCTL_PROCESS_FOLDER)
      ->check(CLI::ExistingFile)
      ->option_text("FILE");
  tool.add_option("--colour", common.colour, "auto (on a terminal only), always or never")
      ->transform(oneOf({"auto", "always", "never"}))
      ->option_text("WHEN");
  for (const auto add :
       {addTourCommand, addShellCommand, addSendCommand, addDecodeCommand, addExplainCommand, addPlayCommand,
        addModemCommand, addWatchCommand, addHelpCommand, addCompletionCommand})
    add(tool, common);
  if (argc > 1 && *argv[1] != '-') findCommand(tool, argv[1]);
  try {
    tool.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return tool.exit(error) == 0 ? kStatusGood : kStatusUsage;
  }
  return common.status;
}

/// Whatever is opened later must not be taken for a standard stream that somebody closed.
void keepStandardDescriptors() {
  int descriptor = -1;
  while ((descriptor = open("/dev/null", O_RDWR | O_CLOEXEC)) >= 0 && descriptor <= STDERR_FILENO) {
    (void)fcntl(descriptor, F_SETFD, 0);
  }
  if (descriptor >= 0) close(descriptor);
}

}  // namespace

int main(int argc, char** argv) {
  keepStandardDescriptors();
  try {
    watchForInterruption();
    (void)std::signal(SIGPIPE, SIG_IGN);
    const int status = run(argc, argv);
    flushOutput();
    return status;
  } catch (const UsageError& error) {
    complain(std::string("hookctl: ") + error.what());
    return kStatusUsage;
  } catch (const std::system_error& error) {
    // Of a reader of the output that has gone, there is nobody to tell.
    if (error.code() != std::errc::broken_pipe) complain(std::string("hookctl: ") + error.what());
  } catch (const std::exception& error) {
    complain(std::string("hookctl: ") + error.what());
  }
  return kStatusWrong;
}
