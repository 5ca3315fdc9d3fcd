#include "adam/log_update.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <ctime>

#include "adam/adam_state.h"
#include "adam/log_directory.h"
#include "adam/log_names.h"
#include "core/ground/device_file.h"
#include "core/ground/log.h"
#include "platform/dropbox.h"

namespace kesext {

namespace {

constexpr double kRotationPeriod = 43'200;             // seconds
constexpr int64_t kLogSizeMax = 30 * 1024 * 1024 - 1;  // bytes
constexpr int64_t kCopyChunk = 256;                    // bytes
constexpr const char* kDropBoxTag = "modem_adam";

constexpr mode_t kAppendMode = 0770;
constexpr mode_t kWrittenLogMode = 0660;
constexpr gid_t kLogGroup = 2002;

/// Whether a new log is to be begun before the package is appended.
bool startsNewLog(time_t now, int64_t log_size, int64_t package_size) {
  return std::difftime(now, adam_state.last_handoff) >= kRotationPeriod ||
         package_size > kLogSizeMax - log_size;
}

/// Begins a new log, once the current one is handed over unless it is empty. False when there is no new one.
bool rotate(int64_t log_size, LogPath& current_log) {
  if (log_size != 0) {
    LOGE("adam_update_current_log: send %s to dropbox.", current_log.data());
    adam_state.last_handoff = std::time(nullptr);
    if (!NativeDropBoxWriter::addText(kDropBoxTag, current_log.data()))
      LOGE("adam: send to dropbox failed!.");
  }
  if (adam_create_new_log(current_log) == 0) return true;
  LOGE("adam_update_current_log: can't create new log.");
  return false;
}

/// Logs what could not be done with a file, and why. Returns false.
bool unable(const char* what, const char* path) {
  LOGE("adam_update_current_log: Unable to %s %s, errno %d", what, path, errno);
  return false;
}

/// Lets the log's readers at a log that is about to get its first bytes.
void shareLog(const DeviceFile& log, const char* path) {
  if (fchown(log.descriptor(), getuid(), kLogGroup) != 0) unable("chown", path);
  if (fchmod(log.descriptor(), kWrittenLogMode) != 0) unable("chmod", path);
}

/// Copies `size` bytes, or up to the package's end. False, after a log line, unless the log has them all.
bool copyPackage(const DeviceFile& package, const char* package_path, int64_t size, const DeviceFile& log,
                 const char* log_path) {
  char chunk[kCopyChunk];
  ssize_t count = 0;
  while ((count = read(package.descriptor(), chunk, static_cast<size_t>(std::min(size, kCopyChunk)))) > 0) {
    errno = 0;  // a short write does not set it
    if (write(log.descriptor(), chunk, static_cast<size_t>(count)) != count) return unable("write", log_path);
    size -= count;
  }
  if (count < 0) return unable("read", package_path);
  return true;
}

/// Appends the package's file, of `size` bytes when it was looked at, to the log, which has `log_size`; no
/// more of it, as the log may be that file. False, after a log line, unless the log has it all in storage.
bool appendPackage(const char* package_path, int64_t size, const char* log_path, int64_t log_size) {
  const DeviceFile log(log_path, O_RDWR | O_CREAT | O_APPEND, kAppendMode);
  const DeviceFile package(package_path, O_RDONLY);
  if (!log || !package) {
    LOGE("adam_update_current_log: Unable to open files, errno %d", errno);
    return false;
  }
  if (log_size == 0) shareLog(log, log_path);
  if (!copyPackage(package, package_path, size, log, log_path)) {
    // Part of a package would be taken for the modem's own words.
    if (ftruncate(log.descriptor(), static_cast<off_t>(log_size)) != 0) unable("cut", log_path);
    return false;
  }
  if (fsync(log.descriptor()) != 0) return unable("flush", log_path);
  if (fsync(package.descriptor()) != 0) return unable("flush", package_path);
  return true;
}

}  // namespace

void adam_update_current_log(const char* temp_path) {
  struct stat package {};
  if (stat(DevicePath(temp_path).text(), &package) != 0) {
    LOGE("adam_update_current_log: Unable to stat temp files, errno %d", errno);
    return;
  }
  LogPath current_log;
  if (adam_get_filename(kCurrentLog, current_log) != 0) {
    LOGE("adam_update_current_log: Unable to get cur log file");
    LOGE("adam_update_current_log: clean the whole dir!");
    adam_reset_dir();
    adam_create_new_log(current_log);
  }
  struct stat log {};
  if (stat(DevicePath(current_log.data()).text(), &log) != 0) {
    LOGE("adam_update_current_log: Unable to stat cur log file %d", errno);
    return;
  }
  int64_t log_size = log.st_size;
  const time_t now = std::time(nullptr);
  if (adam_state.last_handoff == 0) adam_state.last_handoff = now;  // the first period begins
  if (startsNewLog(now, log_size, package.st_size)) {
    if (!rotate(log_size, current_log)) return;
    log_size = 0;
  }
  if (!appendPackage(temp_path, package.st_size, current_log.data(), log_size)) return;
  LOGE("adam_update_current_log: update %s succeed.", current_log.data());
  (void)unlink(DevicePath(temp_path).text());
}

}  // namespace kesext
