#include "adam/log_directory.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <memory>

#include "core/ground/device_file.h"
#include "core/ground/log.h"

namespace kesext {

namespace {

constexpr mode_t kNewLogMode = 0740;
/// How far the time of a stray file may lie from now, either way, before it is deleted.
constexpr double kStrayAgeMax = 172'799;  // seconds

struct CloseDirectory {
  void operator()(DIR* directory) const { closedir(directory); }
};
using Directory = std::unique_ptr<DIR, CloseDirectory>;

Directory openLogDirectory() {
  return Directory(opendir(DevicePath(kLogDirectory).text()));
}

bool isSelfOrParent(const char* name) {
  return std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0;
}

/// The path of an entry of the directory. False when it does not fit; a cut path would be another file's.
bool entryPath(const char* name, LogPath& path) {
  const int length = std::snprintf(path.data(), path.size(), "%s/%s", kLogDirectory, name);
  return length >= 0 && static_cast<size_t>(length) < path.size();
}

void deleteFile(const LogPath& path) {
  (void)std::remove(DevicePath(path.data()).text());
}

bool isIndexed(const LogPath& path) {
  for (const LogIndex index : {kCurrentLog, kPreviousLog}) {
    LogPath target;
    if (adam_get_filename(index, target) == 0 && std::strcmp(path.data(), target.data()) == 0) return true;
  }
  return false;
}

/// Deletes visible files that are neither log and were last written two days ago or more.
void adam_clean_dir() {
  const time_t now = std::time(nullptr);
  const Directory directory = openLogDirectory();
  if (!directory) {
    LOGE("adam_clean_dir: can't open %s, errno %d", kLogDirectory, errno);
    return;
  }
  while (const dirent* entry = readdir(directory.get())) {
    if (entry->d_name[0] == '.') continue;
    LogPath path;
    if (!entryPath(entry->d_name, path) || isIndexed(path)) continue;
    struct stat status {};
    if (stat(DevicePath(path.data()).text(), &status) != 0) continue;
    if (std::fabs(std::difftime(now, status.st_mtime)) <= kStrayAgeMax) continue;
    LOGE("adam_clean_dir: unexpected %s", path.data());
    deleteFile(path);
  }
}

}  // namespace

int adam_create_new_log(LogPath& path) {
  LogPath name = newLogPath();
  {
    const DeviceFile created(name.data(), O_RDWR | O_CREAT | O_TRUNC, kNewLogMode);
    if (!created) {
      LOGE("adam_create_new_log: create new log %s failed, errno %d", name.data(), errno);
      return -1;
    }
  }
  path = name;
  LOGE("adam_create_new_log: create new %s.", path.data());
  // Each link takes the name that the one before it gave up.
  for (const LogIndex index : {kCurrentLog, kPreviousLog}) {
    LogPath old_target;
    adam_get_filename(index, old_target);
    LogPath link;
    adam_get_index_filename(index, link);
    deleteFile(link);
    if (logFileExists(name)) (void)!symlink(name.data(), DevicePath(link.data()).text());
    if (!logFileExists(old_target)) return 0;
    name = old_target;
  }
  deleteFile(name);
  LOGE("adam_create_new_log: remove old %s", name.data());
  adam_clean_dir();
  return 0;
}

void adam_reset_dir() {
  const Directory directory = openLogDirectory();
  if (!directory) {
    LOGE("adam_reset_dir: can't open %s, errno %d", kLogDirectory, errno);
    return;
  }
  while (const dirent* entry = readdir(directory.get())) {
    LogPath path;
    if (isSelfOrParent(entry->d_name) || entry->d_name[0] == '~' || !entryPath(entry->d_name, path)) continue;
    deleteFile(path);
  }
  LOGE("adam_reset_dir DONE!");
}

}  // namespace kesext
