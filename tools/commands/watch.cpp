#include <fmt/format.h>

#include <memory>
#include <string>
#include <thread>

#include "core/ground/hook_ids.h"
#include "core/ground/hook_message.h"
#include "handset/hook_records.h"
#include "tools/bench/station.h"
#include "tools/commands/commands.h"
#include "tools/records/engineering_screen.h"

namespace tools {

namespace {

constexpr std::string_view kHomeAndClear = "\x1b[H\x1b[J";

struct WatchOptions {
  std::string root;
  double seconds = 1;
  unsigned count = 0;
};

struct Screen {
  std::string text;
  bool has_data = true;
};

/// The process answers with zeros when the modem gives it nothing, and only its log tells.
std::string complaintSince(Station& station, size_t mark) {
  constexpr std::string_view kComplaint = "kes_qmi_sprint_get_engineering_info: ";
  station.process().catchUpWithLog();
  for (const std::string& line : station.process().logsSince(mark))
    if (const size_t at = line.find(kComplaint); at != std::string::npos)
      return line.substr(at + kComplaint.size());
  return "";
}

Screen screen(Station& station, uint32_t id, std::string (*draw)(handset::ByteView)) {
  const size_t mark = station.process().logMark();
  const handset::Bytes answer = station.ask(handset::cdmaRequest(id)).bytes;
  constexpr size_t kAround = kesext::kOemHookHeaderCount;
  if (const std::string complaint = complaintSince(station, mark); !complaint.empty())
    return {fmt::format("      (no data from the modem: {})\n", complaint), false};
  if (answer.size() < kAround) return {"      (the answer is too short)\n", false};
  return {draw(handset::ByteView(answer).subspan(kesext::kOemHookPayloadOffset, answer.size() - kAround))};
}

/// Whether the last screens had the modem's data.
bool watch(Station& station, const WatchOptions& options) {
  const bool in_place = isCapableTerminal();
  for (unsigned shown = 1;; ++shown) {
    const Screen call_processing = screen(station, kesext::HOOK_CALL_PROCESSING_DATA, callProcessingScreen);
    const Screen evdo = screen(station, kesext::HOOK_EVDO_DATA, evdoScreen);
    fmt::print("{}Call processing\n{}\nEVDO\n{}", in_place ? kHomeAndClear : "", call_processing.text,
               evdo.text);
    flushOutput();
    if (shown == options.count) return call_processing.has_data && evdo.has_data;
    std::this_thread::sleep_for(std::chrono::duration<double>(options.seconds));
  }
}

}  // namespace

void addWatchCommand(CLI::App& tool, Common& common) {
  CLI::App* command =
      tool.add_subcommand("watch", "Shows the engineering screens, again and again in the same place");
  auto options = std::make_shared<WatchOptions>();
  command
      ->add_option("--root", options->root,
                   "a handset folder, with the modem that runs there; without one, a fresh folder and a "
                   "modem of its own")
      ->option_text("FOLDER");
  command->add_option("--every", options->seconds, "seconds from one to the next")
      ->check(CLI::Range(0.05, 3600.0))
      ->option_text("SECONDS");
  command->add_option("--count", options->count, "how often; until Ctrl-C when not given")->option_text("N");
  command->footer("Example:\n  hookctl watch --root /tmp/handset --every 0.5");
  command->callback([&common, options] {
    Station station({.executable = common.executable, .root = options->root, .share_modem = true});
    station.start();
    common.status = watch(station, *options) ? kStatusGood : kStatusWrong;
    station.end();
  });
}

}  // namespace tools
