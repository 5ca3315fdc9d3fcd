#include "tools/shell/line_editor.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <filesystem>
#include <utility>

namespace tools {

namespace {

constexpr int kHistoryLines = 1000;

/// Where the history is kept, in a folder that is made if it can be; empty when nobody says where.
std::string historyFile() {
  const char* state = std::getenv("XDG_STATE_HOME");
  const char* home = std::getenv("HOME");
  std::filesystem::path folder;
  if (state != nullptr && *state == '/')
    folder = state;
  else if (home != nullptr && *home == '/')
    folder = std::filesystem::path(home) / ".local/state";
  else
    return "";
  std::error_code ignored;
  std::filesystem::create_directories(folder / "hookctl", ignored);
  return folder / "hookctl/history";
}

}  // namespace

LineEditor::LineEditor(WaitForInput wait, Completer completer)
    : wait_(std::move(wait)),
      completer_(std::move(completer)),
      history_file_(historyFile()),
      history_(history_init(), history_end),
      edit_(nullptr, el_end) {
  setlocale(LC_CTYPE, "C.UTF-8");
  edit_.reset(el_init("hookctl", stdin, stdout, stderr));
  EditLine* edit = edit_.get();
  el_set(edit, EL_CLIENTDATA, this);
  el_set(edit, EL_SIGNAL, 0);
  el_set(edit, EL_EDITOR, "emacs");
  el_set(
      edit, EL_PROMPT, +[](EditLine*) { return const_cast<char*>(kPrompt); });
  el_set(edit, EL_GETCFN, readCharacter);
  HistEvent event{};
  history(history_.get(), &event, H_SETSIZE, kHistoryLines);
  history(history_.get(), &event, H_SETUNIQUE, 1);
  if (!history_file_.empty()) history(history_.get(), &event, H_LOAD, history_file_.c_str());
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

bool LineEditor::next(std::string& line) {
  line.clear();
  // The window may have changed since the last line.
  el_resize(edit_.get());
  int length = 0;
  calm_ = holdOffInterruption();
  const char* text = el_gets(edit_.get(), &length);
  calm_.unlock();
  if (trouble_) std::rethrow_exception(std::exchange(trouble_, nullptr));
  if (std::exchange(dropped_, false)) return true;
  if (text == nullptr || length <= 0) {
    fmt::print("\n");
    return false;
  }
  line.assign(text, static_cast<size_t>(length));
  line.erase(line.find_last_not_of("\r\n") + 1);
  if (!line.empty()) remember(line);
  return true;
}

/// Whatever ends the tool, the file has the line.
void LineEditor::remember(const std::string& line) {
  HistEvent event{};
  history(history_.get(), &event, H_ENTER, line.c_str());
  if (!history_file_.empty()) history(history_.get(), &event, H_SAVE, history_file_.c_str());
}

/// One character, from as many bytes as it takes: 1, 0 at the end of the input, −1 when it cannot be read.
int LineEditor::readCharacter(EditLine* edit, wchar_t* character) {
  LineEditor& self = of(edit);
  std::mbstate_t state{};
  while (true) {
    self.calm_.unlock();
    try {
      self.dropped_ = self.wait_({.before = [&] { self.takeLineAway(); },
                                  .after = [&] { el_set(edit, EL_REFRESH); }}) == Waited::interrupted;
    } catch (...) {
      self.trouble_ = std::current_exception();
    }
    self.calm_.lock();
    if (self.dropped_) self.leaveLine(fmt::format("^C  ({})", kAgainEnds));
    if (self.trouble_ || self.dropped_) return -1;
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

size_t LineEditor::columns() const {
  int columns = 0;
  el_get(edit_.get(), EL_GETTC, "co", &columns);
  return static_cast<size_t>(std::max(columns, 1));
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
  const size_t row = (std::string_view(kPrompt).size() + before_cursor) / columns();
  if (row > 0) fmt::print("\x1b[{}A", row);
  std::fputs("\r\x1b[J", stdout);
}

/// Goes to below the line, which stays.
void LineEditor::leaveLine(std::string_view mark) {
  const LineInfo* line = el_line(edit_.get());
  const std::string typed(line->buffer, line->lastchar);
  takeLineAway();
  fmt::print("{}{}{}\n", kPrompt, typed, mark);
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
  const size_t in_a_row = std::max<size_t>(1, columns() / width);
  leaveLine("");
  for (size_t i = 0; i < candidates.size(); ++i) {
    const bool last = i + 1 == candidates.size() || (i + 1) % in_a_row == 0;
    fmt::print("{:<{}}{}", candidates[i], last ? 0 : width, last ? "\n" : "");
  }
}

}  // namespace tools
