// What is to be kept of the modem logs when calls fail, and when a process is killed.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "handset/modem_logs.h"

namespace faults {

using Texts = std::vector<std::string>;
using Logs = std::vector<handset::LogEntry>;

/// What is wrong behind a step: something that had been logged is lost, or a log has part of a package whose
/// file stays.
Texts disorderAfterStep(const Logs& before, const Logs& after);

/// What the modem logs to the process that is started then.
inline constexpr int kNextPackageId = 9;
inline constexpr std::string_view kNextPackage = "what came behind";

/// What is wrong once that has come: something that had been logged `before`, or was when the process had
/// been killed, is lost; a link does not lead to a log; an entry stays that no clean-up takes; the package is
/// not in the current log.
Texts disorderAfterKill(const handset::Folder& folder, const Logs& before, const Logs& killed);

}  // namespace faults
