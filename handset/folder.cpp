#include "handset/folder.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace handset {
namespace {

namespace fs = std::filesystem;

constexpr fs::perms kEverybodyEntersAndWrites = fs::perms::all;
constexpr fs::perms kEverybodyWrites =
    fs::perms::all & ~(fs::perms::owner_exec | fs::perms::group_exec | fs::perms::others_exec);

// Folders that exist already keep their permissions, since they may be somebody else's.
void makeFolders(const fs::path& folder) {
  if (folder.empty() || fs::is_directory(folder)) return;
  makeFolders(folder.parent_path());
  fs::create_directory(folder);
  fs::permissions(folder, kEverybodyEntersAndWrites);
}

void writeWhole(const fs::path& path, ByteView bytes) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  file.close();
  if (!file) throw std::runtime_error("cannot write " + path.string());
  fs::permissions(path, kEverybodyWrites);
}

std::optional<std::string> readWhole(const fs::path& path) {
  std::error_code error;
  if (!fs::is_regular_file(path, error)) return std::nullopt;
  std::ifstream file(path, std::ios::binary);
  if (!file) return std::nullopt;
  std::ostringstream text;
  text << file.rdbuf();
  return std::move(text).str();
}

// Other processes rename and remove files meanwhile, so what is gone by the time it is looked at is left out.
std::vector<fs::path> filesIn(const fs::path& folder) {
  std::vector<fs::path> files;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(folder, error))
    files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  return files;
}

std::string makeTemporary() {
  std::string pattern = (fs::temp_directory_path() / "handset-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) {
    throw std::system_error(errno, std::generic_category(), pattern);
  }
  fs::permissions(pattern, kEverybodyEntersAndWrites);
  return pattern;
}

}  // namespace

Folder::Folder() : root_(makeTemporary()), temporary_(true) {
  prepare();
}

Folder::Folder(std::string root) : root_(std::move(root)), temporary_(false) {
  prepare();
}

Folder::~Folder() {
  if (!temporary_) return;
  std::error_code ignored;
  fs::remove_all(root_, ignored);
}

void Folder::prepare() const {
  for (const char* folder : {"/properties", "/dropbox", "/data"}) {
    makeFolder(folder);
    std::error_code not_ours;
    fs::permissions(path(folder), kEverybodyEntersAndWrites, not_ours);
  }
}

std::string Folder::path(std::string_view handset_path) const {
  return root_ + std::string(handset_path);
}

void Folder::makeFolder(std::string_view handset_path) const {
  makeFolders(path(handset_path));
}

void Folder::setProperty(const std::string& name, std::string_view value) const {
  replaceFile("/properties/" + name, value);
}

std::optional<std::string> Folder::property(const std::string& name) const {
  std::optional<std::string> value = readWhole(path("/properties/" + name));
  if (value && value->ends_with('\n')) value->pop_back();
  return value;
}

std::map<std::string, std::string> Folder::properties() const {
  std::map<std::string, std::string> all;
  for (const fs::path& file : filesIn(path("/properties"))) {
    const std::string name = file.filename();
    if (name.starts_with('.')) continue;
    if (const auto value = property(name)) all.emplace(name, *value);
  }
  return all;
}

std::vector<DropboxEntry> Folder::dropboxEntries() const {
  std::vector<DropboxEntry> entries;
  for (const fs::path& file : filesIn(path("/dropbox"))) {
    const std::string name = file.stem();
    const size_t at = name.rfind('@');
    if (file.extension() != ".txt" || at == std::string::npos) continue;
    const std::string number = name.substr(at + 1);
    if (number.empty() || number.size() > 18 || number.find_first_not_of("0123456789") != std::string::npos)
      continue;
    if (const auto text = readWhole(file)) entries.push_back({name.substr(0, at), std::stoll(number), *text});
  }
  std::stable_sort(entries.begin(), entries.end(), [](const DropboxEntry& a, const DropboxEntry& b) {
    return a.milliseconds < b.milliseconds;
  });
  return entries;
}

void Folder::writeFile(std::string_view handset_path, ByteView bytes) const {
  const fs::path file = path(handset_path);
  makeFolders(file.parent_path());
  writeWhole(file, bytes);
}

void Folder::writeFile(std::string_view handset_path, std::string_view text) const {
  writeFile(handset_path, bytesOf(text));
}

void Folder::replaceFile(std::string_view handset_path, std::string_view text) const {
  const fs::path target = path(handset_path);
  // Names that begin with a dot are no properties, so nobody takes the new file for one.
  const fs::path fresh = target.parent_path() / ("." + target.filename().string() + ".new");
  writeWhole(fresh, bytesOf(text));
  fs::rename(fresh, target);
}

void Folder::writeFileAt(std::string_view handset_path, uint64_t offset, ByteView bytes) const {
  writeFile(handset_path, ByteView{});
  const fs::path file = path(handset_path);
  fs::resize_file(file, offset);
  std::ofstream stream(file, std::ios::binary | std::ios::app);
  stream.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  if (!stream.flush()) throw std::runtime_error("cannot write " + file.string());
}

std::optional<Bytes> Folder::readFile(std::string_view handset_path) const {
  const std::optional<std::string> text = readWhole(path(handset_path));
  if (!text) return std::nullopt;
  return bytesOf(*text);
}

}  // namespace handset
