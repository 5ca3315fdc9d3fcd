// Text lines of a descriptor, as they come and of any number.
#pragma once

#include <array>
#include <string>
#include <string_view>

namespace tools {

class LineSource {
 public:
  explicit LineSource(int descriptor) : descriptor_(descriptor) {}

  /// The next line, without its end; what goes beyond `most` characters is left out. False when there is none
  /// any more. Throws std::system_error.
  bool next(std::string& line, size_t most);

 private:
  bool fill();

  int descriptor_;
  std::array<char, 65536> chunk_{};
  std::string_view unread_;
};

}  // namespace tools
