#include "adam/log_directory.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <memory>

#include "core/ground/device_file.h"
#include "core/ground/log.h"

namespace kesext {

namespace {

/// Left by a killed process, it is one that the clean-up takes.
constexpr const char* kNewLink = "/data/adam/adam.new";
constexpr mode_t kNewLogMode = 0740;
/// How far the time of a stray may lie from now, either way, before it is deleted.
constexpr double kStrayAgeMax = 172'799;  // seconds

struct CloseDirectory {
  void operator()(DIR* directory) const { closedir(directory); }
};

/// Visits each entry of the log directory, by the directory's descriptor and the entry's name. False, after a
/// log line in the name of `operation`, when the directory was not read to its end.
template <typename Visit>
bool visitEntries(const char* operation, Visit visit) {
  const std::unique_ptr<DIR, CloseDirectory> directory(opendir(DevicePath(kLogDirectory).text()));
  if (!directory) {
    LOGE("%s: can't open %s, errno %d", operation, kLogDirectory, errno);
    return false;
  }
  const dirent* entry = nullptr;
  for (errno = 0; (entry = readdir(directory.get())) != nullptr; errno = 0)
    visit(dirfd(directory.get()), entry->d_name);
  if (errno == 0) return true;
  LOGE("%s: can't read %s, errno %d", operation, kLogDirectory, errno);
  return false;
}

bool isSelfOrParent(const char* name) {
  return std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0;
}

/// Deletes a file or an empty directory.
void deleteEntry(int directory, const char* name) {
  if (unlinkat(directory, name, 0) != 0) (void)unlinkat(directory, name, AT_REMOVEDIR);
}

void deleteFile(const LogPath& path) {
  (void)std::remove(DevicePath(path.data()).text());
}

bool isIndexed(const char* path) {
  for (const LogIndex index : {kCurrentLog, kPreviousLog}) {
    LogPath target;
    if (adam_get_filename(index, target) == 0 && std::strcmp(path, target.data()) == 0) return true;
  }
  return false;
}

/// Deletes visible entries that are neither log and whose time lies two days or more from now, either way.
void adam_clean_dir() {
  const time_t now = std::time(nullptr);
  visitEntries("adam_clean_dir", [now](int directory, const char* name) {
    if (name[0] == '.') return;
    char path[kLogPathSize + NAME_MAX];
    std::snprintf(path, sizeof path, "%s/%s", kLogDirectory, name);
    struct stat status {};
    if (isIndexed(path) || fstatat(directory, name, &status, 0) != 0) return;
    if (std::fabs(std::difftime(now, status.st_mtime)) <= kStrayAgeMax) return;
    LOGE("adam_clean_dir: unexpected %s", path);
    deleteEntry(directory, name);
  });
}

/// Makes an index link lead to `target`. It is moved over the old one, so that there is one at every moment.
/// False when it cannot be made; the old one stays.
bool replaceLink(const LogPath& link, const LogPath& target) {
  const DevicePath made(kNewLink);
  const DevicePath place(link.data());
  (void)std::remove(made.text());
  (void)rmdir(place.text());  // a link cannot be moved over a directory
  if (symlink(target.data(), made.text()) != 0) return false;
  if (std::rename(made.text(), place.text()) == 0) return true;
  (void)std::remove(made.text());
  return false;
}

}  // namespace

int adam_create_new_log(LogPath& path) {
  LogPath name = newLogPath();
  if (!DeviceFile(name.data(), O_RDWR | O_CREAT | O_TRUNC, kNewLogMode)) {
    LOGE("adam_create_new_log: create new log %s failed, errno %d", name.data(), errno);
    return -1;
  }
  path = name;
  LOGE("adam_create_new_log: create new %s.", path.data());
  // Each link takes the name that the one before it gave up.
  for (const LogIndex index : {kCurrentLog, kPreviousLog}) {
    LogPath old_target;
    adam_get_filename(index, old_target);
    LogPath link;
    adam_get_index_filename(index, link);
    if (!logFileExists(name))
      deleteFile(link);
    else if (!replaceLink(link, name))
      return 0;
    if (!logFileExists(old_target)) return 0;
    name = old_target;
  }
  deleteFile(name);
  LOGE("adam_create_new_log: remove old %s", name.data());
  adam_clean_dir();
  return 0;
}

void adam_reset_dir() {
  const bool emptied = visitEntries("adam_reset_dir", [](int directory, const char* name) {
    if (!isSelfOrParent(name) && name[0] != '~') deleteEntry(directory, name);
  });
  if (emptied) LOGE("adam_reset_dir DONE!");
}

}  // namespace kesext
