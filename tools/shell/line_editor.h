// A prompt on a terminal: lines with editing, history and completion.
#pragma once

#include <histedit.h>

#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "tools/bench/interruption.h"
#include "tools/shell/completion.h"
#include "tools/shell/process_news.h"

namespace tools {

inline constexpr const char* kPrompt = "hook> ";
/// Said when Ctrl-C has done something else.
inline constexpr std::string_view kAgainEnds = "Ctrl-C again ends the shell";

class LineEditor {
 public:
  /// Waits until standard input can be read, or has ended.
  using WaitForInput = std::function<Waited(const Interlude&)>;
  using Completer = std::function<Completion(std::string_view line_to_cursor)>;

  /// For one object at a time, with a terminal as standard input and output. Their modes are as they were
  /// when the object goes or the tool is interrupted. The history of earlier sessions is brought back.
  LineEditor(WaitForInput wait, Completer completer);

  /// The next line without its end, empty when Ctrl-C dropped it. False at the end of the input. Throws what
  /// waiting for the input throws.
  bool next(std::string& line);

 private:
  static LineEditor& of(EditLine* edit);
  static int readCharacter(EditLine* edit, wchar_t* character);
  static unsigned char completeWord(EditLine* edit, int key);

  void remember(const std::string& line);
  [[nodiscard]] size_t columns() const;
  void takeLineAway();
  void leaveLine(std::string_view mark);
  void list(const std::vector<std::string>& candidates);

  WaitForInput wait_;
  Completer completer_;
  std::exception_ptr trouble_;  // libedit's frames are no place to throw through
  bool dropped_ = false;        // the line, by Ctrl-C
  TerminalModes modes_;
  /// libedit sets the terminal's modes, which must not come behind the cleanup: interruptions get in only
  /// while a key is waited for.
  std::unique_lock<std::recursive_mutex> calm_;
  std::string history_file_;  // empty: none
  std::unique_ptr<History, void (*)(History*)> history_;
  std::unique_ptr<EditLine, void (*)(EditLine*)> edit_;
};

}  // namespace tools
