#include "platform/host/thread.h"

#include <csignal>

namespace host {

bool Thread::start(void* (*run)(void*), void* argument) {
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  if (pthread_sigmask(SIG_SETMASK, &all, &before) != 0) return false;
  started_ = pthread_create(&thread_, nullptr, run, argument) == 0;
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  return started_;
}

void Thread::join() {
  if (!started_) return;
  pthread_join(thread_, nullptr);
  started_ = false;
}

}  // namespace host
