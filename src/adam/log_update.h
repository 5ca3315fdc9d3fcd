// The current modem log: it grows by one package at a time, until it is full or its period is over.
#pragma once

namespace kesext {

/// Appends the file of a finished package to the current log and deletes it. Before that a new log is begun,
/// when it is due; the current one, unless it is empty, is first handed to the drop-box. Where the package
/// does not get into the log, a log line tells why and its file stays.
void adam_update_current_log(const char* temp_path);

}  // namespace kesext
