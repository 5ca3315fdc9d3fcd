// Ctrl-C and its kin: whatever the tool is at, nothing it started is left running and no folder of its own is
// left behind.
#pragma once

#include <functional>
#include <list>
#include <mutex>

namespace tools {

/// From here on, in this thread and those it starts, SIGINT, SIGTERM, SIGHUP and SIGQUIT do what all Cleanups
/// say and end the tool with status 128 and the signal's number. To be called once, before any other thread
/// is there.
void watchForInterruption();

/// What has to be done when the tool is interrupted while this object lives. The latest is done first.
class Cleanup {
 public:
  explicit Cleanup(std::function<void()> action);
  Cleanup(const Cleanup&) = delete;
  Cleanup& operator=(const Cleanup&) = delete;
  ~Cleanup();

 private:
  std::list<std::function<void()>>::iterator place_;
};

/// Interruptions wait while this is held: for what must not come apart, such as starting a process and saying
/// how it is to be ended.
std::unique_lock<std::recursive_mutex> holdOffInterruption();

}  // namespace tools
