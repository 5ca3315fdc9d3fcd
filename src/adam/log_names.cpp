#include "adam/log_names.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <ctime>

#include "core/ground/device_file.h"
#include "core/ground/log.h"

namespace kesext {

namespace {

constexpr const char* kLogPrefix = "/data/adam/adam";
constexpr const char* kPackagePrefix = "/data/adam/~adam";
constexpr const char* kLogSuffix = ".log";

/// The bound of a link's path and of its target, in bytes: the last byte of a path stays the terminator.
constexpr size_t kLinkTextMax = kLogPathSize - 1;

/// The local time, or 1900-01-01 00:00:00 when it cannot be told.
tm localTime() {
  const time_t now = std::time(nullptr);
  if (const tm* local = std::localtime(&now)) return *local;
  tm unknown{};
  unknown.tm_mday = 1;
  return unknown;
}

}  // namespace

void adam_get_index_filename(LogIndex index, LogPath& path) {
  path.fill('\0');
  std::snprintf(path.data(), kLinkTextMax, "%s/.%04d", kLogDirectory, index);
  LOGE("adam_get_index_filename: index name %s", path.data());
}

int adam_get_filename(LogIndex index, LogPath& path) {
  LogPath link;
  adam_get_index_filename(index, link);
  path.fill('\0');
  if (readlink(DevicePath(link.data()).text(), path.data(), kLinkTextMax) < 0) {
    LOGE("adam_get_filename: get real name of %s failed, rc %d", link.data(), errno);
    return -1;
  }
  return logFileExists(path) ? 0 : -1;
}

LogPath newLogPath() {
  const tm now = localTime();
  LogPath path{};
  std::snprintf(path.data(), path.size(), "%s_%04d%02d%02d%02d%02d%02d%s", kLogPrefix, now.tm_year + 1900,
                now.tm_mon + 1, now.tm_mday, now.tm_hour, now.tm_min, now.tm_sec, kLogSuffix);
  return path;
}

LogPath packagePath(uint8_t package_id) {
  LogPath path{};
  std::snprintf(path.data(), path.size(), "%s%04d%s", kPackagePrefix, package_id, kLogSuffix);
  return path;
}

bool logFileExists(const LogPath& path) {
  struct stat status {};
  // A file whose size or time has no room in `status` is there all the same.
  return stat(DevicePath(path.data()).text(), &status) == 0 || errno == EOVERFLOW;
}

}  // namespace kesext
