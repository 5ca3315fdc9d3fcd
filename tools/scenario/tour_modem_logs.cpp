#include <fmt/format.h>

#include <filesystem>

#include "core/ground/hook_ids.h"
#include "handset/hook_records.h"
#include "handset/modem_logs.h"
#include "tools/bench/log_listing.h"
#include "tools/scenario/tour_sections.h"

namespace tools {

using namespace handset;  // the vocabulary of records
using namespace kesext;   // the ids

namespace {

/// A log of an earlier start, which this one carries on.
constexpr const char* kOldLog = "/data/adam/adam_20261101080000.log";
constexpr size_t kLogSizeMax = 30 * 1024 * 1024 - 1;  // bytes

void tourForwarded(TourStage& stage) {
  const Bytes data = bytesOf("from the modem");
  stage.indicate("Utility, type 0", "utility 0 'text:from the modem'",
                 genericUnsolicited(0, UNSOL_UTILITY_0.msgId, concat(hex("02"), data)));
  stage.indicate("Utility, type 2", "utility 2 'text:from the modem'",
                 genericUnsolicited(0, UNSOL_UTILITY_2.msgId, data));
  stage.indicate("Utility, type 3", "utility 3 'text:from the modem'",
                 genericUnsolicited(0, UNSOL_UTILITY_3.msgId, data));
  stage.indicate(
      "A package of performance indicators", "kpi 9 'text:attach 312 ms'",
      genericUnsolicited(1, UNSOL_KPI.msgId, concat(hex("EE FF C0 02"), bytesOf("attach 312 ms"))));
}

/// Sends a package of log and waits until it is in the log.
void collect(TourStage& stage, int package_id, const std::string& content) {
  stage.step(fmt::format("Package {} of {} bytes", package_id, content.size()));
  stage.tell(fmt::format("indicate log {} text:{}", package_id, content));
  stage.station().settle();
  stage.check(!stage.folder().readFile(fmt::format("/data/adam/~adam{:04}.log", package_id)),
              "it was taken, and the file that it was collected in is gone");
}

void showDirectory(TourStage& stage, const char* title) {
  stage.step(title);
  stage.show(listLogs(logEntries(stage.folder())));
}

}  // namespace

void tourModemLogs(TourStage& stage) {
  stage.section("Modem logs");
  tourForwarded(stage);

  const Folder& folder = stage.folder();
  const std::string earlier = "what was logged before the restart\n";
  folder.writeFile(kOldLog, earlier);
  std::filesystem::create_symlink(kOldLog, folder.path("/data/adam/.0001"));
  const std::string content(1200, 'm');  // of three packets
  collect(stage, 3, content);
  stage.check(folder.readFile(kOldLog) == bytesOf(earlier + content),
              "the log of the start before goes on with the package, without its header");

  // A hole, which takes no room, stands for the megabytes between.
  std::filesystem::resize_file(folder.path(kOldLog), kLogSizeMax - content.size() + 1);
  showDirectory(stage, "The directory before a package that would make the log 30 MiB");
  collect(stage, 4, content);
  showDirectory(stage, "The directory after it");

  const std::vector<LogEntry> entries = logEntries(folder);
  const bool linked = entries.size() == 4 && entries[0].target && entries[1].target == kOldLog;
  stage.check(linked, "the old log is the previous one now");
  stage.check(linked && folder.readFile(*entries[0].target) == bytesOf(content),
              "the new one holds the package");
  const auto dropbox = folder.dropboxEntries();
  const bool handed_over =
      dropbox.size() == 1 && dropbox[0].tag == "modem_adam" && dropbox[0].text == kOldLog;
  stage.check(handed_over,
              fmt::format("the drop-box has, under {}: {}", dropbox.empty() ? "nothing" : dropbox[0].tag,
                          dropbox.empty() ? "nothing" : dropbox[0].text));
}

}  // namespace tools
