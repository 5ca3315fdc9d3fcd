// The end of the tool, whatever brings it: nothing it started is left running, no folder of its own is left
// behind, and the terminal is as it was. A small process beside it sees to that, so that even SIGKILL does
// not keep it from being done.
#pragma once

#include <sys/types.h>

#include <mutex>
#include <string>

namespace tools {

/// Starts that process. From here on, in this thread and those it starts, SIGINT, SIGTERM, SIGHUP and SIGQUIT
/// end the tool with status 128 and the signal's number, once all is done. To be called once, before any
/// other thread is there.
void watchForInterruption();

/// From here on Ctrl-C makes the descriptor readable that is returned, an eventfd. As long as nobody has read
/// that, the next one ends the tool as before.
int takeFirstCtrlC();

/// A process that is to be killed in the end, in place of the one before. Not for one that has been waited
/// for.
void killInTheEnd(pid_t process);
/// A file, or a folder with all that is in it, that is to be removed in the end, in place of the one before;
/// empty for none any more.
void removeInTheEnd(const std::string& path);

/// Standard input is a terminal: its modes are put back to what they are now if the tool ends while this
/// object lives.
class TerminalModes {
 public:
  TerminalModes();
  TerminalModes(const TerminalModes&) = delete;
  TerminalModes& operator=(const TerminalModes&) = delete;
  ~TerminalModes();
};

/// Interruptions wait while this is held: for what must not come apart, such as starting a process and saying
/// that it is to be killed.
std::unique_lock<std::recursive_mutex> holdOffInterruption();

}  // namespace tools
