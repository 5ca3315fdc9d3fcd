// Where the lines of a shell come from.
#pragma once

#include <unistd.h>

#include <functional>
#include <optional>
#include <string>

#include "tools/shell/process_news.h"
#include "tools/text/input_lines.h"

namespace tools {

/// Waits until standard input can be read, or has ended.
using WaitForInput = std::function<void(const Interlude&)>;

class LineSource {
 public:
  LineSource() = default;
  LineSource(const LineSource&) = delete;
  LineSource& operator=(const LineSource&) = delete;
  virtual ~LineSource() = default;

  /// The next line without its end; nothing at the end of the input.
  virtual std::optional<std::string> next() = 0;
};

/// Lines as they stand, without a prompt.
class PlainLines : public LineSource {
 public:
  explicit PlainLines(const WaitForInput& wait) : input_(STDIN_FILENO, [wait] { wait({}); }) {}
  std::optional<std::string> next() override;

 private:
  InputLines input_;
};

}  // namespace tools
