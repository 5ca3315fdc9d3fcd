#include "tools/scenario/files.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <limits>

#include "tools/records/field_value.h"
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
  const bool leads_up = std::find(path.begin(), path.end(), "..") != path.end();
  if (!path.is_absolute() || leads_up || !path.has_filename())
    throw UsageError(
        fmt::format("a path begins with /, has no .. and names a file, unlike '{}'", path.string()));
  return path;
}

/// What a link leads to, as a path of the handset; nothing when it is no link.
std::optional<std::string> linkTarget(const Folder& folder, const std::string& path) {
  std::error_code error;
  const fs::path target = fs::read_symlink(folder.path(path), error);
  return error ? std::nullopt : std::optional(fs::path(path).parent_path() / target);
}

/// Where links of the handset lead in the end.
std::string throughLinks(const Folder& folder, std::string path) {
  for (int i = 0; i < kLinksMax; ++i)
    path = linkTarget(folder, path).value_or(path);
  return path;
}

/// Short texts as such, anything else by the first bytes that differ.
std::string contentDifference(ByteView found, ByteView expected) {
  constexpr size_t kShown = 64;
  const auto is_text = [](ByteView bytes) {
    const auto in_line = [](uint8_t byte) { return byte == '\n' || (byte >= 0x20 && byte < 0x7F); };
    return bytes.size() <= kShown && std::all_of(bytes.begin(), bytes.end(), in_line);
  };
  if (!is_text(found) || !is_text(expected)) return " " + difference(found, expected);
  return fmt::format(": expected {}, not {}", quoted(expected), quoted(found));
}

std::string compareContent(const std::string& path, const FileDescription& expected) {
  std::error_code error;
  const uintmax_t size = fs::file_size(path, error);
  std::ifstream file(path, std::ios::binary);
  if (error || !file) return " is not there";
  if (expected.size.value_or(size) != size)
    return fmt::format(": expected {} bytes, not {}", *expected.size, size);
  if (!expected.content) return "";
  Bytes found(expected.size || expected.at ? expected.content->size() : static_cast<size_t>(size));
  file.seekg(static_cast<std::streamoff>(expected.at.value_or(0)));
  file.read(reinterpret_cast<char*>(found.data()), static_cast<std::streamsize>(found.size()));
  found.resize(static_cast<size_t>(file.gcount()));
  if (expected.property && !found.empty() && found.back() == '\n') found.pop_back();
  return found == *expected.content ? "" : contentDifference(found, *expected.content);
}

}  // namespace

FileDescription readFile(const Json& value) {
  constexpr std::string_view kKeys[] = {"path", "text", "bytes", "at", "size", "link", "absent"};
  checkKeys(value, kKeys);
  const auto has = [&value](const char* key) { return value.contains(key); };
  const auto number = [&value](const char* key) -> std::optional<uint64_t> {
    constexpr int64_t kMost = std::numeric_limits<int32_t>::max();
    if (!value.contains(key)) return std::nullopt;
    return static_cast<uint64_t>(numberOf(value.at(key), 0, kMost));
  };
  if (!has("path")) throw UsageError("needs a path");
  if (has("absent") && value.at("absent") != true) throw UsageError("absent: takes true");
  FileDescription file{
      .path = pathOf(value.at("path")), .size = number("size"), .at = number("at"), .absent = has("absent")};
  file.name = file.path;
  if (has("text")) file.content = handset::bytesOf(textOf(value.at("text")));
  if (has("bytes")) file.content = bytesIn(value.at("bytes"));
  if (has("link")) file.link = pathOf(value.at("link"));
  const int kinds = (file.content || file.size ? 1 : 0) + (file.link ? 1 : 0) + (file.absent ? 1 : 0);
  if (kinds != 1 || (has("text") && has("bytes")) || (file.at && !file.content))
    throw UsageError("needs text or bytes, maybe at a place, or a size, or both; or a link; or absent");
  return file;
}

std::vector<FileDescription> readProperties(const Json& value) {
  constexpr size_t kValueMax = 91;  // characters
  needObject(value);
  std::vector<FileDescription> files;
  for (const auto& [name, text] : value.items()) {
    if (name.empty() || name.starts_with('.') || name.find('/') != std::string::npos)
      throw UsageError(fmt::format("'{}' is no name of a property", name));
    if (!text.is_null() && textOf(text).size() > kValueMax)
      throw UsageError(fmt::format("{}: a property's value has at most {} characters", name, kValueMax));
    FileDescription file{
        .name = name, .path = "/properties/" + name, .absent = text.is_null(), .property = true};
    if (!file.absent) file.content = handset::bytesOf(textOf(text));
    files.push_back(file);
  }
  return files;
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
    folder.writeFileAt(path, wanted.at.value_or(0), wanted.content.value_or(Bytes{}));
  if (wanted.size) fs::resize_file(folder.path(path), *wanted.size);
}

std::string compareFile(const Folder& folder, const FileDescription& expected) {
  const std::optional<std::string> target = linkTarget(folder, expected.path);
  std::string wrong;
  if (expected.absent)
    wrong = target || fs::exists(folder.path(expected.path)) ? " is there, and should not be" : "";
  else if (!expected.link)
    wrong = compareContent(folder.path(throughLinks(folder, expected.path)), expected);
  else if (target != expected.link)
    wrong = fmt::format(": expected a link to {}, not {}", *expected.link, target.value_or("something else"));
  return wrong.empty() ? "" : expected.name + wrong;
}

}  // namespace tools
