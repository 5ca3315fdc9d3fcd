#include "adam/log_update.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>

#include "adam/adam_state.h"
#include "adam/log_directory.h"
#include "adam/log_names.h"
#include "core/ground/device_file.h"
#include "core/ground/log.h"
#include "platform/dropbox.h"

namespace kesext {

namespace {

constexpr double kRotationPeriod = 43'200;                  // seconds
constexpr off_t kLogSizeMax = off_t{30} * 1024 * 1024 - 1;  // bytes
constexpr size_t kCopyChunk = 256;                          // bytes
constexpr const char* kDropBoxTag = "modem_adam";

constexpr mode_t kAppendMode = 0770;
constexpr mode_t kWrittenLogMode = 0660;
constexpr gid_t kLogGroup = 2002;

/// Whether a new log is to be begun. The first package begins the rotation period.
bool startsNewLog(off_t log_size, off_t package_size) {
  const time_t now = std::time(nullptr);
  if (adam_state.last_handoff == 0)
    adam_state.last_handoff = now;
  else if (std::difftime(now, adam_state.last_handoff) >= kRotationPeriod)
    return true;
  return package_size > kLogSizeMax - log_size;
}

/// Hands the current log over and begins a new one. False when there is no new one.
bool rotate(off_t log_size, LogPath& current_log) {
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

/// Lets the log's readers at a log that is about to get its first bytes.
void shareLog(const DeviceFile& log, const char* path) {
  if (fchown(log.descriptor(), getuid(), kLogGroup) != 0)
    LOGE("adam_update_current_log: Unable to chown %s, errno %d", path, errno);
  if (fchmod(log.descriptor(), kWrittenLogMode) != 0)
    LOGE("adam_update_current_log: Unable to chmod %s, errno %d", path, errno);
}

ssize_t readChunk(const DeviceFile& file, char (&chunk)[kCopyChunk]) {
  ssize_t count = 0;
  do {
    count = read(file.descriptor(), chunk, sizeof chunk);
  } while (count < 0 && errno == EINTR);
  return count;
}

/// Copies the package to the end of the log. What a full disk does not take is lost with the package, never
/// what the log holds already. False, after a log line, when the package cannot be read.
bool copyPackage(const DeviceFile& package, const char* package_path, const DeviceFile& log) {
  char chunk[kCopyChunk];
  ssize_t count = 0;
  while ((count = readChunk(package, chunk)) > 0)
    (void)!write(log.descriptor(), chunk, static_cast<size_t>(count));
  if (count == 0) return true;
  LOGE("adam_update_current_log: Unable to read %s, errno %d", package_path, errno);
  return false;
}

/// Appends the package's file to the log. False, after a log line, when it was not read to its end.
bool appendPackage(const char* package_path, const char* log_path, bool log_is_empty) {
  const DeviceFile log(log_path, O_RDWR | O_CREAT | O_APPEND, kAppendMode);
  const DeviceFile package(package_path, O_RDONLY);
  if (!log || !package) {
    LOGE("adam_update_current_log: Unable to open files, errno %d", errno);
    return false;
  }
  if (log_is_empty) shareLog(log, log_path);
  if (!copyPackage(package, package_path, log)) return false;
  fsync(log.descriptor());
  fsync(package.descriptor());
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
  off_t log_size = log.st_size;
  if (startsNewLog(log_size, package.st_size)) {
    if (!rotate(log_size, current_log)) return;
    log_size = 0;
  }
  if (!appendPackage(temp_path, current_log.data(), log_size == 0)) return;
  LOGE("adam_update_current_log: update %s succeed.", current_log.data());
  (void)unlink(DevicePath(temp_path).text());
}

}  // namespace kesext
