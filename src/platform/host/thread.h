// A thread of the stand-in, which no signal of the process disturbs.
#pragma once

#include <pthread.h>

namespace host {

class Thread {
 public:
  Thread() = default;
  ~Thread() { join(); }
  Thread(const Thread&) = delete;
  Thread& operator=(const Thread&) = delete;

  /// Runs `run(argument)` with all signals blocked. False when there is no thread to be had.
  bool start(void* (*run)(void*), void* argument);
  /// Waits for the end of the thread; returns at once when there is none.
  void join();
  /// Whether the caller runs on this thread.
  [[nodiscard]] bool isCurrent() const { return started_ && pthread_equal(thread_, pthread_self()) != 0; }

 private:
  pthread_t thread_{};
  bool started_ = false;
};

}  // namespace host
