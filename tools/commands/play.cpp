#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "tools/bench/record_json.h"
#include "tools/commands/commands.h"
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
  } catch (const ProcessTrouble& trouble) {
    play.wrong.emplace_back(trouble.what());
    return false;
  } catch (const std::exception& error) {
    play.wrong.emplace_back(error.what());
  }
  return true;
}

Json describeStep(size_t number, const Step& step, const Play& play, bool times) {
  const auto record = [times](const PlayedRecord& played) {
    Json json = toJson(played.decoded, played.bytes);
    addMoment(json, played.moment, times);
    return json;
  };
  Json result{{"step", number},
              {"title", step.title},
              {"result", outcomeName(play.wrong.empty() ? Outcome::good : Outcome::wrong)},
              {"wrong", play.wrong}};
  if (play.request) result["request"] = record(*play.request);
  if (play.answer) result["answer"] = record(*play.answer);
  for (const PlayedRecord& message : play.messages)
    result["messages"].push_back(record(message));
  for (const Happening& happening : play.crossings)
    addHappening(result, happening, times);
  return result;
}

/// Plays scenarios and shows each step, or keeps the results for scripts.
class Player {
 public:
  Player(const PlayOptions& options, const Common& common)
      : options_(options), common_(common), console_(common.colour, options.times) {}

  /// Whether all steps were as expected.
  bool play(const std::vector<Scenario>& scenarios);

 private:
  /// The steps' results.
  Json play(const Scenario& scenario);
  void show(size_t number, const Step& step, const Play& play) const;

  const PlayOptions& options_;
  const Common& common_;
  const Console console_;
  size_t steps_ = 0;
  size_t good_ = 0;
};

void Player::show(size_t number, const Step& step, const Play& play) const {
  if (options_.show) fmt::print("\n");
  console_.outcome(number, play.wrong.empty() ? Outcome::good : Outcome::wrong, step.title);
  for (const std::string& text : play.wrong)
    console_.note(text);
  const bool all = options_.show || !play.wrong.empty();
  for (const std::string& line : all ? step.typed : std::vector<std::string>())
    console_.note("hook> " + line);
  for (const Happening& happening : play.crossings)
    tools::show(console_, happening);
  if (!all) return;
  const auto showRecord = [this](std::string_view direction, const PlayedRecord& record) {
    console_.record(direction, record.decoded, record.bytes, record.moment);
  };
  if (play.request) showRecord("request", *play.request);
  if (play.answer) showRecord("answer", *play.answer);
  for (const PlayedRecord& message : play.messages)
    showRecord("message", message);
}

Json Player::play(const Scenario& scenario) {
  Station station({.executable = common_.executable, .root = options_.root});
  station.modem().recordCrossings(options_.trace);
  if (!options_.json) console_.section(scenario.title);
  Json results = Json::array();
  bool goes_on = true;
  for (const Step& step : scenario.steps) {
    const size_t number = results.size() + 1;
    if (!goes_on) {
      results.push_back(
          {{"step", number}, {"title", step.title}, {"result", outcomeName(Outcome::notPlayed)}});
      if (!options_.json) console_.outcome(number, Outcome::notPlayed, step.title);
      continue;
    }
    Play played(station);
    goes_on = doStep(step, played);
    append(played.crossings, station.modem().takeCrossings());
    sortByTime(played.crossings);
    if (played.wrong.empty()) ++good_;
    results.push_back(describeStep(number, step, played, options_.times));
    if (!options_.json) show(number, step, played);
    flushOutput();
  }
  steps_ += results.size();
  return results;
}

bool Player::play(const std::vector<Scenario>& scenarios) {
  Json all = Json::array();
  std::vector<std::string> wrong;
  for (const Scenario& scenario : scenarios) {
    const size_t missing = steps_ - good_;
    Json steps = play(scenario);
    if (steps_ - good_ > missing) wrong.push_back(scenario.file);
    all.push_back({{"scenario", scenario.title}, {"file", scenario.file}, {"steps", std::move(steps)}});
  }
  if (options_.json) {
    const bool one_file = options_.paths.size() == 1 && !fs::is_directory(options_.paths.front());
    printJson(one_file ? all.front().at("steps") : all);
    return wrong.empty();
  }
  console_.section(fmt::format("{} of {} steps as expected", good_, steps_));
  for (const std::string& file : scenarios.size() > 1 ? wrong : std::vector<std::string>())
    console_.note("not as expected: " + file);
  return wrong.empty();
}

void run(Common& common, const PlayOptions& options) {
  std::vector<Scenario> scenarios;
  for (const std::string& file : scenarioFiles(options.paths))
    scenarios.push_back(readScenario(file));
  common.status = Player(options, common).play(scenarios) ? kStatusGood : kStatusWrong;
}

/// The tour's scenarios: where they are installed, or in the source tree.
std::string tourFolder() {
  const fs::path program = fs::read_symlink("/proc/self/exe").parent_path();
  const fs::path places[] = {program.parent_path() / "share/hookctl/scenarios/tour",
                             HOOKCTL_SCENARIOS "/tour"};
  for (const fs::path& place : places)
    if (fs::is_directory(place)) return place;
  throw UsageError(
      fmt::format("the tour's scenarios are neither in {} nor in {}; hookctl play FOLDER plays "
                  "them from elsewhere",
                  places[0].string(), places[1].string()));
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
  command->footer(
      scenarioFormat() +
      "\nAll files are checked before anything is started. The status is 0 when all steps were as "
      "expected, 1 when one\nwas not, 2 when a file is wrong.\n\n"
      "Example of a step:\n"
      "  {\"title\": \"Read it back\", \"request\": \"nam read\",\n"
      "   \"expect\": {\"status\": \"success\", \"fields\": {\"mdn\": \"5551234560\", "
      "\"homeSid\": 4183}}}\n\n"
      "Examples:\n  hookctl play scenarios/provisioning.json\n  hookctl play --show scenarios/tour");
  command->callback([&common, options] { run(common, *options); });
}

void addTourCommand(CLI::App& tool, Common& common) {
  CLI::App* command = tool.add_subcommand(
      "tour", "Plays a tour of requests and indications, each held against what should come of it");
  command->footer(
      "The tour is scenarios, played with each record shown, as by hookctl play --show. The lines behind "
      "hook> can "
      "be typed\nin hookctl shell. The status is 1 when something was not as expected.");
  command->callback([&common] { run(common, {.paths = {tourFolder()}, .show = true}); });
}

}  // namespace tools
