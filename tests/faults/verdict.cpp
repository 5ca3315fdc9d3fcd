#include "faults/verdict.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "faults/known_silences.h"
#include "tools/bench/station.h"

namespace faults {
namespace {

using handset::Bytes;

/// Packages that were not appended stay, for the next of their number or the clean-up.
constexpr std::string_view kPackages = "/data/adam/~adam";

bool hasName(const Files& files, const std::string& name) {
  const auto at = files.lower_bound({name, ""});
  return at != files.end() && at->first == name;
}

/// The words of a step whose answers, messages or requests to the modem are not the undisturbed play's: by
/// the requests that the modem did not get, where nothing else differs.
Texts stepDifferences(const std::string& words, const SeenStep& expected, const SeenStep& seen) {
  Texts found;
  if (seen.answers == expected.answers && seen.messages == expected.messages)
    for (const std::string& asked : expected.asked)
      if (std::find(seen.asked.begin(), seen.asked.end(), asked) == seen.asked.end())
        found.push_back(fmt::format("{} without {}", words, asked));
  if (found.empty() && seen != expected) found.push_back(words);
  return found;
}

/// What to call the files that only the first of two plays has: a word, and the name.
void addFiles(const Files& files, const Files& others, std::string_view word, Texts& found) {
  Files only;
  std::set_difference(files.begin(), files.end(), others.begin(), others.end(),
                      std::inserter(only, only.end()));
  for (const auto& [name, content] : only)
    found.push_back(fmt::format("{} {}", word, name));
}

/// The words for all that is not as in the undisturbed play.
Texts differences(const Outcome& calm, const Outcome& outcome) {
  Texts found;
  for (size_t i = 0; i < outcome.steps.size(); ++i)
    for (const std::string& words : stepDifferences(calm.words[i], calm.steps[i], outcome.steps[i]))
      found.push_back(words);
  addFiles(calm.files, outcome.files, "no", found);
  addFiles(outcome.files, calm.files, "left", found);
  return found;
}

/// Whether the undisturbed play has the message: with a fault that lasts it may come in a later step.
bool isExpected(const Outcome& calm, const Bytes& message) {
  return std::any_of(calm.steps.begin(), calm.steps.end(), [&](const SeenStep& step) {
    return std::find(step.messages.begin(), step.messages.end(), message) != step.messages.end();
  });
}

}  // namespace

Texts newLines(const Outcome& calm, const Outcome& outcome) {
  std::multiset<std::string> known(calm.lines.begin(), calm.lines.end());
  Texts fresh;
  for (const std::string& line : outcome.lines) {
    const auto at = known.find(line);
    if (at == known.end())
      fresh.push_back(line);
    else
      known.erase(at);
  }
  return fresh;
}

Texts judge(const Outcome& calm, const Outcome& outcome, const Point& point) {
  if (outcome.struck_call.empty()) return {};
  Texts wrong = outcome.malformed;
  if (kFaultClasses[point.fault_class].effect == Effect::killed) {
    wrong.insert(wrong.end(), outcome.lost.begin(), outcome.lost.end());
    if (!outcome.trouble.empty()) wrong.push_back(outcome.trouble);
    return wrong;
  }
  for (const int status : outcome.exits)
    if (status != 0) wrong.push_back(tools::describeEnd(status));
  const Texts fresh = newLines(calm, outcome);
  const auto says = [&fresh](std::string_view text) {
    return std::any_of(fresh.begin(), fresh.end(),
                       [&](const std::string& line) { return line.find(text) != std::string::npos; });
  };
  // A start that cannot reach the modem ends, and says so.
  const bool gave_up = !outcome.exits.empty() && says(" RIL-KESEXT: main:");
  if (!outcome.trouble.empty() && !gave_up) wrong.push_back(outcome.trouble);
  if (!outcome.trouble.empty()) return wrong;

  for (size_t i = 0; i < outcome.steps.size(); ++i) {
    const SeenStep& seen = outcome.steps[i];
    const SeenStep& expected = calm.steps[i];
    if (seen.answers.size() != expected.answers.size() && !says("Write to parent failed"))
      wrong.push_back(fmt::format("step {}: {} answers", i + 1, seen.answers.size()));
    for (const Bytes& message : seen.messages)
      if (!isExpected(calm, message))
        wrong.push_back(fmt::format("step {}: a message that is another", i + 1));
    if (point.strikes == 1 && i > outcome.struck_step &&
        (seen.answers != expected.answers || seen.messages != expected.messages))
      wrong.push_back(fmt::format("step {} is another still, after step {}", i + 1, outcome.struck_step + 1));
  }
  if (fresh.empty())
    for (const std::string& what : differences(calm, outcome))
      if (!isKnownSilence(kFaultClasses[point.fault_class].name, what))
        wrong.push_back("no line says so: " + what);
  // Without the link nothing tells the logs from strays, and what cannot be cut stays.
  if (!says("clean the whole dir!") && !says("Unable to cut"))
    wrong.insert(wrong.end(), outcome.lost.begin(), outcome.lost.end());
  if (outcome.last.descriptors > outcome.first.descriptors)
    wrong.push_back(
        fmt::format("{} descriptors, not {}", outcome.last.descriptors, outcome.first.descriptors));
  if (outcome.last.threads > outcome.first.threads)
    wrong.push_back(fmt::format("{} threads, not {}", outcome.last.threads, outcome.first.threads));
  // What cannot be removed stays.
  const bool removes = (point.strikes == 1 && outcome.struck_call != "unlink") ||
                       kFaultClasses[point.fault_class].group != Group::file;
  for (const auto& [name, content] : outcome.files)
    if (!hasName(calm.files, name) && !name.starts_with(kPackages) && removes)
      wrong.push_back("left over: " + name);
  return wrong;
}

}  // namespace faults
