#include "tools/shell/process_news.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <stdexcept>
#include <system_error>

#include "tools/bench/interruption.h"

namespace tools {

namespace {

using Clock = std::chrono::steady_clock;
using handset::Millis;

/// A trace wakes nobody, so it is looked after now and then.
constexpr Millis kGlance{100};
constexpr Millis kLongest{60'000};
/// Of one turn, so that somebody can still type while messages come without end.
constexpr size_t kMessagesAtOnce = 32;

bool never() {
  return false;
}

}  // namespace

void dropSettling(Happenings& happenings) {
  bool settling = false;
  std::erase_if(happenings, [&settling](const Happening& happening) {
    if (const auto* crossing = std::get_if<handset::Crossing>(&happening.what))
      return crossing->indication && crossing->id == kUnknownIndication;
    const auto* line = std::get_if<std::string>(&happening.what);
    if (line == nullptr) return false;
    const bool of_it = settling || line->find(": msg_id=0xffff ") != std::string::npos;
    settling = of_it && !line->ends_with("Unsupported Indicator message 65535");
    return of_it;
  });
}

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

void ProcessNews::takeCtrlC() {
  ctrl_c_ = takeFirstCtrlC();
}

Waited ProcessNews::wait(int fd, const std::function<bool()>& over, std::optional<Millis> timeout,
                         const Interlude& interlude) {
  const Clock::time_point start = Clock::now();
  while (!over()) {
    const Millis most = shows_trace_ ? kGlance : kLongest;
    const auto left = timeout ? *timeout - std::chrono::floor<Millis>(Clock::now() - start) : most;
    if (left <= Millis::zero()) return Waited::late;
    enum : size_t { kWanted, kOutput, kCtrlC, kMessages, kLog, kProcess, kCount };
    pollfd watched[kCount] = {};
    watched[kWanted] = {fd, POLLIN, 0};
    watched[kOutput] = {STDOUT_FILENO, 0, 0};
    watched[kCtrlC] = {interrupted_ ? -1 : ctrl_c_, POLLIN, 0};
    watched[kMessages] = {serving_ && hears_messages_ ? station_.process().unsolicitedFd() : -1, POLLIN, 0};
    watched[kLog] = {shows_logs_ && station_.started() ? station_.process().newLogsFd() : -1, POLLIN, 0};
    watched[kProcess] = {serving_ ? station_.process().processFd() : -1, POLLIN, 0};
    if (poll(watched, kCount, static_cast<int>(std::min(left, most).count())) < 0) continue;
    if ((watched[kOutput].revents & POLLERR) != 0)
      throw std::system_error(EPIPE, std::generic_category(), "standard output");
    News news;
    const bool ended = watched[kProcess].revents != 0;
    if (ended || watched[kMessages].revents != 0) takeMessages(news, ended ? SIZE_MAX : kMessagesAtOnce);
    if (ended) {
      serving_ = false;
      news.trouble = station_.trouble("nothing serves requests any more").what() +
                     std::string("\nrestart starts it anew");
    }
    takeLines(news);
    if (!news.happenings.empty() || !news.trouble.empty()) {
      interlude.before();
      show(news);
      interlude.after();
    }
    if (watched[kCtrlC].revents != 0) {
      interrupted_ = true;
      return Waited::interrupted;
    }
    if (watched[kWanted].revents != 0) return Waited::done;
  }
  return Waited::done;
}

void ProcessNews::takeMessages(News& news, size_t most) {
  try {
    const size_t before = unclaimed_;
    while (hears_messages_ && unclaimed_ - before < most) {
      std::optional<handset::Bytes> message = station_.process().nextUnsolicited(Millis::zero());
      if (!message) break;
      news.happenings.push_back({Clock::now(), std::move(*message)});
      ++unclaimed_;
    }
    if (unclaimed_ > before) return;
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
  flushOutput();
  if (!news.trouble.empty()) report_(news.trouble);
}

Waited ProcessNews::waitForInput(const Interlude& interlude) {
  const Waited waited = wait(STDIN_FILENO, never, {}, interlude);
  eventfd_t count = 0;
  if (waited == Waited::done && interrupted_) interrupted_ = eventfd_read(ctrl_c_, &count) != 0;
  return waited;
}

Waited ProcessNews::waitForAnswer(std::optional<Millis> timeout) {
  return wait(station_.process().responsesFd(), never, timeout);
}

Waited ProcessNews::waitForMessage(Millis timeout) {
  const Waited waited = wait(
      -1, [this] { return unclaimed_ > 0 || !serving_; }, timeout);
  if (waited == Waited::done && unclaimed_ > 0) --unclaimed_;
  return waited;
}

Waited ProcessNews::waitForEnd(Millis timeout) {
  return wait(
      -1, [this] { return !serving_; }, timeout);
}

std::vector<handset::Bytes> ProcessNews::settle() {
  News news;
  station_.settle();
  takeMessages(news, SIZE_MAX);
  takeLines(news);
  dropSettling(news.happenings);
  show(news);
  std::vector<handset::Bytes> messages;
  for (const Happening& happening : news.happenings)
    if (const auto* message = std::get_if<handset::Bytes>(&happening.what)) messages.push_back(*message);
  return messages;
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
