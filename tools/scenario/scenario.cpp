#include "tools/scenario/scenario.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <set>

#include "tools/text/usage_error.h"
#include "tools/text/words.h"

namespace tools {

namespace {

constexpr std::string_view kTitle = "title";
constexpr std::string_view kExpect = "expect";

/// What `read` does; when something is wrong, the error says that it is there.
template <typename Read>
auto readingAt(std::string_view place, Read read) {
  try {
    return read();
  } catch (const UsageError& error) {
    throw UsageError(fmt::format("{}: {}", place, error.what()));
  }
}

/// "LINE:COLUMN: what is wrong" with text that is not JSON.
std::string syntaxError(const std::string& text, const Json::parse_error& error) {
  const size_t at = std::min(text.size(), error.byte > 0 ? error.byte - 1 : 0);
  const size_t line_start = at > 0 ? text.rfind('\n', at - 1) + 1 : 0;
  const auto line = 1 + std::count(text.begin(), text.begin() + static_cast<ptrdiff_t>(at), '\n');
  std::string_view what = error.what();
  what = what.substr(std::min(what.find(": ") + 2, what.size()));
  return fmt::format("{}:{}: {}", line, at - line_start + 1, what);
}

/// Throws UsageError when an object has a key twice, of which a reader of JSON keeps only one.
Json parse(const std::string& text) {
  constexpr size_t kDepthOfSteps = 2;
  std::vector<std::set<std::string>> keys;  // of each object that is open
  size_t step = 0;
  return Json::parse(text, [&](int, Json::parse_event_t event, const Json& parsed) {
    if (event == Json::parse_event_t::object_start) keys.emplace_back();
    if (event == Json::parse_event_t::object_start && keys.size() == kDepthOfSteps) ++step;
    if (event == Json::parse_event_t::object_end) keys.pop_back();
    if (event == Json::parse_event_t::key && !keys.back().insert(parsed.get<std::string>()).second)
      throw UsageError(fmt::format("{}{} is given twice",
                                   keys.size() < kDepthOfSteps ? "" : fmt::format("step {}: ", step),
                                   parsed.dump()));
    return true;
  });
}

/// Lets the rows read the members that are theirs, in the table's order.
void readWords(const Json& object, std::span<const StepWord> words, Reading& reading) {
  for (const StepWord& word : words)
    if (object.contains(word.name))
      reading.step.deeds.push_back(
          readingAt(word.name, [&] { return word.read(object.at(word.name), reading); }));
}

/// What a step is called: without a title, what it does.
std::string titleOf(const Json& object) {
  if (!object.is_object()) return "";
  if (object.contains(kTitle) && object.at(kTitle).is_string()) return textOf(object.at(kTitle));
  for (const std::string_view name : namesOf(actionWords())) {
    if (!object.contains(name)) continue;
    const Json& value = object.at(name);
    return fmt::format("{} {}", name, value.is_string() ? textOf(value) : value.dump());
  }
  std::string title;
  if (object.contains(kExpect) && object.at(kExpect).is_object())
    for (const auto& [key, value] : object.at(kExpect).items())
      title += (title.empty() ? "expect " : ", ") + key;
  return title;
}

Step readStep(const Json& object, bool& running) {
  std::vector<std::string_view> known = namesOf(actionWords());
  known.insert(known.begin(), {kTitle, kExpect});
  checkKeys(object, known);
  std::vector<std::string_view> actions;
  for (const std::string_view name : namesOf(actionWords()))
    if (object.contains(name)) actions.push_back(name);
  if (actions.size() > 1)
    throw UsageError(
        fmt::format("a step does one thing, not {}; make several steps of it", fmt::join(actions, " and ")));
  const Json expect = object.value(kExpect, Json::object());
  if ((actions.empty() || object.at(actions[0]).empty()) && expect.empty())
    throw UsageError("the step does nothing and expects nothing");
  if (object.contains(kTitle)) readingAt(kTitle, [&] { return textOf(object.at(kTitle)); });
  Reading reading{.running = running, .step = {.title = titleOf(object)}};
  readWords(object, actionWords(), reading);
  readingAt(kExpect, [&] {
    checkKeys(expect, namesOf(expectationWords()));
    readWords(expect, expectationWords(), reading);
  });
  running = reading.running;
  return reading.step;
}

Scenario readSteps(const std::string& path, const Json& object) {
  constexpr std::string_view kSteps = "steps";
  constexpr std::string_view kInstance = "instance";
  constexpr std::string_view kKeys[] = {kTitle, "about", kSteps, kInstance};
  checkKeys(object, kKeys);
  if (!object.contains(kSteps) || !object.at(kSteps).is_array() || object.at(kSteps).empty())
    throw UsageError("a scenario has \"steps\": [{...}, ...]");
  for (const std::string_view key : {kKeys[0], kKeys[1]})
    if (object.contains(key)) readingAt(key, [&] { return textOf(object.at(key)); });
  Scenario scenario{.file = path, .title = object.value(kTitle, path)};
  if (object.contains(kInstance))
    scenario.instance = readingAt(kInstance, [&] {
      return static_cast<int>(numberOf(object.at(kInstance), 0, std::numeric_limits<int>::max()));
    });
  bool running = false;
  for (const Json& step : object.at(kSteps)) {
    const std::string title = titleOf(step);
    const std::string place =
        fmt::format("step {}{}", scenario.steps.size() + 1, title.empty() ? "" : fmt::format(" ({})", title));
    scenario.steps.push_back(readingAt(place, [&] { return readStep(step, running); }));
  }
  if (running)
    scenario.steps.push_back(readStep({{kTitle, "The end of the process"}, {"process", "end"}}, running));
  return scenario;
}

}  // namespace

std::string scenarioFormat() {
  const auto describe = [](std::span<const StepWord> words, std::string_view indent) {
    std::string lines;
    for (const StepWord& word : words)
      lines += fmt::format("{0}\"{1}\": {2}\n{0}    {3}\n", indent, word.name, word.takes, word.help);
    return lines;
  };
  return R"(A scenario is {"title": T, "about": T, "instance": N, "steps": [STEP, ...]}; N is the process's instance id, 0
when not given. A STEP is an object with
  "title": T
    optional, for the reader
and one of these, which it does; where there can be several of what follows, [..., ...] holds them:
)" + describe(actionWords(), "  ") +
         R"(  "expect": {...}
    what has to be so then; alone, it is a step as well:
)" + describe(expectationWords(), "    ");
}

std::vector<std::string> scenarioFiles(const std::vector<std::string>& paths) {
  namespace fs = std::filesystem;
  std::vector<std::string> files;
  for (const std::string& path : paths) {
    std::error_code ignored;
    if (!fs::is_directory(path, ignored)) {
      files.push_back(path);
      continue;
    }
    std::vector<std::string> found;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(path))
      if (entry.path().extension() == ".json" && !entry.is_directory()) found.push_back(entry.path());
    if (found.empty()) throw UsageError(fmt::format("the folder {} has no file that ends in .json", path));
    std::sort(found.begin(), found.end());
    files.insert(files.end(), found.begin(), found.end());
  }
  return files;
}

Scenario readScenario(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw UsageError(fmt::format("the scenario {} cannot be read: {}", path, std::strerror(errno)));
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  try {
    return readingAt(path, [&] { return readSteps(path, parse(text)); });
  } catch (const Json::parse_error& error) {
    throw UsageError(fmt::format("{}:{}", path, syntaxError(text, error)));
  } catch (const Json::exception& error) {  // a number beyond all that can be stored
    throw UsageError(fmt::format("{}: {}", path, error.what()));
  }
}

}  // namespace tools
