#include "faults/kept_logs.h"

#include <fmt/format.h>

#include <algorithm>

namespace faults {
namespace {

constexpr const char* kCurrentLink = ".0001";
constexpr const char* kPreviousLink = ".0002";

const handset::LogEntry* find(const Logs& entries, std::string_view name) {
  const auto at = std::find_if(entries.begin(), entries.end(),
                               [&](const handset::LogEntry& entry) { return entry.name == name; });
  return at != entries.end() ? &*at : nullptr;
}

bool isPackage(const handset::LogEntry& entry) {
  return entry.name.starts_with('~');
}

uint64_t sizeIn(const Logs& entries, const std::string& name) {
  const handset::LogEntry* entry = find(entries, name);
  return entry != nullptr ? entry->size : 0;
}

/// Logs that have gone or become shorter. Only the previous one may go, to a rotation.
void findLost(const Logs& earlier, const Logs& later, bool rotates, Texts& wrong) {
  const handset::LogEntry* previous = rotates ? find(earlier, kPreviousLink) : nullptr;
  for (const handset::LogEntry& log : earlier) {
    if (log.target || isPackage(log)) continue;
    const handset::LogEntry* now = find(later, log.name);
    const bool may_go = previous != nullptr && previous->target && previous->target->ends_with(log.name);
    if (now == nullptr ? !may_go : now->size < log.size) wrong.push_back("lost: " + log.name);
  }
}

/// Logs that have grown by part of a package that stays in its file.
void findParts(const Logs& earlier, const Logs& later, Texts& wrong) {
  for (const handset::LogEntry& package : later) {
    if (!isPackage(package) || find(earlier, package.name) != nullptr) continue;
    for (const handset::LogEntry& log : later) {
      if (log.target || isPackage(log)) continue;
      const uint64_t grown = log.size - sizeIn(earlier, log.name);
      if (grown != 0 && grown != package.size) wrong.push_back("part of " + package.name + ": " + log.name);
    }
  }
}

}  // namespace

Texts disorderAfterStep(const Logs& before, const Logs& after) {
  Texts wrong;
  findLost(before, after, true, wrong);
  findParts(before, after, wrong);
  return wrong;
}

Texts disorderAfterKill(const handset::Folder& folder, const Logs& before, const Logs& killed) {
  const Logs now = handset::logEntries(folder);
  Texts wrong;
  findLost(before, killed, true, wrong);
  findLost(killed, now, false, wrong);
  for (const handset::LogEntry& entry : now) {
    const bool is_index = entry.name == kCurrentLink || entry.name == kPreviousLink;
    if (is_index && entry.dangling) wrong.push_back("leads nowhere: " + entry.name);
    if (!is_index && entry.name.starts_with('.')) wrong.push_back("no clean-up takes " + entry.name);
  }
  const handset::LogEntry* current = find(now, kCurrentLink);
  const auto log = folder.readFile(current != nullptr ? current->target.value_or("") : "");
  const bool collected = log && std::string(log->begin(), log->end()).ends_with(kNextPackage);
  if (!collected || find(now, fmt::format("~adam{:04}.log", kNextPackageId)) != nullptr)
    wrong.emplace_back("the next package is not collected");
  return wrong;
}

}  // namespace faults
