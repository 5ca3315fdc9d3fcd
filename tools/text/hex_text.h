// Bytes that people have as text: digits in any grouping, or what hexdump -C, xxd, xxd -p and od print.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tools {

/// A line of digits.
struct HexRow {
  std::string_view offset;      // of a dump's row; empty without one
  std::string digits;           // without what parts them, and without the column of characters
  std::optional<size_t> wrong;  // where in the line something else stands
  bool open = false;            // whether it ends in a comma
};

/// The bytes of rows that belong together.
class HexText {
 public:
  /// More than any record's digits.
  static constexpr size_t kMost = size_t{128} * 1024;
  /// Of rows that others may follow: of xxd -p, and of od -An -t x1.
  static constexpr size_t kPlainRows[] = {60, 32};

  /// Blanks, commas, colons and 0x part digits; a '#' makes the rest of the line a comment. What could be a
  /// dump's offset or a byte is told by the rows before it.
  [[nodiscard]] HexRow read(std::string_view line) const;
  /// Whether the row begins where a dump ends so far, or follows a comma.
  [[nodiscard]] bool goesOn(const HexRow& row) const;
  void add(const HexRow& row);
  /// The next offset tells how often the last row is repeated.
  void squeeze() { squeezed_ = true; }

  [[nodiscard]] bool empty() const { return !begun_; }
  [[nodiscard]] bool isDump() const { return !first_offset_.empty(); }
  [[nodiscard]] bool isOpen() const { return open_; }
  [[nodiscard]] const std::string& digits() const { return digits_; }

 private:
  [[nodiscard]] uint64_t bytesUpTo(std::string_view offset, int radix) const;
  [[nodiscard]] bool isNext(std::string_view offset) const;
  [[nodiscard]] bool beginsWithOffset(std::string_view word, std::string_view rest, bool has_column) const;

  std::string first_offset_;
  std::string digits_;
  std::string last_;  // row's digits
  int radix_ = 16;    // of the offsets, as far as they tell
  bool begun_ = false;
  bool squeezed_ = false;
  bool open_ = false;
};

}  // namespace tools
