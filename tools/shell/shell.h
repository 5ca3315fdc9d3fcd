// The commands of an interactive session beside the process.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tools/bench/console.h"
#include "tools/bench/station.h"
#include "tools/shell/completion.h"
#include "tools/shell/process_news.h"
#include "tools/shell/recording.h"
#include "tools/text/words.h"

namespace tools {

class Shell {
 public:
  /// The station's process runs already. At a terminal, Ctrl-C is the shell's from here on; elsewhere, lines
  /// are counted, and shown as they would have been typed.
  Shell(Station& station, const Console& console, bool at_terminal);

  /// Does what a line says. False when it ends the session. What is wrong with it is reported, and so is a
  /// process that dies; throws std::system_error when the reader of the output has gone.
  bool run(const std::string& line);
  /// Ends the process, and tells its status when it is not 0. Throws ProcessTrouble.
  void end();
  [[nodiscard]] bool troubled() const { return troubled_; }

  ProcessNews& news() { return news_; }
  /// Shows what crosses the modem link from here on, or not. Throws UsageError when the modem is another's.
  void trace(bool on);
  /// Writes the session to a file, as a scenario. Throws UsageError when it cannot be written.
  void record(const std::string& path, int instance);
  /// The commands beside the requests.
  static std::vector<Syntax> syntax();
  /// What can be typed, for a person.
  static std::string reference();

 private:
  struct Command {
    std::string_view name;
    std::string_view arguments;
    std::string_view help;
    size_t most;  // arguments
    void (Shell::*run)(Words words);
  };
  static const Command kCommands[];

  /// A request whose answer has not come yet.
  struct Owed {
    std::string line;
    handset::Bytes request;
    handset::Instant asked;
  };

  static std::vector<std::string_view> allNames();
  void execute(Words words);
  void report(const std::string& what);
  std::optional<int> endProcess();
  void needProcess() const;
  [[nodiscard]] bool records() const { return recording_ && news_.serving(); }
  [[noreturn]] void tellNoAnswer();
  std::optional<handset::Bytes> takeAnswer();

  void askRequest(Words words);
  void tellModem(Words words);
  void waitForMessage(Words words);
  void showLogs(Words words);
  void showTrace(Words words);
  void listFiles(Words words);
  void listProperties(Words words);
  void listDropbox(Words words);
  void help(Words words);
  void restart(Words words);
  void quit(Words words);

  Station& station_;
  const Console& console_;
  ProcessNews news_;
  std::optional<Recording> recording_;
  std::optional<size_t> line_number_;  // without a terminal
  std::optional<Owed> owed_;
  size_t log_seen_ = 0;  // by "log since"
  bool troubled_ = false;
  bool finished_ = false;
};

}  // namespace tools
