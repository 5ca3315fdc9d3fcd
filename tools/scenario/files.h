// Files and system properties of the handset as a scenario describes them: to be made so, or expected to be
// so.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "handset/folder.h"
#include "tools/scenario/values.h"

namespace tools {

struct FileDescription {
  std::string name;                       // for a person
  std::string path;                       // of the handset
  std::optional<handset::Bytes> content;  // all of it, unless there is a size or a place
  std::optional<uint64_t> size;           // bytes
  std::optional<uint64_t> at;             // where the content stands
  std::optional<std::string> link;        // what a link leads to
  bool absent = false;
  bool property = false;  // a line feed at its end is not the value's
};

inline constexpr std::string_view kFileFormat =
    R"({"path": P, "text": T | "bytes": B, "at": N, "size": N, "link": P, "absent": true})";

/// Throws UsageError.
FileDescription readFile(const Json& value);

/// {"NAME": "VALUE" or null, ...}: the files that hold the system properties. Throws UsageError.
std::vector<FileDescription> readProperties(const Json& value);

/// Makes the file as it is described. Without content a size cuts or extends what is there; what is then
/// before the content or behind it is a hole, which takes no room. Throws std::system_error or
/// std::runtime_error where the file system refuses.
void makeFile(const handset::Folder& folder, const FileDescription& wanted);

/// What is not as it is described; empty when all is.
std::string compareFile(const handset::Folder& folder, const FileDescription& expected);

}  // namespace tools
