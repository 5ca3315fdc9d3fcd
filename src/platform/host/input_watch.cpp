#include "platform/host/input_watch.h"

#include <sys/epoll.h>
#include <sys/timerfd.h>

namespace host {
namespace {

/// How long a pause lasts before it is looked at.
constexpr long kPauseNs = 2'000'000;
/// The longest wait: input is looked for then, should switching it off or on have failed.
constexpr int kLongestWaitMs = 1000;

}  // namespace

bool InputWatch::start(int fd) {
  fd_ = fd;
  epoll_.reset(epoll_create1(EPOLL_CLOEXEC));
  timer_.reset(timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC));
  if (!epoll_ || !timer_) return false;
  epoll_event input{};
  input.events = EPOLLIN;
  // Told once for each time that it runs out, so nobody has to read it.
  epoll_event timeout{};
  timeout.events = EPOLLIN | EPOLLET;
  return epoll_ctl(epoll_.get(), EPOLL_CTL_ADD, fd, &input) == 0 &&
         epoll_ctl(epoll_.get(), EPOLL_CTL_ADD, timer_.get(), &timeout) == 0;
}

void InputWatch::wait() const {
  epoll_event event{};
  epoll_wait(epoll_.get(), &event, 1, kLongestWaitMs);
}

void InputWatch::pause() {
  if (!paused_) watchFor(0);
  paused_ = true;
  const itimerspec once{.it_interval = {}, .it_value = {.tv_sec = 0, .tv_nsec = kPauseNs}};
  timerfd_settime(timer_.get(), 0, &once, nullptr);
}

void InputWatch::resume() {
  watchFor(EPOLLIN);
  paused_ = false;
}

void InputWatch::watchFor(unsigned events) const {
  epoll_event input{};
  input.events = events;
  epoll_ctl(epoll_.get(), EPOLL_CTL_MOD, fd_, &input);
}

}  // namespace host
