// Text lines of a descriptor, as they come and of any number.
#pragma once

#include <array>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

namespace tools {

class InputLines {
 public:
  /// `wait` returns once the descriptor can be read.
  explicit InputLines(
      int descriptor, std::function<void()> wait = [] {})
      : descriptor_(descriptor), wait_(std::move(wait)) {}

  /// The next line, without its end; what goes beyond `most` characters is left out. False when there is none
  /// any more. Throws std::system_error.
  bool next(std::string& line, size_t most);

 private:
  bool fill();

  int descriptor_;
  std::function<void()> wait_;
  std::array<char, 65536> chunk_{};
  std::string_view unread_;
};

}  // namespace tools
