#include "tools/bench/interruption.h"

#include <unistd.h>

#include <csignal>
#include <thread>

namespace tools {

namespace {

// Never destroyed: the watching thread may still use them while the tool ends.
std::recursive_mutex& cleanup_mutex = *new std::recursive_mutex;
std::list<std::function<void()>>& cleanups = *new std::list<std::function<void()>>;  // the latest first

constexpr int kStatusOfSignals = 128;

}  // namespace

void watchForInterruption() {
  static sigset_t signals;
  sigemptyset(&signals);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT})
    sigaddset(&signals, signal);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  std::thread([] {
    int signal = 0;
    sigwait(&signals, &signal);
    const std::scoped_lock lock(cleanup_mutex);
    for (const std::function<void()>& action : cleanups)
      action();
    _exit(kStatusOfSignals + signal);
  }).detach();
}

Cleanup::Cleanup(std::function<void()> action) {
  const std::scoped_lock lock(cleanup_mutex);
  cleanups.push_front(std::move(action));
  place_ = cleanups.begin();
}

Cleanup::~Cleanup() {
  const std::scoped_lock lock(cleanup_mutex);
  cleanups.erase(place_);
}

std::unique_lock<std::recursive_mutex> holdOffInterruption() {
  return std::unique_lock(cleanup_mutex);
}

}  // namespace tools
