// The modem logs' directory: a new log and what goes for it.
#pragma once

#include "adam/log_names.h"

namespace kesext {

/// Creates a new log file, makes it the current and the current one the previous log. Where there was a
/// previous one too, that and old strays are deleted; otherwise nothing is. A link that cannot be made ends
/// this early: it and what follows stay as they were. Stores the new file's path and returns 0; leaves `path`
/// alone and returns -1, after a log line, when the file cannot be created.
int adam_create_new_log(LogPath& path);

/// Deletes links, logs and all else that can be deleted; what begins with '~', as packages do, stays.
void adam_reset_dir();

}  // namespace kesext
