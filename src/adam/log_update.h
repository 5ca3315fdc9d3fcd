// The current modem log: it grows by one package at a time, until it is old or large enough for a new one.
#pragma once

namespace kesext {

/// Appends the file of a finished package to the current log and deletes it. Before that, when it is time,
/// the current log is handed to the drop-box and a new one begun. Every failure is logged and ends it.
void adam_update_current_log(const char* temp_path);

}  // namespace kesext
