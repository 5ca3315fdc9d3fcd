#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "tools/bench/record_json.h"
#include "tools/commands/commands.h"
#include "tools/commands/own_files.h"
#include "tools/scenario/scenario.h"
#include "tools/text/usage_error.h"

namespace tools {

namespace {

namespace fs = std::filesystem;

struct PlayOptions {
  std::vector<std::string> paths;
  std::string root;
  bool json = false;
  bool show = false;
  bool times = false;
  bool trace = false;
};

/// Does a step. False when the process is of no more use.
bool doStep(const Step& step, Play& play) {
  try {
    for (const Deed& deed : step.deeds)
      deed(play);
    if (play.exit.value_or(step.exit_expected) != step.exit_expected)
      play.wrong.push_back(
          fmt::format("exit: expected {}, but {}", step.exit_expected, describeEnd(*play.exit)));
  } catch (const ProcessTrouble& trouble) {
    play.wrong.emplace_back(trouble.what());
    return false;
  } catch (const std::exception& error) {
    play.wrong.emplace_back(error.what());
  }
  return true;
}

Json describe(Outcome outcome, size_t number, const Step& step, const Play& play, bool times) {
  Json result{
      {"step", number}, {"title", step.title}, {"result", outcomeName(outcome)}, {"wrong", play.wrong}};
  for (const PlayedRecord& record : play.records) {
    const Json json = toJson(record.decoded, record.bytes, record.moment, times);
    if (record.direction == "message")
      result["messages"].push_back(json);
    else
      result[std::string(record.direction)] = json;
  }
  for (const Happening& happening : play.crossings)
    addHappening(result, happening, times);
  return result;
}

void show(const Console& console, Outcome outcome, size_t number, const Step& step, const Play& play,
          bool whole) {
  console.outcome(number, outcome, step.title);
  for (const std::string& text : play.wrong)
    console.note(text);
  for (const std::string& line : whole ? step.typed : std::vector<std::string>())
    console.note("hook> " + line);
  for (const Happening& happening : play.crossings)
    show(console, happening);
  for (const PlayedRecord& record : whole ? play.records : std::vector<PlayedRecord>())
    console.record(record.direction, record.decoded, record.bytes, record.moment);
}

/// Plays a scenario and shows each step, or only gives the steps' results for scripts.
Json play(const Scenario& scenario, const PlayOptions& options, const Common& common,
          const Console& console) {
  Station station({.executable = common.process(), .root = options.root, .instance_id = scenario.instance});
  station.modem().recordCrossings(options.trace);
  if (!options.json) console.section(scenario.title);
  Json results = Json::array();
  bool goes_on = true;
  for (const Step& step : scenario.steps) {
    Play played(station);
    Outcome outcome = Outcome::notPlayed;
    if (goes_on) {
      goes_on = doStep(step, played);
      outcome = played.wrong.empty() ? Outcome::good : Outcome::wrong;
    }
    append(played.crossings, station.modem().takeCrossings());
    sortByTime(played.crossings);
    const size_t number = results.size() + 1;
    results.push_back(describe(outcome, number, step, played, options.times));
    if (options.show && !options.json) fmt::print("\n");
    if (!options.json)
      show(console, outcome, number, step, played, options.show || outcome == Outcome::wrong);
    flushOutput();
  }
  return results;
}

/// Plays all and tells how it went; the exit status.
int playAll(const PlayOptions& options, const Common& common) {
  const Console console(common.colour, options.times);
  std::vector<Scenario> scenarios;
  for (const std::string& file : scenarioFiles(options.paths))
    scenarios.push_back(readScenario(file));
  Json all = Json::array();
  size_t steps = 0;
  size_t good = 0;
  std::string wrong;
  for (const Scenario& scenario : scenarios) {
    const Json results = play(scenario, options, common, console);
    const auto is_good = [](const Json& step) { return step.at("result") == outcomeName(Outcome::good); };
    const auto good_here = static_cast<size_t>(std::count_if(results.begin(), results.end(), is_good));
    if (good_here < results.size()) wrong += fmt::format("    not as expected: {}\n", scenario.file);
    steps += results.size();
    good += good_here;
    all.push_back({{"scenario", scenario.title}, {"file", scenario.file}, {"steps", results}});
  }
  const bool one_file = options.paths.size() == 1 && !fs::is_directory(options.paths.front());
  if (options.json) {
    printJson(one_file ? all.front().at("steps") : all);
  } else {
    console.section(fmt::format("{} of {} steps as expected", good, steps));
    fmt::print("{}", one_file ? "" : wrong);
  }
  return wrong.empty() ? kStatusGood : kStatusWrong;
}

}  // namespace

void addPlayCommand(CLI::App& tool, Common& common) {
  CLI::App* command =
      tool.add_subcommand("play", "Plays scenarios: files that tell what is done and what is expected");
  auto options = std::make_shared<PlayOptions>();
  command
      ->add_option("file", options->paths,
                   "scenarios: JSON files, or folders with such files, which are played by name")
      ->required();
  command->add_flag("--show", options->show,
                    "also each record, and the line that does the same in the shell");
  addShared(*command, {.root = &options->root, .trace = &options->trace, .times = &options->times});
  command->add_flag("--json", options->json,
                    "for scripts: an array of the steps' results; of several files or a folder, an array of "
                    "{\"scenario\", \"file\",\n\"steps\"}");
  command->footer(scenarioFormat() + R"(
Each file has a fresh handset, unless --root names one for all. All files are checked before anything is started.
The status is 0 when all steps were as expected, 1 when one was not, 2 when a file is wrong.

Example of a step:
  {"title": "Read it back", "request": "nam read",
   "expect": {"status": "success", "fields": {"mdn": "5551234560", "homeSid": 4183}}}

Examples:
  hookctl play scenarios/provisioning.json
  hookctl play --show scenarios/tour)");
  command->callback([&common, options] { common.status = playAll(*options, common); });
}

void addTourCommand(CLI::App& tool, Common& common) {
  CLI::App* command = tool.add_subcommand(
      "tour", "Plays a tour of requests and indications, each held against what should come of it");
  command->footer(
      R"(The tour is scenarios, played with each record shown, as by hookctl play --show: those in scenarios/tour beside this
tool, or in )" HOOKCTL_DATA_FOLDER R"(/scenarios/tour from there. The lines behind hook> can be typed
in hookctl shell. The status is 1 when something was not as expected.)");
  command->callback([&common] { common.status = playAll({.paths = {need(kTour)}, .show = true}, common); });
}

}  // namespace tools
