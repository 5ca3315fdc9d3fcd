// Collects the lines that arrive on a pipe, on a thread of its own, so that the writer never waits for a
// reader.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "handset/timeout.h"
#include "platform/host/unique_fd.h"

namespace handset {

/// A line without its line feed, and when it was read.
struct StampedLine {
  Instant time;
  std::string text;
};

/// May be used from any thread.
class LineReader {
 public:
  /// Reads until the end of file, or until this object goes.
  explicit LineReader(host::UniqueFd pipe);
  LineReader(const LineReader&) = delete;
  LineReader& operator=(const LineReader&) = delete;
  ~LineReader();

  /// How many lines there have been so far.
  [[nodiscard]] size_t count() const;
  /// The lines from number `from` on, without their line feeds.
  [[nodiscard]] std::vector<std::string> lines(size_t from = 0) const;
  [[nodiscard]] std::vector<StampedLine> stampedLines(size_t from) const;
  /// Lets the lines before number `from` go; the others keep their numbers.
  void forget(size_t from);
  /// Waits for a line with this text, at number `from` or later. The text of a line is what follows its first
  /// ": ", the whole line without one. Returns the line's number, or nothing when the time passed or the pipe
  /// ended first.
  std::optional<size_t> waitFor(std::string_view text, size_t from, Millis timeout) const;
  /// The same for a line of which this is a part.
  std::optional<size_t> waitForPart(std::string_view part, size_t from, Millis timeout) const;

  /// The lines since the last call, and a descriptor that can be read while there are some.
  std::vector<StampedLine> newLines();
  [[nodiscard]] int newLinesFd() const { return news_.get(); }

  /// Waits until everything that was written before is among the lines, or the time is up.
  void catchUp(Millis timeout) const;

  /// Waits for the end of the pipe; false when the time passed first.
  bool waitForEnd(Millis timeout) const;

 private:
  template <typename Matches>
  std::optional<size_t> waitForText(Matches matches, size_t from, Millis timeout) const;
  void run();
  ssize_t read();
  void take(std::string_view chunk);
  void addToPartial(std::string_view chunk);
  void announce() const;
  /// Of what is kept, the place of line number `from`.
  [[nodiscard]] size_t placeOf(size_t from) const;

  host::UniqueFd pipe_;
  host::UniqueFd stop_;
  host::UniqueFd news_;
  size_t news_from_ = 0;
  size_t forgotten_ = 0;
  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  std::vector<StampedLine> lines_;
  std::string partial_;
  bool ended_ = false;
  std::thread thread_;  // last: it uses all of the above
};

}  // namespace handset
