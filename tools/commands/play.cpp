#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "tools/bench/record_json.h"
#include "tools/commands/commands.h"
#include "tools/scenario/scenario.h"

namespace tools {

namespace {

struct PlayOptions {
  std::string file;
  std::string root;
  bool json = false;
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

void showStep(const Console& console, size_t number, const Step& step, const Play& play) {
  console.outcome(number, play.wrong.empty() ? Outcome::good : Outcome::wrong, step.title);
  for (const Happening& happening : play.crossings)
    show(console, happening);
  if (play.wrong.empty()) return;
  for (const std::string& text : play.wrong)
    console.note(text);
  const auto showRecord = [&](std::string_view direction, const PlayedRecord& record) {
    console.record(direction, record.decoded, record.bytes, record.moment);
  };
  if (play.request) showRecord("request", *play.request);
  if (play.answer) showRecord("answer", *play.answer);
  for (const PlayedRecord& message : play.messages)
    showRecord("message", message);
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
  if (!play.messages.empty()) result["messages"] = Json::array();
  for (const PlayedRecord& message : play.messages)
    result["messages"].push_back(record(message));
  for (const Happening& happening : play.crossings)
    addHappening(result, happening, times);
  return result;
}

/// Plays all steps and shows each; whether all were as expected.
bool play(const Scenario& scenario, Station& station, const PlayOptions& options, const Console& console) {
  Json results = Json::array();
  size_t good = 0;
  bool goes_on = true;
  station.modem().recordCrossings(options.trace);
  if (!options.json && !scenario.title.empty()) console.section(scenario.title);
  for (size_t i = 0; i < scenario.steps.size(); ++i) {
    const Step& step = scenario.steps[i];
    const size_t number = i + 1;
    if (!goes_on) {
      results.push_back(
          {{"step", number}, {"title", step.title}, {"result", outcomeName(Outcome::notPlayed)}});
      if (!options.json) console.outcome(number, Outcome::notPlayed, step.title);
      continue;
    }
    Play played(station);
    goes_on = doStep(step, played);
    append(played.crossings, station.modem().takeCrossings());
    sortByTime(played.crossings);
    if (played.wrong.empty()) ++good;
    results.push_back(describeStep(number, step, played, options.times));
    if (!options.json) showStep(console, number, step, played);
    flushOutput();
  }
  if (options.json)
    printJson(results);
  else
    console.section(fmt::format("{} of {} steps as expected", good, scenario.steps.size()));
  return good == scenario.steps.size();
}

}  // namespace

void addPlayCommand(CLI::App& tool, Common& common) {
  CLI::App* command =
      tool.add_subcommand("play", "Plays a scenario: a file that tells what is done and what is expected");
  auto options = std::make_shared<PlayOptions>();
  command->add_option("file", options->file, "the scenario, a JSON file")->required();
  command->add_option("--root", options->root, "a handset folder that is kept; without it, a fresh one")
      ->option_text("FOLDER");
  command->add_flag("--trace", options->trace, kTraceHelp);
  command->add_flag("--times", options->times, kTimesHelp);
  command->add_flag("--json", options->json, "for scripts: an array of the steps' results");
  command->footer(scenarioFormat() +
                  "\nThe whole file is checked before anything is started. The status is 0 when all steps "
                  "were as expected, 1 when\none was not, 2 when the file is wrong.\n\n"
                  "Example of a step:\n"
                  "  {\"title\": \"Read it back\", \"request\": \"nam read\",\n"
                  "   \"expect\": {\"status\": \"success\", \"fields\": {\"mdn\": \"5551234560\", "
                  "\"homeSid\": 4183}}}\n\n"
                  "Example:\n  hookctl play scenarios/provisioning.json");
  command->callback([&common, options] {
    const Scenario scenario = readScenario(options->file);
    Station station({.executable = common.executable, .root = options->root});
    common.status = play(scenario, station, *options, Console(common.colour, options->times)) ? kStatusGood
                                                                                              : kStatusWrong;
  });
}

}  // namespace tools
