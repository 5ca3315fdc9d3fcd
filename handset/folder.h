// The folder that stands for a handset's file system.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "handset/bytes.h"

namespace handset {

struct DropboxEntry {
  std::string tag;
  int64_t milliseconds = 0;
  std::string text;
};

/// Everything it creates may be read and written by every user. Throws std::runtime_error where the file
/// system refuses.
class Folder {
 public:
  /// A fresh folder below TMPDIR, removed with this object.
  Folder();
  /// A folder that is kept; made when missing.
  explicit Folder(std::string root);
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  ~Folder();

  [[nodiscard]] const std::string& root() const { return root_; }
  /// Where a path of the handset, such as "/data/adam", is on this machine.
  [[nodiscard]] std::string path(std::string_view handset_path) const;

  void setProperty(const std::string& name, std::string_view value) const;
  /// The value, or nothing when the property does not exist.
  [[nodiscard]] std::optional<std::string> property(const std::string& name) const;
  [[nodiscard]] std::map<std::string, std::string> properties() const;

  /// The drop-box, oldest entry first.
  [[nodiscard]] std::vector<DropboxEntry> dropboxEntries() const;

  /// Writes a file at a path of the handset, with the folders that lead there.
  void writeFile(std::string_view handset_path, ByteView bytes) const;
  void writeFile(std::string_view handset_path, std::string_view text) const;
  /// Puts a file in the place of one that is there, at once. The folder has to be there.
  void replaceFile(std::string_view handset_path, std::string_view text) const;
  /// The same as writeFile at an offset of a fresh file, behind a hole that takes no room on the disk.
  void writeFileAt(std::string_view handset_path, uint64_t offset, ByteView bytes) const;
  /// The file's bytes, or nothing when it cannot be read.
  [[nodiscard]] std::optional<Bytes> readFile(std::string_view handset_path) const;
  /// Makes a folder at a path of the handset, with those that lead there.
  void makeFolder(std::string_view handset_path) const;

 private:
  void prepare() const;

  std::string root_;
  bool temporary_;
};

}  // namespace handset
