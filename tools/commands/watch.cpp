#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include "core/ground/hook_ids.h"
#include "handset/hook_records.h"
#include "tools/bench/station.h"
#include "tools/commands/commands.h"
#include "tools/records/engineering_screen.h"
#include "tools/text/window.h"

namespace tools {

namespace {

constexpr WindowSize kLeast{.columns = 40, .rows = 10};

struct WatchOptions {
  std::string root;
  double seconds = 1;
  std::optional<unsigned> count;
};

/// The process answers with zeros when the modem gives it nothing, and only its log tells.
std::string complaintSince(Station& station, size_t mark) {
  constexpr std::string_view kComplaint = "kes_qmi_sprint_get_engineering_info: ";
  station.process().catchUpWithLog();
  for (const std::string& line : station.process().logsSince(mark))
    if (const size_t at = line.find(kComplaint); at != std::string::npos)
      return fmt::format("(no data from the modem: {})", line.substr(at + kComplaint.size()));
  return "";
}

EngineeringReport ask(Station& station, uint32_t id) {
  const size_t mark = station.process().logMark();
  const handset::Bytes request = handset::cdmaRequest(id);
  EngineeringReport report{decodeAnswer(request, station.ask(request).bytes), complaintSince(station, mark)};
  if (report.answer.problem && report.trouble.empty())
    report.trouble = fmt::format("(the answer does not parse: {})", report.answer.problem->text);
  return report;
}

std::vector<std::string> screen(const EngineeringReport& call_processing, const EngineeringReport& evdo) {
  const WindowSize window = windowSize();
  const size_t most = std::max<size_t>(2, window.rows) - 1;  // the last line is the cursor's
  if (window.columns < kLeast.columns || window.rows < kLeast.rows) {
    std::vector<std::string> rows =
        inRows(atBlanks(fmt::format("This window has {} columns and {} rows; watch needs {} and {}.",
                                    window.columns, window.rows, kLeast.columns, kLeast.rows)),
               window.columns);
    rows.resize(std::min(rows.size(), most));
    return rows;
  }
  std::vector<std::string> rows = engineeringRows(call_processing, evdo, window.columns, true);
  if (rows.size() > most) rows = engineeringRows(call_processing, evdo, window.columns, false);
  if (rows.size() <= most) return rows;
  const std::string hidden = fmt::format("... {} more rows in a larger window", rows.size() - (most - 1));
  rows.resize(most - 1);
  rows.push_back(hidden);
  return rows;
}

/// Whether the last screens had the modem's data.
bool watch(Station& station, const WatchOptions& options) {
  const bool in_place = isCapableTerminal();
  station.modem().recordRequests(false);
  for (unsigned shown = 1;; ++shown) {
    const EngineeringReport call_processing = ask(station, kesext::HOOK_CALL_PROCESSING_DATA);
    const EngineeringReport evdo = ask(station, kesext::HOOK_EVDO_DATA);
    station.process().forgetLogs();
    while (station.process().nextUnsolicited(handset::Millis(0))) {
    }
    // Each row covers what was there, so that nothing flickers.
    fmt::print("{}{}{}", in_place ? "\x1b[H" : "",
               fmt::join(screen(call_processing, evdo), in_place ? "\x1b[K\n" : "\n"),
               in_place ? "\x1b[K\n\x1b[J" : "\n");
    flushOutput();
    if (shown == options.count) return call_processing.trouble.empty() && evdo.trouble.empty();
    std::this_thread::sleep_for(std::chrono::duration<double>(options.seconds));
    if (!in_place) fmt::print("\n");
  }
}

}  // namespace

void addWatchCommand(CLI::App& tool, Common& common) {
  CLI::App* command =
      tool.add_subcommand("watch", "Shows the engineering screens, again and again in the same place");
  auto options = std::make_shared<WatchOptions>();
  addShared(*command, {.root = &options->root});
  command->add_option("--every", options->seconds, "seconds from one to the next")
      ->check(CLI::Range(0.001, 3600.0))
      ->option_text("SECONDS");
  command->add_option("--count", options->count, "how often, 1 or more; until Ctrl-C when not given")
      ->check([](const std::string& word) {
        return word == "0" ? "takes 1 or more; without it the screens go on until Ctrl-C" : "";
      })
      ->option_text("N");
  command->footer(R"(What matters most comes first; a window of 40 by 10 has room for that.

Example:
  hookctl watch --root /tmp/handset --every 0.5)");
  command->callback([&common, options] {
    Station station({.executable = common.process(), .root = options->root, .share_modem = true});
    station.start();
    common.status = watch(station, *options) ? kStatusGood : kStatusWrong;
    station.end();
  });
}

}  // namespace tools
