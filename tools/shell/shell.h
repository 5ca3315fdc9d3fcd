// The commands of an interactive session beside the process.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "tools/bench/console.h"
#include "tools/bench/station.h"
#include "tools/shell/completion.h"
#include "tools/shell/process_news.h"
#include "tools/text/words.h"

namespace tools {

class Shell {
 public:
  /// The station's process runs already.
  Shell(Station& station, const Console& console);

  /// Does what a line says. False when it ends the session. What is wrong with it is reported, and so is a
  /// process that dies; throws std::system_error when the reader of the output has gone.
  bool run(const std::string& line);
  /// Ends the process, and tells its status when it is not 0.
  void end();
  /// Reports on standard error, as the output's place in the input: "line 3: ...", when lines are counted.
  void report(const std::string& what);
  void countLines() { line_number_ = 0; }
  [[nodiscard]] bool troubled() const { return troubled_; }

  ProcessNews& news() { return news_; }
  /// Shows what crosses the modem link from here on, or not. Throws UsageError when the modem is another's.
  void trace(bool on);
  /// The commands beside the requests.
  static std::vector<Syntax> syntax();
  static std::string commandReference();

 private:
  struct Command {
    std::string_view name;
    std::string_view arguments;
    std::string_view help;
    size_t most;  // arguments
    void (Shell::*run)(Words words);
  };
  static const Command kCommands[];

  void execute(Words words);
  std::optional<int> endProcess();
  void needProcess() const;
  Answer ask(handset::ByteView request);

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
  std::optional<size_t> line_number_;
  size_t log_seen_ = 0;  // by "log since"
  bool troubled_ = false;
  bool finished_ = false;
};

}  // namespace tools
