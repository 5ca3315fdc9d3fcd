// The modem logs' directory as a test compares it.
#pragma once

#include <string>
#include <vector>

#include "handset/modem_logs.h"

namespace kesext_test {

/// Its entries, links first: "NAME", or "NAME -> TARGET" of a link.
inline std::vector<std::string> logListing(const handset::Folder& folder) {
  std::vector<std::string> entries;
  for (const handset::LogEntry& entry : handset::logEntries(folder))
    entries.push_back(entry.target ? entry.name + " -> " + *entry.target : entry.name);
  return entries;
}

}  // namespace kesext_test
