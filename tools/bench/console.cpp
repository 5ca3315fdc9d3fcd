#include "tools/bench/console.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <system_error>

namespace tools {

namespace {

constexpr std::string_view kBold = "\x1b[1m";
constexpr std::string_view kDim = "\x1b[2m";
constexpr std::string_view kGreen = "\x1b[32m";
constexpr std::string_view kRed = "\x1b[31m";
constexpr std::string_view kCyan = "\x1b[36m";
constexpr std::string_view kPlain = "\x1b[0m";

constexpr size_t kBytesPerRow = 8;
/// Rows of bytes that a field is shown with at most.
constexpr size_t kRowsPerField = 4;

/// Keeps records with short names in line with one another.
constexpr size_t kUsualName = 12;

/// Of the tool, as near as matters.
const handset::Instant kStart = std::chrono::steady_clock::now();

}  // namespace

void flushOutput() {
  if (std::fflush(stdout) != 0) throw std::system_error(errno, std::generic_category(), "standard output");
}

std::string_view outcomeName(Outcome outcome) {
  constexpr std::string_view kNames[] = {"ok", "WRONG", "not played"};
  return kNames[static_cast<size_t>(outcome)];
}

bool isCapableTerminal() {
  const char* kind = std::getenv("TERM");
  return isatty(STDOUT_FILENO) == 1 && kind != nullptr && std::string_view(kind) != "dumb";
}

void complain(const std::string& text) {
  std::string line = text + '\n';
  // What is quoted there may be anything, and is nothing for a terminal to act upon.
  std::replace_if(
      line.begin(), line.end(), [](unsigned char c) { return (c < ' ' && c != '\n') || c == 0x7F; }, '?');
  (void)!write(STDERR_FILENO, line.data(), line.size());
}

double secondsSinceStart(handset::Instant time) {
  const auto milliseconds = std::chrono::round<handset::Millis>(time - kStart);
  return static_cast<double>(milliseconds.count()) / 1000;
}

double tookMs(handset::Instant since, handset::Instant until) {
  return std::round(std::chrono::duration<double, std::milli>(until - since).count() * 10) / 10;
}

Console::Console(ColourWhen when, bool times)
    : colour_(when == ColourWhen::always || (when == ColourWhen::automatic && isCapableTerminal())),
      times_(times) {}

std::string Console::margin(std::optional<handset::Instant> time) const {
  if (!times_) return "    ";
  if (!time) return fmt::format("{:11}", "");
  return fmt::format("{}{:9.3f}{}  ", paint(kDim), secondsSinceStart(*time), paint(kPlain));
}

void Console::section(std::string_view title) const {
  fmt::print("\n{}{}{}\n", paint(kBold), title, paint(kPlain));
}

void Console::step(std::string_view title) const {
  fmt::print("\n  {}{}{}\n", paint(kCyan), title, paint(kPlain));
}

void Console::record(std::string_view direction, const DecodedRecord& decoded, handset::ByteView bytes,
                     const Moment& moment) const {
  const std::string took =
      moment.time && moment.since ? fmt::format(", {:.1f} ms", tookMs(*moment.since, *moment.time)) : "";
  fmt::print("{}{:<8} {}  {}({} bytes{}){}\n", margin(moment.time), direction, decoded.title, paint(kDim),
             bytes.size(), took, paint(kPlain));
  const std::string left = margin();
  size_t width = kUsualName;
  for (const DecodedField& field : decoded.fields)
    width = std::max(width, field.name.size());
  for (const DecodedField& field : decoded.fields) {
    const handset::ByteView all = bytes.subspan(field.offset, field.size);
    const handset::ByteView shown = all.first(std::min(all.size(), kRowsPerField * kBytesPerRow));
    for (size_t at = 0; at < shown.size(); at += kBytesPerRow) {
      const auto row = shown.subspan(at, std::min(kBytesPerRow, shown.size() - at));
      fmt::print("{}  {}{:5}{}  {:<23}", left, paint(kDim), field.offset + at, paint(kPlain),
                 handset::toHex(row));
      if (at == 0) fmt::print("  {:<{}} {}", field.name, width, field.value);
      fmt::print("\n");
    }
    if (shown.size() < all.size())
      fmt::print("{}         ... {} more bytes\n", left, all.size() - shown.size());
  }
  if (decoded.problem)
    fmt::print("{}  {}{:5}  DOES NOT PARSE: {}{}\n", left, paint(kRed), decoded.problem->offset,
               decoded.problem->text, paint(kPlain));
}

void Console::trace(const std::vector<std::string>& lines, std::optional<handset::Instant> time) const {
  for (size_t i = 0; i < lines.size(); ++i)
    fmt::print("{}{}{:<8} {}{}\n", margin(i == 0 ? time : std::nullopt), paint(kDim), i == 0 ? "modem" : "",
               lines[i], paint(kPlain));
}

void Console::note(std::string_view text, std::optional<handset::Instant> time) const {
  fmt::print("{}{}\n", margin(time), text);
}

void Console::happening(bool good, std::string_view line) const {
  fmt::print("{}{}{}\n", paint(good ? "" : kRed), line, paint(good ? "" : kPlain));
}

void Console::outcome(size_t number, Outcome outcome, std::string_view title) const {
  const std::string_view colour = outcome == Outcome::good ? kGreen : outcome == Outcome::wrong ? kRed : kDim;
  fmt::print("  {:3}  {}{:<10}{}  {}\n", number, paint(colour), outcomeName(outcome), paint(kPlain), title);
}

}  // namespace tools
