// The modem logs' directory as a person wants to look at it.
#pragma once

#include <string>
#include <vector>

#include "handset/modem_logs.h"

namespace tools {

/// A line for each entry: name, size in bytes, mode, and where a link leads. "(empty)" when there is none.
std::string listLogs(const std::vector<handset::LogEntry>& entries);

}  // namespace tools
