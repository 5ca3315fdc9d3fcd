#include "tools/shell/process_news.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace tools {

namespace {

using Clock = std::chrono::steady_clock;
using handset::Millis;

constexpr Millis kAtOnce{0};
constexpr Millis kGlance{100};
/// Of one turn, so that somebody can still type while messages come without end.
constexpr size_t kMessagesAtOnce = 32;

std::optional<Clock::time_point> deadlineIn(std::optional<Millis> timeout) {
  if (!timeout) return std::nullopt;
  return Clock::now() + *timeout;
}

int pollTime(std::optional<Clock::time_point> deadline) {
  if (!deadline) return -1;
  const auto left = std::chrono::ceil<Millis>(*deadline - Clock::now());
  return static_cast<int>(std::max(left, Millis::zero()).count());
}

}  // namespace

void ProcessNews::begin() {
  serving_ = true;
  hears_messages_ = true;
  unclaimed_ = 0;
}

void ProcessNews::finish() {
  News rest;
  takeMessages(rest, SIZE_MAX);
  takeLines(rest);
  serving_ = false;
  show(rest);
}

std::optional<bool> ProcessNews::waitOnce(int fd, const Interlude& interlude, Deadline deadline) {
  enum : size_t { kWanted, kOutput, kMessages, kLog, kProcess, kCount };
  pollfd watched[kCount] = {};
  watched[kWanted] = {fd, POLLIN, 0};
  watched[kOutput] = {STDOUT_FILENO, 0, 0};
  watched[kMessages] = {serving_ && hears_messages_ ? station_.process().unsolicitedFd() : -1, POLLIN, 0};
  watched[kLog] = {shows_logs_ && station_.started() ? station_.process().newLogsFd() : -1, POLLIN, 0};
  watched[kProcess] = {serving_ ? station_.process().processFd() : -1, POLLIN, 0};
  // A trace wakes nobody, so it is looked after now and then.
  const Deadline glance = Clock::now() + kGlance;
  const bool glances = shows_trace_ && (!deadline || *glance < *deadline);
  const int ready = poll(watched, kCount, pollTime(glances ? glance : deadline));
  if (ready == 0 && !glances) return std::nullopt;
  if (ready < 0) return false;
  if ((watched[kOutput].revents & POLLERR) != 0)
    throw std::system_error(EPIPE, std::generic_category(), "standard output");
  News news;
  if (watched[kMessages].revents != 0) takeMessages(news, kMessagesAtOnce);
  if (watched[kProcess].revents != 0) {
    takeMessages(news, SIZE_MAX);
    serving_ = false;
    news.trouble =
        station_.trouble("nothing serves requests any more").what() + std::string("\nrestart starts it anew");
  }
  takeLines(news);
  if (!news.happenings.empty() || !news.trouble.empty()) {
    interlude.before();
    show(news);
    interlude.after();
  }
  return watched[kWanted].revents != 0;
}

void ProcessNews::takeMessages(News& news, size_t most) {
  try {
    while (hears_messages_ && news.messages < most) {
      std::optional<handset::Bytes> message = station_.process().nextUnsolicited(kAtOnce);
      if (!message) break;
      news.happenings.push_back({Clock::now(), std::move(*message)});
      ++news.messages;
    }
    if (news.messages > 0) return;
    pollfd pipe{station_.process().unsolicitedFd(), POLLIN, 0};
    poll(&pipe, 1, 0);
    hears_messages_ = pipe.revents != POLLHUP;
  } catch (const std::runtime_error& error) {
    hears_messages_ = false;
    news.trouble = error.what() + std::string("; no more are shown until restart");
  }
}

void ProcessNews::takeLines(News& news) {
  if (shows_logs_ && station_.started()) append(news.happenings, station_.process().newLogs());
  if (shows_trace_) append(news.happenings, station_.modem().takeCrossings());
}

void ProcessNews::show(News& news) {
  sortByTime(news.happenings);
  for (const Happening& happening : news.happenings)
    tools::show(console_, happening);
  unclaimed_ += news.messages;
  flushOutput();
  if (!news.trouble.empty()) report_(news.trouble);
}

bool ProcessNews::waitToRead(int fd, const Interlude& interlude, std::optional<Millis> timeout) {
  const Deadline deadline = deadlineIn(timeout);
  while (true) {
    const std::optional<bool> readable = waitOnce(fd, interlude, deadline);
    if (!readable) return false;
    if (*readable) return true;
  }
}

bool ProcessNews::waitForMessage(Millis timeout) {
  const Deadline deadline = deadlineIn(timeout);
  while (unclaimed_ == 0) {
    if (!serving_ || !waitOnce(-1, {}, deadline)) return false;
  }
  --unclaimed_;
  return true;
}

bool ProcessNews::waitForEnd(Millis timeout) {
  const Deadline deadline = deadlineIn(timeout);
  while (serving_) {
    if (!waitOnce(-1, {}, deadline)) return false;
  }
  return true;
}

void ProcessNews::showLines() {
  if (!station_.started()) return;
  if (shows_logs_) station_.process().catchUpWithLog();
  News news;
  takeLines(news);
  show(news);
}

void ProcessNews::showTrace(bool on) {
  shows_trace_ = on;
  station_.modem().recordCrossings(on);
}

void ProcessNews::showLogs(bool on) {
  if (station_.started()) station_.process().newLogs();
  shows_logs_ = on;
}

}  // namespace tools
