#include "tools/scenario/tour.h"
#include "tools/commands/commands.h"

namespace tools {

void addTourCommand(CLI::App& tool, Common& common) {
  CLI::App* command = tool.add_subcommand(
      "tour", "Sends a tour of requests and indications, and holds each answer against what it should be");
  command->footer(
      "Each record is shown with its fields beside the raw bytes. The status is 1 when an answer was not as "
      "it should be;\nthe first bytes that differ are then shown.");
  command->callback([&common] {
    Station station({.executable = common.executable});
    common.status = runTour(station, Console(common.colour)) ? kStatusGood : kStatusWrong;
  });
}

}  // namespace tools
