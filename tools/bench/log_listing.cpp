#include "tools/bench/log_listing.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>

namespace tools {

namespace {

std::string_view meaning(const handset::LogEntry& entry) {
  if (entry.dangling) return "  leads nowhere";
  if (entry.name == ".0001") return "  the current log";
  if (entry.name == ".0002") return "  the previous log";
  if (entry.name.starts_with('~')) return "  a package being collected";
  return "";
}

}  // namespace

std::string listLogs(const std::vector<handset::LogEntry>& entries) {
  if (entries.empty()) return "    (empty)\n";
  size_t width = 0;
  for (const handset::LogEntry& entry : entries)
    width = std::max(width, entry.name.size());
  std::string lines;
  for (const handset::LogEntry& entry : entries) {
    if (entry.target)
      lines += fmt::format("    {:<{}}  -> {}{}\n", entry.name, width, *entry.target, meaning(entry));
    else
      lines += fmt::format("    {:<{}}  {:>12} bytes  {:04o}{}\n", entry.name, width, entry.size, entry.mode,
                           meaning(entry));
  }
  return lines;
}

}  // namespace tools
