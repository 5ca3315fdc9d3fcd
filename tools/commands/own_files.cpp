#include "tools/commands/own_files.h"

#include <fmt/format.h>

#include <array>
#include <filesystem>
#include <system_error>
#include <utility>

#include "tools/text/usage_error.h"

namespace tools {

namespace {

namespace fs = std::filesystem;

std::array<fs::path, 2> places(const OwnFile& file) {
  const fs::path beside = fs::read_symlink("/proc/self/exe").parent_path();
  return {beside, (beside / file.folder).lexically_normal()};
}

}  // namespace

std::optional<std::string> find(const OwnFile& file) {
  std::error_code unreachable;
  for (const fs::path& place : places(file))
    if (fs::exists(place / file.name, unreachable)) return place / file.name;
  return std::nullopt;
}

std::string need(const OwnFile& file) {
  if (auto found = find(file)) return *std::move(found);
  const auto [beside, installed] = places(file);
  throw UsageError(fmt::format("{} is neither in {} nor in {}; {}", file.name, beside.string(),
                               installed.string(), file.instead));
}

}  // namespace tools
