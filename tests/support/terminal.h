// hookctl on a terminal, as a person has it.
#pragma once

#include <sys/types.h>
#include <termios.h>

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "platform/host/unique_fd.h"

namespace kesext_test {

class Terminal {
 public:
  /// Starts `hookctl ARGUMENTS` on a terminal of 80 columns and 24 rows.
  explicit Terminal(const std::vector<std::string>& arguments);
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;
  /// Kills the tool if it still runs.
  ~Terminal();

  void resize(unsigned short columns, unsigned short rows);
  void type(std::string_view keys);
  /// Waits for a text behind the one that the last successful call found; what is between is returned by
  /// passed(). False when it does not come.
  bool shows(std::string_view text);
  [[nodiscard]] const std::string& passed() const { return passed_; }
  /// Types, and waits for texts one behind the other as shows() does for each.
  bool answers(std::string_view keys, std::initializer_list<std::string_view> texts);
  /// Types the last keys and waits for the tool to end: its status, or minus the signal that ended it; −1
  /// when it does not.
  int endsWith(std::string_view keys);
  /// Whether the terminal is as it was before the tool.
  [[nodiscard]] bool hasItsModesBack() const;

 private:
  bool readMore();

  host::UniqueFd screen_;
  host::UniqueFd own_line_;  // keeps the modes when the tool is gone
  host::UniqueFd tool_;
  pid_t pid_ = -1;
  termios modes_{};
  std::string seen_;
  std::string passed_;
};

}  // namespace kesext_test
