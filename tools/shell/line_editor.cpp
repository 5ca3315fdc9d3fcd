#include "tools/shell/line_editor.h"

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cwchar>
#include <utility>

namespace tools {

namespace {

constexpr int kHistoryLines = 1000;
constexpr size_t kColumnsUnknown = 80;

size_t terminalColumns() {
  winsize size{};
  const bool known = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return known ? size.ws_col : kColumnsUnknown;
}

}  // namespace

LineEditor::LineEditor(std::string prompt, WaitForInput wait, Completer completer)
    : prompt_(std::move(prompt)),
      wait_(std::move(wait)),
      completer_(std::move(completer)),
      history_(history_init(), history_end),
      edit_(nullptr, el_end) {
  setlocale(LC_CTYPE, "C.UTF-8");
  edit_.reset(el_init("hookctl", stdin, stdout, stderr));
  EditLine* edit = edit_.get();
  el_set(edit, EL_CLIENTDATA, this);
  el_set(edit, EL_SIGNAL, 0);
  el_set(edit, EL_EDITOR, "emacs");
  el_set(edit, EL_PROMPT, promptOf);
  el_set(edit, EL_GETCFN, readCharacter);
  HistEvent event{};
  history(history_.get(), &event, H_SETSIZE, kHistoryLines);
  history(history_.get(), &event, H_SETUNIQUE, 1);
  el_set(edit, EL_HIST, history, history_.get());
  // Its narrow sibling never frees the two texts.
  el_wset(edit, EL_ADDFN, L"complete-word", L"completes the word at the cursor", completeWord);
  el_set(edit, EL_BIND, "^I", "complete-word", nullptr);
  el_set(edit, EL_BIND, "^R", "em-inc-search-prev", nullptr);
}

LineEditor& LineEditor::of(EditLine* edit) {
  void* self = nullptr;
  el_get(edit, EL_CLIENTDATA, &self);
  return *static_cast<LineEditor*>(self);
}

char* LineEditor::promptOf(EditLine* edit) {
  return of(edit).prompt_.data();
}

std::optional<std::string> LineEditor::next() {
  // The window may have changed since the last line.
  el_resize(edit_.get());
  int length = 0;
  calm_ = holdOffInterruption();
  const char* text = el_gets(edit_.get(), &length);
  calm_.unlock();
  if (trouble_) std::rethrow_exception(std::exchange(trouble_, nullptr));
  if (text == nullptr || length <= 0) return std::nullopt;
  std::string line(text, static_cast<size_t>(length));
  while (!line.empty() && (line.back() == '\n' || line.back() == '\r'))
    line.pop_back();
  HistEvent event{};
  if (!line.empty()) history(history_.get(), &event, H_ENTER, line.c_str());
  return line;
}

/// One character, from as many bytes as it takes: 1, 0 at the end of the input, −1 when it cannot be read.
int LineEditor::readCharacter(EditLine* edit, wchar_t* character) {
  LineEditor& self = of(edit);
  std::mbstate_t state{};
  while (true) {
    self.calm_.unlock();
    try {
      self.wait_({.before = [&] { self.takeLineAway(); }, .after = [&] { self.drawLineAgain(); }});
    } catch (...) {
      self.trouble_ = std::current_exception();
    }
    self.calm_.lock();
    if (self.trouble_) return -1;
    char byte = 0;
    const ssize_t count = read(STDIN_FILENO, &byte, 1);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return static_cast<int>(count);
    const size_t used = std::mbrtowc(character, &byte, 1, &state);
    constexpr auto kIncomplete = static_cast<size_t>(-2);
    constexpr auto kInvalid = static_cast<size_t>(-1);
    if (used == kIncomplete) continue;
    if (used != kInvalid) return 1;
    state = {};
  }
}

/// Clears the rows that prompt and line take, and leaves the cursor where they began.
void LineEditor::takeLineAway() {
  char* clear = nullptr;
  el_get(edit_.get(), EL_GETTC, "cd", &clear);
  if (clear == nullptr) {
    std::fputs("\r\n", stdout);
    return;
  }
  const LineInfoW* line = el_wline(edit_.get());
  const auto before_cursor = static_cast<size_t>(line->cursor - line->buffer);
  const size_t row = (prompt_.size() + before_cursor) / terminalColumns();
  if (row > 0) fmt::print("\x1b[{}A", row);
  std::fputs("\r\x1b[J", stdout);
}

void LineEditor::drawLineAgain() {
  el_set(edit_.get(), EL_REFRESH);
}

unsigned char LineEditor::completeWord(EditLine* edit, int /*key*/) {
  LineEditor& self = of(edit);
  const LineInfo* line = el_line(edit);
  const Completion completion = self.completer_({line->buffer, line->cursor});
  if (!completion.insertion.empty())
    return el_insertstr(edit, completion.insertion.c_str()) == 0 ? CC_REFRESH : CC_ERROR;
  if (completion.candidates.empty()) return CC_ERROR;
  self.list(completion.candidates);
  return CC_REDISPLAY;
}

void LineEditor::list(const std::vector<std::string>& candidates) {
  size_t width = 0;
  for (const std::string& candidate : candidates)
    width = std::max(width, candidate.size() + 2);
  const size_t columns = std::max<size_t>(1, terminalColumns() / width);
  const LineInfo* line = el_line(edit_.get());
  const std::string typed(line->buffer, line->lastchar);
  takeLineAway();
  fmt::print("{}{}\n", prompt_, typed);
  for (size_t i = 0; i < candidates.size(); ++i)
    fmt::print("{:<{}}{}", candidates[i], width, (i + 1) % columns == 0 ? "\n" : "");
  if (candidates.size() % columns != 0) fmt::print("\n");
}

}  // namespace tools
