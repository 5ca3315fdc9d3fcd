#include "tools/scenario/files.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <limits>

#include "tools/records/difference.h"
#include "tools/scenario/values.h"
#include "tools/text/usage_error.h"

namespace tools {

namespace {

namespace fs = std::filesystem;
using handset::Bytes;
using handset::ByteView;
using handset::Folder;

constexpr int kLinksMax = 8;

/// A path of the handset, which must not lead out of its folder.
std::string pathOf(const Json& value) {
  const fs::path path = textOf(value);
  bool leads_up = false;
  for (const fs::path& part : path)
    leads_up = leads_up || part == "..";
  if (!path.is_absolute() || leads_up || !path.has_filename())
    throw UsageError(
        fmt::format("a path begins with /, has no .. and names a file, unlike '{}'", path.string()));
  return path;
}

/// Where links of the handset lead in the end: they carry the handset's own paths.
std::string throughLinks(const Folder& folder, std::string path) {
  std::error_code error;
  for (int i = 0; i < kLinksMax && fs::is_symlink(folder.path(path), error); ++i)
    path = fs::path(path).parent_path() / fs::read_symlink(folder.path(path), error);
  return path;
}

std::optional<std::string> linkTarget(const Folder& folder, const std::string& path) {
  std::error_code error;
  const fs::path target = fs::read_symlink(folder.path(path), error);
  if (error) return std::nullopt;
  return target.string();
}

std::vector<std::string> compareContent(const Bytes& content, const FileDescription& expected) {
  std::vector<std::string> wrong;
  if (expected.size && *expected.size != content.size())
    wrong.push_back(fmt::format("size: expected {} bytes, not {}", *expected.size, content.size()));
  if (!expected.content) return wrong;
  const ByteView looked_at =
      expected.size ? ByteView(content).first(std::min(content.size(), expected.content->size())) : content;
  if (!std::equal(looked_at.begin(), looked_at.end(), expected.content->begin(), expected.content->end()))
    wrong.push_back(difference(looked_at, *expected.content));
  return wrong;
}

}  // namespace

FileDescription readFileDescription(const Json& value) {
  constexpr std::string_view kKeys[] = {"path", "text", "bytes", "size", "link", "absent"};
  checkKeys(value, kKeys);
  if (!value.contains("path")) throw UsageError("needs a path");
  FileDescription file{.path = pathOf(value.at("path"))};
  if (value.contains("text")) file.content = handset::bytesOf(textOf(value.at("text")));
  if (value.contains("bytes")) file.content = bytesIn(value.at("bytes"));
  if (value.contains("size"))
    file.size = static_cast<uint64_t>(numberOf(value.at("size"), 0, std::numeric_limits<int32_t>::max()));
  if (value.contains("link")) file.link = pathOf(value.at("link"));
  if (value.contains("absent") && value.at("absent") != true) throw UsageError("absent: takes true");
  file.absent = value.contains("absent");
  const int kinds = (file.content || file.size ? 1 : 0) + (file.link ? 1 : 0) + (file.absent ? 1 : 0);
  if (kinds != 1 || (value.contains("text") && value.contains("bytes")))
    throw UsageError("needs text or bytes, a size, or both; or a link; or absent");
  return file;
}

void makeFile(const Folder& folder, const FileDescription& wanted) {
  if (wanted.absent || wanted.link) fs::remove(folder.path(wanted.path));
  if (wanted.absent) return;
  if (wanted.link) {
    folder.makeFolder(fs::path(wanted.path).parent_path().string());
    fs::create_symlink(*wanted.link, folder.path(wanted.path));
    return;
  }
  const std::string path = throughLinks(folder, wanted.path);
  if (wanted.content || !fs::exists(folder.path(path)))
    folder.writeFile(path, wanted.content.value_or(Bytes{}));
  if (wanted.size) fs::resize_file(folder.path(path), *wanted.size);
}

std::vector<std::string> compareFile(const Folder& folder, const FileDescription& expected) {
  std::vector<std::string> wrong;
  const std::optional<std::string> target = linkTarget(folder, expected.path);
  const std::optional<Bytes> content = folder.readFile(throughLinks(folder, expected.path));
  if (expected.absent) {
    if (fs::exists(fs::symlink_status(folder.path(expected.path))))
      wrong.emplace_back("expected absent, and it is there");
  } else if (expected.link) {
    if (target != expected.link)
      wrong.push_back(fmt::format("expected a link to {}, not {}", *expected.link, target.value_or("none")));
  } else if (!content) {
    wrong.emplace_back("there is no such file");
  } else {
    wrong = compareContent(*content, expected);
  }
  for (std::string& text : wrong)
    text = fmt::format("{}: {}", expected.path, text);
  return wrong;
}

PropertyTexts readPropertyTexts(const Json& value) {
  constexpr size_t kValueMax = 91;  // characters
  needObject(value);
  PropertyTexts properties;
  for (const auto& [name, text] : value.items()) {
    if (name.empty() || name.starts_with('.') || name.find('/') != std::string::npos)
      throw UsageError(fmt::format("'{}' is no name of a property", name));
    if (!text.is_null() && textOf(text).size() > kValueMax)
      throw UsageError(fmt::format("{}: a property's value has at most {} characters", name, kValueMax));
    properties.emplace_back(name, text.is_null() ? std::nullopt : std::optional(textOf(text)));
  }
  return properties;
}

void makeProperties(const Folder& folder, const PropertyTexts& wanted) {
  for (const auto& [name, text] : wanted) {
    if (text)
      folder.setProperty(name, *text);
    else
      fs::remove(folder.path("/properties/" + name));
  }
}

std::vector<std::string> compareProperties(const Folder& folder, const PropertyTexts& expected) {
  const std::string none = "(not set)";
  std::vector<std::string> wrong;
  for (const auto& [name, text] : expected) {
    const std::optional<std::string> found = folder.property(name);
    if (found != text)
      wrong.push_back(
          fmt::format("{}: expected {}, not {}", name, text.value_or(none), found.value_or(none)));
  }
  return wrong;
}

}  // namespace tools
