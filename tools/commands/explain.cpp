#include <fcntl.h>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "core/ground/log.h"
#include "platform/host/unique_fd.h"
#include "tools/bench/record_json.h"
#include "tools/commands/commands.h"
#include "tools/log/log_story.h"
#include "tools/records/record_table.h"
#include "tools/text/input_lines.h"
#include "tools/text/usage_error.h"
#include "tools/text/words.h"

namespace tools {

namespace {

/// Longer than any line of the process; what goes beyond is some other's.
constexpr size_t kLogLineMax = size_t{64} * 1024;  // characters

constexpr std::string_view kOnlyFailures = "failures";

constexpr const char* kExplainFooter =
    R"(The log is a workstation's ("E RIL-KESEXT: ...") or a handset's, as logcat prints it: threadtime, which tells
most, or time, brief, long or tag, with colours or without. Lines of other processes are skipped. Each thing that
happened is a line: the number of its first line in the log, process and time where the log has them, how long it
took, and how it ended:

  success              the process said so
  answered             nothing in the log says that it failed; not every failure is logged
  answered with zeros  the modem failed; the answer says success all the same
  failed, not served   the answer says so
  cut                  the log has no end of it

With --json each is an object on a line of its own, and the last one the summary.

The status is 1 when the log has no line of the process.

Examples:
  hookctl explain radio.log
  adb logcat -d -b radio | hookctl explain --only failures
  hookctl explain --only nam radio.log          all requests whose names begin with nam
  hookctl explain --json radio.log | tail -n 1  the summary for scripts)";

struct ExplainOptions {
  std::string file;
  std::string only;
  bool json = false;
};

/// What --only takes for a kind of events, and what one is called.
constexpr std::pair<std::string_view, std::string_view> kKinds[] = {
    {"start-up", "start-up"},    {"requests", "request"}, {"reports", "report"},
    {"modem-logs", "modem log"}, {"trouble", "trouble"},  {"ends", "end"}};

const auto& kindOf(const LogEvent& event) {
  return kKinds[static_cast<size_t>(event.happening)];
}

bool namesRequest(std::string_view only, std::string_view name) {
  return name == only || (name.starts_with(only) && name[only.size()] == ' ');
}

/// Throws UsageError, with the nearest names, when there is nothing of this name.
void checkOnly(std::string_view only) {
  std::vector<std::string_view> names{kOnlyFailures};
  for (const auto& [option, name] : kKinds)
    names.push_back(option);
  const std::string kinds = fmt::format("{}", fmt::join(names, ", "));
  for (const RequestRow& row : requestTable())
    names.push_back(row.command);
  for (const std::string_view name : names)
    if (namesRequest(only, name)) return;
  throw UsageError(fmt::format("--only takes {} or the name of a request or its first word, not '{}'{}",
                               kinds, only, didYouMean(only, names)));
}

bool isWanted(std::string_view only, const LogEvent& event) {
  if (only.empty() || only == kindOf(event).first) return true;
  if (only == kOnlyFailures) return event.failed();
  return event.happening == EventKind::request && namesRequest(only, event.name);
}

std::string_view resultOf(const LogEvent& event) {
  if (event.happening == EventKind::request) return endingName(event.ending);
  if (event.happening != EventKind::startUp) return "";
  if (event.ending == Ending::success) return "ready";
  return event.ending == Ending::failed ? "did not start" : "cut";
}

nlohmann::ordered_json toJson(const Problem& problem) {
  return {{"line", problem.line}, {"text", problem.words}};
}

nlohmann::ordered_json toJson(const LogSummary::Slow& slow) {
  return {{"line", slow.line}, {"name", slow.name}, {"took_ms", slow.took}};
}

template <typename Item>
nlohmann::ordered_json toJson(const std::vector<Item>& items) {
  auto list = nlohmann::ordered_json::array();
  for (const Item& item : items)
    list.push_back(toJson(item));
  return list;
}

nlohmann::ordered_json toJson(const LogEvent& event) {
  nlohmann::ordered_json object{{"event", kindOf(event).second}, {"line", event.line}};
  if (event.process != 0) object["process"] = event.process;
  if (!event.time.empty()) object["time"] = event.time;
  if (event.took) object["took_ms"] = *event.took;
  if (!event.name.empty()) object["name"] = event.name;
  if (const std::string_view result = resultOf(event); !result.empty()) object["result"] = result;
  object["failed"] = event.failed();
  object["details"] = event.details;
  object["problems"] = toJson(event.problems);
  if (event.silences > 0) object["silences"] = event.silences;
  if (event.count > 1) object["count"] = event.count;
  return object;
}

nlohmann::ordered_json toJson(const LogSummary& summary) {
  nlohmann::ordered_json object{{"event", "summary"},
                                {"lines", summary.lines},
                                {"own", summary.own},
                                {"unknown", summary.unknown},
                                {"starts", summary.starts},
                                {"silences", summary.silences},
                                {"troubles", summary.troubles},
                                {"requests", nlohmann::ordered_json::array()},
                                {"slowest", toJson(summary.slowest)}};
  if (summary.unknown > 0) object["first_unknown"] = toJson(summary.first_unknown);
  for (const auto& [name, requests] : summary.requests) {
    nlohmann::ordered_json row{{"name", name}, {"count", requests.count}, {"failures", requests.failures}};
    if (requests.timed > 0) {
      row["longest_ms"] = requests.longest;
      row["mean_ms"] = requests.total / requests.timed;
    }
    object["requests"].push_back(row);
  }
  return object;
}

/// Says what happened, in columns of which those are left out that the log has nothing for.
class Narrator {
 public:
  explicit Narrator(ColourWhen colour) : console_(colour) {}

  void tell(const LogEvent& event) {
    std::string line = fmt::format("{:>8}  ", event.line);
    if (event.process != 0) line += fmt::format("{:>6}  ", event.process);
    if (!event.time.empty()) {
      // The date has a line of its own whenever it changes.
      const size_t blank = event.time.find(' ');
      const std::string date = blank == std::string::npos ? "" : event.time.substr(0, blank);
      if (date != date_) console_.section(date_ = date);
      line += fmt::format("{:<12}  {:>8}  ", event.time.substr(blank + 1),
                          event.took ? inSeconds(*event.took) : "");
    }
    line += fmt::format("{:<20}  ", event.name.empty()                     ? std::string(kindOf(event).second)
                                    : event.happening == EventKind::report ? "modem: " + event.name
                                                                           : event.name);
    console_.happening(!event.failed(), line + text(event));
  }
  void sum(const LogSummary& summary) const;

 private:
  static std::string text(const LogEvent& event) {
    std::vector<std::string> parts;
    if (const std::string_view result = resultOf(event); !result.empty()) parts.emplace_back(result);
    if (event.silences == 1) parts.emplace_back("THE MODEM LET 15 s PASS");
    if (event.silences > 1) parts.push_back("THE MODEM LET 15 s PASS, " + times(event.silences));
    for (const Problem& problem : event.problems)
      parts.push_back(problem.line == event.line ? problem.words
                                                 : fmt::format("{} (line {})", problem.words, problem.line));
    parts.insert(parts.end(), event.details.begin(), event.details.end());
    if (event.count > 1) parts.push_back(times(event.count));
    return fmt::format("{}", fmt::join(parts, "; "));
  }

  Console console_;
  std::string date_;
};

void Narrator::sum(const LogSummary& summary) const {
  constexpr std::string_view kColumns = "{:<20}  {:>8}  {:>8}  {:>9}  {:>9}";
  console_.section(fmt::format(kColumns, "Requests", "number", "failed", "longest", "mean"));
  for (const auto& [name, requests] : summary.requests) {
    const bool timed = requests.timed > 0;
    console_.happening(requests.failures == 0,
                       fmt::format(kColumns, name, requests.count, requests.failures,
                                   timed ? inSeconds(requests.longest) : "-",
                                   timed ? inSeconds(requests.total / requests.timed) : "-"));
  }
  if (!summary.slowest.empty()) console_.section("Slowest");
  for (const auto& [took, line, name] : summary.slowest)
    console_.happening(true, fmt::format("{:<20}  {:>8}  line {}", name, inSeconds(took), line));
  console_.section(fmt::format("{} lines, {} of the process, which started {}", summary.lines, summary.own,
                               times(summary.starts)));
  const auto warn = [this](size_t count, const std::string& words) {
    if (count > 0) console_.happening(false, words);
  };
  warn(summary.silences, fmt::format("The modem let 15 s pass {}.", times(summary.silences)));
  warn(summary.troubles,
       fmt::format("Something went wrong {} outside of requests.", times(summary.troubles)));
  warn(summary.unknown,
       fmt::format("{} lines are cut or not known; the first is line {}: {}", summary.unknown,
                   summary.first_unknown.line, summary.first_unknown.words));
}

host::UniqueFd openLog(const std::string& file) {
  host::UniqueFd log(file.empty() ? dup(STDIN_FILENO) : open(file.c_str(), O_RDONLY | O_CLOEXEC));
  if (!log) throw std::system_error(errno, std::generic_category(), "the log " + file + " cannot be read");
  return log;
}

void explain(const ExplainOptions& options, const Common& common) {
  if (!options.only.empty()) checkOnly(options.only);
  const host::UniqueFd log = openLog(options.file);
  InputLines input(log.get());
  Narrator narrator(common.colour);
  LogStory story([&](const LogEvent& event) {
    if (!isWanted(options.only, event)) return;
    if (options.json)
      printJson(toJson(event), true);
    else
      narrator.tell(event);
  });
  LogReader reader;
  for (std::string line; input.next(line, kLogLineMax);)
    story.take(reader.read(line));
  story.finish();
  const LogSummary& summary = story.summary();
  if (summary.own == 0)
    throw std::runtime_error(fmt::format(
        "the log has no line of the process: {} lines, none with the tag " KESEXT_LOG_TAG
        " before its text, as logcat -v threadtime has it; hookctl explain --help tells what is read",
        summary.lines));
  if (options.json)
    printJson(toJson(summary), true);
  else
    narrator.sum(summary);
}

}  // namespace

void addExplainCommand(CLI::App& tool, Common& common) {
  CLI::App* command = tool.add_subcommand("explain", "Tells what happened, of a log of the process");
  auto options = std::make_shared<ExplainOptions>();
  command->add_option("file", options->file, "the log; standard input without any")->check(CLI::ExistingFile);
  command
      ->add_option(
          "--only", options->only,
          "failures; start-up, requests, reports, modem-logs, trouble or ends; or a request's name or its "
          "first word")
      ->option_text("WHAT");
  command->add_flag("--json", options->json, "for scripts: an object on a line for each, then the summary");
  command->footer(kExplainFooter);
  command->callback([&common, options] {
    if (options->file.empty() && isatty(STDIN_FILENO) == 1)
      complain("Paste a log, or pipe one in; Ctrl-D ends.");
    explain(*options, common);
  });
}

}  // namespace tools
