// Files and system properties of the handset as a scenario describes them: to be made so, or expected to be
// so.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "handset/bytes.h"
#include "handset/folder.h"

namespace tools {

struct FileDescription {
  std::string path;                       // of the handset
  std::optional<handset::Bytes> content;  // with a size, only what it begins with
  std::optional<uint64_t> size;           // bytes
  std::optional<std::string> link;        // what a link leads to
  bool absent = false;
};

inline constexpr std::string_view kFileFormat =
    R"({"path": P, "text": T | "bytes": B, "size": N, "link": P, "absent": true})";

/// Throws UsageError.
FileDescription readFileDescription(const nlohmann::ordered_json& value);

/// Makes the file as it is described; a size without content cuts or extends what is there, with a hole that
/// takes no room. Throws std::system_error or std::runtime_error where the file system refuses.
void makeFile(const handset::Folder& folder, const FileDescription& wanted);

/// What is not as it is described, a text for each.
std::vector<std::string> compareFile(const handset::Folder& folder, const FileDescription& expected);

using PropertyTexts = std::vector<std::pair<std::string, std::optional<std::string>>>;

/// System properties with their values; nothing for one that is not there. Throws UsageError.
PropertyTexts readPropertyTexts(const nlohmann::ordered_json& value);

void makeProperties(const handset::Folder& folder, const PropertyTexts& wanted);

std::vector<std::string> compareProperties(const handset::Folder& folder, const PropertyTexts& expected);

}  // namespace tools
