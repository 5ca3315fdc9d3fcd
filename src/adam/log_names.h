// The names in the modem logs' directory:
//
//   adam_YYYYMMDDhhmmss.log   a log file, by the local time of its creation
//   .0001                     a symbolic link to the current log
//   .0002                     a symbolic link to the previous log
//   adam.new                  a link that is about to be moved over one of these two
//   ~adamNNNN.log             the package NNNN, until a log holds it
//
// The links are the only record of which log is which, so that it survives a restart.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace kesext {

inline constexpr const char* kLogDirectory = "/data/adam";

/// Room for the path of a log, a link or a package, with its terminator, in bytes.
inline constexpr size_t kLogPathSize = 150;
using LogPath = std::array<char, kLogPathSize>;

/// What the index links lead to.
enum LogIndex : int { kCurrentLog = 1, kPreviousLog = 2 };

/// Stores the path of an index link, and logs it.
void adam_get_index_filename(LogIndex index, LogPath& path);

/// Stores the path that an index link leads to; empty, with a log line, when it cannot be read. 0 when there
/// is such a file, else -1.
int adam_get_filename(LogIndex index, LogPath& path);

/// The path of a log file that is created now.
LogPath newLogPath();

/// The path of the file that a package's packets are collected in.
LogPath packagePath(uint8_t package_id);

/// Whether there is a file at this path.
bool logFileExists(const LogPath& path);

}  // namespace kesext
