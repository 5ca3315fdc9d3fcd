#include "tools/tour_modem_logs.h"

#include <fmt/format.h>

#include <filesystem>

#include "handset/hook_records.h"
#include "handset/modem_logs.h"
#include "tools/log_listing.h"

namespace tools {

namespace {

using namespace handset;

/// A log of an earlier start, which this one carries on.
constexpr const char* kOldLog = "/data/adam/adam_20261101080000.log";
constexpr size_t kLogSizeMax = 30 * 1024 * 1024 - 1;  // bytes

void tourForwarded(TourStage& stage) {
  const Bytes data = bytesOf("from the modem");
  stage.indicate("Utility, type 0", kUtilityIndicationId, utilityIndication(0, data),
                 genericUnsolicited(0, 0x03000B, concat(hex("02"), data)));
  stage.indicate("Utility, type 2", kUtilityIndicationId, utilityIndication(2, data),
                 genericUnsolicited(0, 0x04000C, data));
  stage.indicate("Utility, type 3", kUtilityIndicationId, utilityIndication(3, data),
                 genericUnsolicited(0, 0x04000E, data));
  const Bytes kpi = concat(le32(kKpiHeaders[0]), bytesOf("attach 312 ms"));
  stage.indicate("A package of performance indicators", kUtilityIndicationId,
                 logPacketIndication({.package_id = 9, .last = 1, .payload = kpi}),
                 genericUnsolicited(1, 0x040004, kpi));
}

/// Sends a package of log and waits until it is in the log.
void collect(TourStage& stage, uint8_t package_id, ByteView content) {
  const std::vector<Bytes> packets = logPackage(package_id, kLogHeader, content);
  stage.step(fmt::format("Package {} of {} bytes in {} packets", package_id, content.size(), packets.size()));
  for (const Bytes& packet : packets)
    stage.modem().indicate(kUtilityIndicationId, packet);
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
  const Bytes content(1200, 'm');
  collect(stage, 3, content);
  stage.check(folder.readFile(kOldLog) == concat(bytesOf(earlier), content),
              "the log of the start before goes on with the package, without its header");

  // A hole, which takes no room, stands for the megabytes between.
  std::filesystem::resize_file(folder.path(kOldLog), kLogSizeMax - content.size() + 1);
  showDirectory(stage, "The directory before a package that would make the log 30 MiB");
  collect(stage, 4, content);
  showDirectory(stage, "The directory after it");

  const std::vector<LogEntry> entries = logEntries(folder);
  const bool linked = entries.size() == 4 && entries[0].target && entries[1].target == kOldLog;
  stage.check(linked, "the old log is the previous one now");
  stage.check(linked && folder.readFile(*entries[0].target) == content, "the new one holds the package");
  const auto dropbox = folder.dropboxEntries();
  const bool handed_over =
      dropbox.size() == 1 && dropbox[0].tag == "modem_adam" && dropbox[0].text == kOldLog;
  stage.check(handed_over,
              fmt::format("the drop-box has, under {}: {}", dropbox.empty() ? "nothing" : dropbox[0].tag,
                          dropbox.empty() ? "nothing" : dropbox[0].text));
}

}  // namespace tools
