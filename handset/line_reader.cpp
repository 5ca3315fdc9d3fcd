#include "handset/line_reader.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <utility>

namespace handset {
namespace {

/// What goes beyond is left out.
constexpr size_t kLineMax = size_t{64} * 1024;

std::string_view textOf(std::string_view line) {
  const size_t colon = line.find(": ");
  return colon == std::string_view::npos ? line : line.substr(colon + 2);
}

}  // namespace

LineReader::LineReader(host::UniqueFd pipe)
    : pipe_(std::move(pipe)),
      stop_(eventfd(0, EFD_CLOEXEC)),
      news_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      thread_([this] { run(); }) {}

LineReader::~LineReader() {
  constexpr uint64_t kOne = 1;
  [[maybe_unused]] const ssize_t written = write(stop_.get(), &kOne, sizeof(kOne));
  thread_.join();
}

void LineReader::run() {
  std::array<pollfd, 2> watched{{{pipe_.get(), POLLIN, 0}, {stop_.get(), POLLIN, 0}}};
  for (;;) {
    if (poll(watched.data(), watched.size(), -1) < 0) continue;
    if (watched[1].revents != 0) break;
    const ssize_t size = read();
    if (size < 0 && errno == EINTR) continue;
    if (size <= 0) break;
  }
  const std::scoped_lock lock(mutex_);
  if (!partial_.empty()) lines_.push_back({std::chrono::steady_clock::now(), std::move(partial_)});
  ended_ = true;
  announce();
}

/// One read and what it gives, under one lock: for whoever holds it, what is not in the pipe has been taken.
ssize_t LineReader::read() {
  std::array<char, 16384> chunk{};
  const std::scoped_lock lock(mutex_);
  const ssize_t size = ::read(pipe_.get(), chunk.data(), chunk.size());
  if (size > 0) take({chunk.data(), static_cast<size_t>(size)});
  return size;
}

void LineReader::take(std::string_view chunk) {
  const Instant now = std::chrono::steady_clock::now();
  for (size_t end = chunk.find('\n'); end != std::string_view::npos; end = chunk.find('\n')) {
    addToPartial(chunk.substr(0, end));
    lines_.push_back({now, std::exchange(partial_, {})});
    chunk.remove_prefix(end + 1);
  }
  addToPartial(chunk);
  announce();
}

void LineReader::addToPartial(std::string_view chunk) {
  partial_ += chunk.substr(0, kLineMax - partial_.size());
}

void LineReader::announce() const {
  changed_.notify_all();
  if (placeOf(news_from_) < lines_.size()) eventfd_write(news_.get(), 1);
}

size_t LineReader::placeOf(size_t from) const {
  return std::min(from - std::min(from, forgotten_), lines_.size());
}

std::vector<StampedLine> LineReader::newLines() {
  const std::scoped_lock lock(mutex_);
  eventfd_t ignored = 0;
  eventfd_read(news_.get(), &ignored);
  const size_t from = std::exchange(news_from_, forgotten_ + lines_.size());
  return {lines_.begin() + static_cast<ptrdiff_t>(placeOf(from)), lines_.end()};
}

size_t LineReader::count() const {
  const std::scoped_lock lock(mutex_);
  return forgotten_ + lines_.size();
}

void LineReader::forget(size_t from) {
  const std::scoped_lock lock(mutex_);
  const size_t gone = placeOf(from);
  lines_.erase(lines_.begin(), lines_.begin() + static_cast<ptrdiff_t>(gone));
  forgotten_ += gone;
}

std::vector<std::string> LineReader::lines(size_t from) const {
  std::vector<std::string> texts;
  for (StampedLine& line : stampedLines(from))
    texts.push_back(std::move(line.text));
  return texts;
}

std::vector<StampedLine> LineReader::stampedLines(size_t from) const {
  const std::scoped_lock lock(mutex_);
  return {lines_.begin() + static_cast<ptrdiff_t>(placeOf(from)), lines_.end()};
}

template <typename Matches>
std::optional<size_t> LineReader::waitForText(Matches matches, size_t from, Millis timeout) const {
  size_t next = from;
  std::optional<size_t> found;
  const auto foundOrEnded = [&] {
    for (size_t at = placeOf(next); at < lines_.size() && !found; ++at) {
      next = forgotten_ + at + 1;
      if (matches(textOf(lines_[at].text))) found = next - 1;
    }
    return found || ended_;
  };
  std::unique_lock lock(mutex_);
  changed_.wait_for(lock, timeout, foundOrEnded);
  return found;
}

std::optional<size_t> LineReader::waitFor(std::string_view text, size_t from, Millis timeout) const {
  return waitForText([text](std::string_view line) { return line == text; }, from, timeout);
}

std::optional<size_t> LineReader::waitForPart(std::string_view part, size_t from, Millis timeout) const {
  return waitForText([part](std::string_view line) { return line.find(part) != std::string_view::npos; },
                     from, timeout);
}

void LineReader::catchUp(Millis timeout) const {
  std::unique_lock lock(mutex_);
  changed_.wait_for(lock, timeout, [this] {
    int left = 0;
    return ended_ || ioctl(pipe_.get(), FIONREAD, &left) != 0 || left == 0;
  });
}

bool LineReader::waitForEnd(Millis timeout) const {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, timeout, [this] { return ended_; });
}

}  // namespace handset
