#include "tools/shell/shell.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <limits>
#include <system_error>

#include "handset/modem_logs.h"
#include "tools/bench/log_listing.h"
#include "tools/bench/modem_control.h"
#include "tools/bench/reference.h"
#include "tools/records/decode.h"
#include "tools/records/encode.h"
#include "tools/records/record_table.h"
#include "tools/text/usage_error.h"

namespace tools {

namespace {

using handset::Bytes;
using handset::Millis;

constexpr Millis kEndGrace{500};
constexpr int64_t kWaitDefault = 10;  // seconds
constexpr int64_t kWaitMax = 3600;
constexpr size_t kAny = std::numeric_limits<size_t>::max();

/// Whether a request's name begins with this word.
bool beginsRequest(std::string_view word) {
  const std::vector<std::string_view> names = requestNames();
  return std::any_of(names.begin(), names.end(),
                     [word](std::string_view name) { return name.substr(0, name.find(' ')) == word; });
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

Shell::Shell(Station& station, const Console& console)
    : station_(station),
      console_(console),
      news_(station, console, [this](const std::string& what) { report(what); }) {
  news_.begin();
}

bool Shell::run(const std::string& line) {
  if (line_number_) ++*line_number_;
  try {
    const std::vector<std::string> words = splitWords(line);
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
  std::vector<std::string_view> names = requestNames();
  for (const Command& command : kCommands)
    names.push_back(command.name);
  throw UsageError(fmt::format("there is no request and no command '{}'{}; help tells what there is", name,
                               didYouMean(name, names)));
}

void Shell::needProcess() const {
  if (!news_.serving()) throw UsageError("no process serves requests; restart starts one");
}

Answer Shell::ask(handset::ByteView request) {
  handset::Parent& process = station_.process();
  const handset::Instant asked = std::chrono::steady_clock::now();
  if (process.send(request)) {
    if (!news_.waitToRead(process.responsesFd(), {}, kUsualWait)) {
      console_.note(station_.stillWaiting() + "; Ctrl-C ends the shell");
      flushOutput();
      news_.waitToRead(process.responsesFd());
    }
    if (std::optional<Bytes> answer = process.nextResponse())
      return {std::move(*answer), asked, std::chrono::steady_clock::now()};
  }
  if (news_.waitForEnd(kEndGrace)) throw UsageError("so no answer came");
  throw station_.trouble("no answer came");
}

void Shell::askRequest(Words words) {
  const Bytes request = encodeWords(words);
  needProcess();
  // Its title is enough: the fields have just been typed.
  console_.record("request", {.title = decodeRequest(request).title, .fields = {}}, request,
                  {.time = std::chrono::steady_clock::now()});
  flushOutput();
  const Answer answer = ask(request);
  news_.showLines();
  console_.record("answer", decodeAnswer(request, answer.bytes), answer.bytes, {answer.came, answer.asked});
}

void Shell::tellModem(Words words) {
  station_.needOwnModem("tell it there");
  commandModem(station_.modem(), words.subspan(1));
}

void Shell::waitForMessage(Words words) {
  const int64_t seconds = words.size() > 1 ? parseNumber("SECONDS", words[1], 0, kWaitMax) : kWaitDefault;
  needProcess();
  if (!news_.waitForMessage(std::chrono::seconds(seconds)) && news_.serving())
    throw UsageError(fmt::format("no message came within {} s", seconds));
}

void Shell::showLogs(Words words) {
  const std::string which = words.size() > 1 ? words[1] : "";
  if (which == "on" || which == "off") return news_.showLogs(which == "on");
  if (which != "since") throw UsageError("log takes on, off or since");
  station_.process().catchUpWithLog();
  const std::vector<handset::StampedLine> lines = station_.process().stampedLogsSince(log_seen_);
  log_seen_ += lines.size();
  if (lines.empty()) console_.note("(nothing)");
  for (const handset::StampedLine& line : lines)
    console_.note(line.text, line.time);
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

std::string Shell::commandReference() {
  std::string text;
  for (const Command& command : kCommands)
    text += fmt::format("  {:<19} {}\n", fmt::format("{} {}", command.name, command.arguments), command.help);
  return text;
}

void Shell::help(Words words) {
  const std::string topic = fmt::format("{}", fmt::join(words.subspan(1), " "));
  if (topic.empty()) {
    fmt::print(
        "A line is a request by name, with its arguments in order or as FIELD=VALUE, such as\n"
        "  rde read 10017\n"
        "  plmn mcc=310 mnc=120\n"
        "or one of these:\n{}Tab completes names and arguments.\n",
        commandReference());
    return;
  }
  if (topic == "requests") return fmt::print("{}", requestReference());
  if (topic == "modem") return fmt::print("{}{}", modemReference(), modemNamesReference());
  if (const std::string request = requestReference(topic); !request.empty()) return fmt::print("{}", request);
  for (const Command& command : kCommands) {
    if (command.name != topic) continue;
    return fmt::print("  {} {}: {}\n", command.name, command.arguments, command.help);
  }
  std::vector<std::string_view> names = requestNames();
  for (const Command& command : kCommands)
    names.push_back(command.name);
  throw UsageError(fmt::format("there is no help for '{}'{}", topic, didYouMean(topic, names)));
}

std::optional<int> Shell::endProcess() {
  const std::optional<int> status = station_.end();
  news_.finish();
  return status;
}

void Shell::restart(Words /*words*/) {
  if (news_.serving()) console_.note(endedWith(endProcess()));
  flushOutput();
  log_seen_ = 0;
  station_.start();
  news_.begin();
  news_.showLines();
  console_.note(fmt::format("process {} serves requests", station_.process().pid()));
}

void Shell::quit(Words /*words*/) {
  finished_ = true;
}

void Shell::end() {
  if (!news_.serving()) return;
  const std::optional<int> status = endProcess();
  if (status != 0) report(endedWith(status));
}

std::vector<Syntax> Shell::syntax() {
  std::vector<Syntax> rows;
  for (const Command& command : kCommands)
    rows.push_back({command.name, command.arguments});
  return rows;
}

}  // namespace tools
