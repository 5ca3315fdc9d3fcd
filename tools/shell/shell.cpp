#include "tools/shell/shell.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <limits>
#include <system_error>
#include <utility>

#include "handset/modem_logs.h"
#include "tools/bench/log_listing.h"
#include "tools/bench/modem_control.h"
#include "tools/bench/reference.h"
#include "tools/records/decode.h"
#include "tools/records/encode.h"
#include "tools/records/record_table.h"
#include "tools/shell/line_editor.h"
#include "tools/text/usage_error.h"

namespace tools {

namespace {

using handset::Bytes;
using handset::Millis;

constexpr Millis kEndGrace{500};
/// What a thread of its own asks the modem for an indication comes within this.
constexpr Millis kThreadGrace{300};
constexpr Millis kWaitDefault{10'000};
constexpr int64_t kWaitMax = 3600;  // seconds
constexpr size_t kAny = std::numeric_limits<size_t>::max();

/// Whether a request's name begins with this word.
bool beginsRequest(std::string_view word) {
  const std::vector<std::string_view> names = requestNames();
  return std::any_of(names.begin(), names.end(),
                     [word](std::string_view name) { return name.substr(0, name.find(' ')) == word; });
}

/// The words as a line.
std::string lineOf(Words words) {
  std::vector<std::string> quoted;
  for (const std::string& word : words)
    quoted.push_back(quoteWord(word));
  return fmt::format("{}", fmt::join(quoted, " "));
}

std::string endedWith(std::optional<int> status) {
  return status ? describeEnd(*status)
                : "the process did not end when its request pipe closed, and is killed";
}

}  // namespace

constexpr Shell::Command Shell::kCommands[] = {
    {"raw", "HEX", "sends these bytes as a request", kAny, &Shell::askRequest},
    {kForce, "REQUEST", "sends a request whose digits are not what they should be", kAny, &Shell::askRequest},
    {"modem", "COMMAND", "tells the modem something; help modem tells what", kAny, &Shell::tellModem},
    {"wait", "[SECONDS]", "waits for one more unsolicited message", 1, &Shell::waitForMessage},
    {"log", "on|off|since", "the process's log: as it comes; not; since the last 'log since'", 1,
     &Shell::showLogs},
    {"trace", "on|off", "what the modem is asked and answers, as it comes; not", 1, &Shell::showTrace},
    {"files", "", "the modem logs' directory", 0, &Shell::listFiles},
    {"properties", "", "the system properties", 0, &Shell::listProperties},
    {"dropbox", "", "the drop-box", 0, &Shell::listDropbox},
    {"restart", "", "ends the process and starts it anew", 0, &Shell::restart},
    {"help", "[TOPIC]", "this; or what a request takes, 'modem', or 'requests' for all of them", 2,
     &Shell::help},
    {"quit", "", "ends the process and the shell; so does the end of the input", 0, &Shell::quit},
};

Shell::Shell(Station& station, const Console& console, bool at_terminal)
    : station_(station),
      console_(console),
      news_(station, console, [this](const std::string& what) { report(what); }) {
  news_.begin();
  if (at_terminal)
    news_.takeCtrlC();
  else
    line_number_ = 0;
}

void Shell::record(const std::string& path, int instance) {
  recording_.emplace(path, instance).addProcess("start", {}, station_.modem().takeRequests());
}

bool Shell::run(const std::string& line) {
  if (line_number_) {
    ++*line_number_;
    if (!line.empty()) fmt::print("{}{}\n", kPrompt, line);
  }
  try {
    const std::vector<std::string> words = splitWords(line);
    if (words.empty() && recording_ && !line.empty())
      recording_->entitle(line.substr(std::min(line.find_first_not_of("# \t"), line.size())));
    if (recording_) Recording::needText(line);
    if (!words.empty()) execute(words);
  } catch (const std::system_error& error) {
    if (error.code() == std::errc::broken_pipe) throw;
    report(error.what());
  } catch (const std::exception& error) {
    report(error.what());
  }
  flushOutput();
  return !finished_;
}

void Shell::report(const std::string& what) {
  troubled_ = true;
  flushOutput();
  complain(line_number_ ? fmt::format("line {}: {}", *line_number_, what) : what);
}

std::vector<std::string_view> Shell::allNames() {
  std::vector<std::string_view> names = requestNames();
  for (const Command& command : kCommands)
    names.push_back(command.name);
  return names;
}

void Shell::execute(Words words) {
  const std::string& name = words.front();
  for (const Command& command : kCommands) {
    if (command.name != name) continue;
    if (words.size() - 1 > command.most)
      throw UsageError(command.arguments.empty() ? fmt::format("{} takes no arguments", name)
                                                 : fmt::format("{} takes {}", name, command.arguments));
    return (this->*command.run)(words);
  }
  if (beginsRequest(name)) return askRequest(words);
  throw UsageError(fmt::format("there is no request and no command '{}'{}; help tells what there is", name,
                               didYouMean(name, allNames())));
}

void Shell::needProcess() const {
  if (!news_.serving()) throw UsageError("no process serves requests; restart starts one");
}

void Shell::tellNoAnswer() {
  if (news_.waitForEnd(kEndGrace) == Waited::done) throw UsageError("so no answer came");
  throw station_.trouble("no answer came");
}

/// The answer that is owed; nothing when it was given up.
std::optional<Bytes> Shell::takeAnswer() {
  Waited waited = news_.waitForAnswer(kUsualWait);
  if (waited == Waited::late) {
    console_.note(station_.stillWaiting() +
                  (line_number_ ? "; Ctrl-C ends the shell" : "; Ctrl-C gives it up"));
    flushOutput();
    waited = news_.waitForAnswer();
  }
  if (waited == Waited::interrupted) {
    console_.note("given up, but the next request waits for it; " + std::string(kAgainEnds));
    return std::nullopt;
  }
  std::optional<Bytes> answer = station_.process().nextResponse();
  const handset::Instant came = std::chrono::steady_clock::now();
  if (!answer) tellNoAnswer();
  const Owed owed = *std::exchange(owed_, std::nullopt);
  news_.showLines();
  console_.record("answer", decodeAnswer(owed.request, *answer), *answer, {came, owed.asked});
  return answer;
}

void Shell::askRequest(Words words) {
  const Bytes request = encodeWords(words);
  needProcess();
  if (owed_) {
    const std::string late = owed_->line;
    if (!takeAnswer()) return;
    console_.note(fmt::format("that was the answer to {}, after all", late));
  }
  // Its title is enough: the fields have just been typed.
  const handset::Instant asked = std::chrono::steady_clock::now();
  console_.record("request", {.title = decodeRequest(request).title, .fields = {}}, request, {.time = asked});
  flushOutput();
  handset::Parent& process = station_.process();
  const size_t mark = process.logMark();
  station_.modem().takeRequests();
  if (!process.send(request)) tellNoAnswer();
  owed_ = {lineOf(words), request, asked};
  const std::optional<Bytes> answer = takeAnswer();
  if (!records()) return;
  // The modem has been asked everything then.
  if (answer) process.waitForLogSince(mark, "Child process waiting for data");
  recording_->addRequest(lineOf(words), request, answer, station_.modem().takeRequests());
}

void Shell::tellModem(Words words) {
  station_.needOwnModem("tell it there");
  station_.modem().takeRequests();
  modemOrder(words.subspan(1))(station_.modem());
  if (!records()) return;
  if (words[1] != "indicate") return recording_->addModem(lineOf(words.subspan(1)));
  const std::vector<Bytes> messages = news_.settle();
  station_.modem().waitForRequests(1, kThreadGrace);
  recording_->addIndication(lineOf(words.subspan(2)), messages, station_.modem().takeRequests());
}

void Shell::waitForMessage(Words words) {
  const Millis time = words.size() > 1 ? parseSeconds("SECONDS", words[1], kWaitMax) : kWaitDefault;
  needProcess();
  const Waited waited = news_.waitForMessage(time);
  if (waited == Waited::interrupted) console_.note("given up; " + std::string(kAgainEnds));
  if (waited == Waited::late)
    throw UsageError(fmt::format("no message came within {} s", static_cast<double>(time.count()) / 1000));
}

void Shell::showLogs(Words words) {
  const std::string which = words.size() > 1 ? words[1] : "";
  if (which == "on" || which == "off") return news_.showLogs(which == "on");
  if (which != "since") throw UsageError("log takes on, off or since");
  station_.process().catchUpWithLog();
  Happenings lines;
  append(lines, station_.process().stampedLogsSince(log_seen_));
  log_seen_ += lines.size();
  if (recording_) dropSettling(lines);
  if (lines.empty()) console_.note("(nothing)");
  for (const Happening& line : lines)
    tools::show(console_, line);
}

void Shell::trace(bool on) {
  if (on) station_.needOwnModem("its own console shows what it is asked");
  news_.showTrace(on);
}

void Shell::showTrace(Words words) {
  const std::string which = words.size() > 1 ? words[1] : "";
  if (which != "on" && which != "off") throw UsageError("trace takes on or off");
  trace(which == "on");
}

void Shell::listFiles(Words /*words*/) {
  fmt::print("{}", listLogs(handset::logEntries(station_.folder())));
}

void Shell::listProperties(Words /*words*/) {
  const std::map<std::string, std::string> properties = station_.folder().properties();
  size_t width = 0;
  for (const auto& [name, value] : properties)
    width = std::max(width, name.size());
  if (properties.empty()) console_.note("(none)");
  for (const auto& [name, value] : properties)
    console_.note(fmt::format("{:<{}}  {}", name, width, value));
}

void Shell::listDropbox(Words /*words*/) {
  const std::vector<handset::DropboxEntry> entries = station_.folder().dropboxEntries();
  if (entries.empty()) console_.note("(empty)");
  for (const handset::DropboxEntry& entry : entries)
    console_.note(fmt::format("{}  {} ms  {}", entry.tag, entry.milliseconds, entry.text));
}

std::string Shell::reference() {
  std::string text =
      "A line is a request by name, with its arguments in order or as FIELD=VALUE, such as\n"
      "  rde read 10017\n"
      "  plmn mcc=310 mnc=120\n"
      "or one of these:\n";
  for (const Command& command : kCommands)
    text += fmt::format("  {:<19} {}\n", fmt::format("{} {}", command.name, command.arguments), command.help);
  return text +
         "Tab completes names and arguments; the arrow keys bring lines back, also those of earlier "
         "sessions.\n"
         "Ctrl-C drops the line or gives up a wait; twice in a row it ends the shell, as Ctrl-D does.\n";
}

void Shell::help(Words words) {
  const std::string topic = fmt::format("{}", fmt::join(words.subspan(1), " "));
  std::string text = topic.empty()      ? reference()
                     : topic == "modem" ? modemReference() + modemNamesReference()
                                        : requestReference(topic == "requests" ? "" : topic);
  for (const Command& command : kCommands)
    if (text.empty() && command.name == topic)
      text = fmt::format("  {} {}: {}\n", command.name, command.arguments, command.help);
  if (text.empty())
    throw UsageError(fmt::format("there is no help for '{}'{}", topic, didYouMean(topic, allNames())));
  fmt::print("{}", text);
}

std::optional<int> Shell::endProcess() {
  // A transcript has what a person would have waited for.
  if (line_number_) news_.settle();
  const std::optional<int> status = station_.end();
  news_.finish();
  return status;
}

void Shell::restart(Words /*words*/) {
  std::optional<int> status;
  if (news_.serving()) {
    status = endProcess();
    console_.note(endedWith(status));
  } else if (recording_) {
    recording_.reset();
    console_.note("what follows is not recorded: in a scenario, the process does not die");
  }
  flushOutput();
  log_seen_ = 0;
  owed_.reset();
  station_.modem().takeRequests();
  station_.start();
  news_.begin();
  news_.showLines();
  console_.note(fmt::format("process {} serves requests", station_.process().pid()));
  if (recording_) recording_->addProcess("restart", status, station_.modem().takeRequests());
}

void Shell::quit(Words /*words*/) {
  finished_ = true;
}

void Shell::end() {
  if (!news_.serving()) return;
  const std::optional<int> status = endProcess();
  if (status == 0) return;
  if (recording_ && status) recording_->addProcess("end", status, {});
  report(endedWith(status));
}

std::vector<Syntax> Shell::syntax() {
  std::vector<Syntax> rows;
  for (const Command& command : kCommands)
    rows.push_back({command.name, command.arguments});
  return rows;
}

}  // namespace tools
