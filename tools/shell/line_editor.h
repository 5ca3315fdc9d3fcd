// A prompt on a terminal: lines with editing, history and completion.
#pragma once

#include <histedit.h>

#include <exception>
#include <memory>
#include <mutex>
#include <string_view>

#include "tools/bench/interruption.h"
#include "tools/shell/completion.h"
#include "tools/shell/line_source.h"

namespace tools {

class LineEditor : public LineSource {
 public:
  using Completer = std::function<Completion(std::string_view line_to_cursor)>;

  /// For one object at a time, with a terminal as standard input and output. Their modes are as they were
  /// when the object goes or the tool is interrupted.
  LineEditor(std::string prompt, WaitForInput wait, Completer completer);
  ~LineEditor() override = default;

  /// Throws what waiting for the input throws.
  std::optional<std::string> next() override;

 private:
  static LineEditor& of(EditLine* edit);
  static char* promptOf(EditLine* edit);
  static int readCharacter(EditLine* edit, wchar_t* character);
  static unsigned char completeWord(EditLine* edit, int key);

  void takeLineAway();
  void drawLineAgain();
  void list(const std::vector<std::string>& candidates);

  std::string prompt_;
  WaitForInput wait_;
  Completer completer_;
  std::exception_ptr trouble_;  // libedit's frames are no place to throw through
  TerminalModes modes_;
  /// libedit sets the terminal's modes, which must not come behind the cleanup: interruptions get in only
  /// while a key is waited for.
  std::unique_lock<std::recursive_mutex> calm_;
  std::unique_ptr<History, void (*)(History*)> history_;
  std::unique_ptr<EditLine, void (*)(EditLine*)> edit_;
};

}  // namespace tools
