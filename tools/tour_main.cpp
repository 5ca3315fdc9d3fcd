#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <map>

#include "tools/tour.h"

namespace {

int run(int argc, char** argv) {
  CLI::App app{
      "Starts a simulated modem and qmi_kesext_hook in a handset folder of their own, sends a tour of "
      "requests\n"
      "and shows each request, answer and unsolicited message with its fields beside the raw bytes.\n"
      "The exit status is 0 when every answer was as it should be, else 1."};
  std::string executable = std::filesystem::read_symlink("/proc/self/exe").parent_path() / "qmi_kesext_hook";
  tools::ColourWhen colour = tools::ColourWhen::automatic;
  app.add_option("--executable", executable, "the process to show, instead of the one beside this tool")
      ->check(CLI::ExistingFile);
  app.add_option("--colour", colour, "auto (on a terminal only), always or never")
      ->transform(CLI::CheckedTransformer(
          std::map<std::string, tools::ColourWhen>{{"auto", tools::ColourWhen::automatic},
                                                   {"always", tools::ColourWhen::always},
                                                   {"never", tools::ColourWhen::never}}));
  CLI11_PARSE(app, argc, argv);
  return tools::runTour(executable, tools::Console(colour)) ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return run(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "the tour could not go on: %s\n", error.what());
    return 1;
  }
}
