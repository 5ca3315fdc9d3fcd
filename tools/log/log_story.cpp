#include "tools/log/log_story.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <utility>

#include "core/ground/hook_ids.h"
#include "handset/bytes.h"
#include "handset/message_table.h"
#include "qmi/send.h"
#include "tools/bench/modem_control.h"
#include "tools/records/record_table.h"

namespace tools {

namespace {

/// Processes that a log is followed by at a time; the one that was silent longest is given up for another.
constexpr size_t kTellersMax = 16;
/// Elements of a request that are told one by one.
constexpr size_t kTransfersMax = 2;
/// Of the first line that is not known. Characters.
constexpr size_t kUnknownMax = 160;

/// The log's clock is not exactly the one that the modem is waited for by. Milliseconds.
constexpr int64_t kSilence = kesext::kSendTimeoutMs - 50;

uint32_t hexIn(std::string_view digits) {
  uint32_t number = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), number, 16);
  return number;
}

std::string indicationName(uint32_t id) {
  const auto* row = handset::findIndication(static_cast<uint16_t>(id));
  return row != nullptr ? std::string(row->name) : fmt::format("0x{:04X}", id);
}

/// What a dump says that a line announced: the fields of an answer's payload, or its bytes.
void addDump(LogEvent& event, const DumpAnnouncement& announced, std::string_view digits) {
  constexpr std::string_view kDigits = "0123456789ABCDEFabcdef";
  if (digits.size() % 2 != 0 || digits.find_first_not_of(kDigits) != std::string_view::npos) return;
  const handset::Bytes bytes = handset::hex(digits);
  const DecodedRecord decoded = decodeDump(announced, bytes);
  if (decoded.problem) return;
  for (const DecodedField& field : decoded.fields) {
    const std::string_view name = field.name;
    if (announced.fields.empty() && (field.offset < kesext::kOemHookPayloadOffset || name == "end")) continue;
    const handset::ByteView value = handset::ByteView(bytes).subspan(field.offset, field.size);
    const bool plain = field.value.ends_with(" bytes");
    addDetail(event, fmt::format("{} {}", name, plain ? shortened(handset::toHex(value, "")) : field.value));
  }
}

}  // namespace

LogStory::Teller& LogStory::tellerOf(int32_t process) {
  const auto found =
      std::find_if(tellers_.begin(), tellers_.end(), [&](const Teller& of) { return of.process == process; });
  if (found != tellers_.end()) {
    std::rotate(tellers_.begin(), found, found + 1);
    return tellers_.front();
  }
  if (tellers_.size() == kTellersMax) {
    cut(tellers_.back(), "the log has no more of its process");
    tellers_.pop_back();
  }
  Teller teller{.process = process};
  return *tellers_.insert(tellers_.begin(), std::move(teller));
}

LogEvent LogStory::begin(EventKind happening, const LogLine& line) const {
  return {.happening = happening,
          .line = summary_.lines,
          .process = line.process,
          .time = std::string(line.time),
          .began = line.millis};
}

void LogStory::take(const std::optional<LogLine>& line) {
  ++summary_.lines;
  if (!line) return;
  ++summary_.own;
  if (line->text.find_first_not_of(" \t") == std::string_view::npos) return;
  Places places;
  const LineRow* row = findLine(line->text, places);
  if (row == nullptr) {
    if (summary_.unknown++ == 0)
      summary_.first_unknown = {summary_.lines, std::string(line->text.substr(0, kUnknownMax))};
    return;
  }
  Teller& teller = tellerOf(line->process);
  teller.context.bench = line->process == 0 && line->time.empty();
  note(teller, *line, *row, places);
}

void LogStory::note(Teller& teller, const LogLine& line, const LineRow& row, const Places& places) {
  switch (row.kind) {
    case LineKind::indication:
    case LineKind::report:
    case LineKind::modemLog:
    case LineKind::logTrouble:
      return noteApart(teller, line, row, places);
    default:
      break;
  }
  noteSilence(teller, line);
  switch (row.kind) {
    case LineKind::quiet:
      return;
    case LineKind::started:
    case LineKind::arguments:
    case LineKind::waits:
    case LineKind::connected:
    case LineKind::notStarted:
    case LineKind::ready:
    case LineKind::ended:
      return noteStart(teller, line, row, places);
    default:
      return noteRequest(teller, line, row, places);
  }
}

/// The process does nothing but wait for the modem between two lines that are so far apart.
void LogStory::noteSilence(Teller& teller, const LogLine& line) {
  const auto passed = millisBetween(teller.last_time, line.millis);
  teller.last_time = line.millis;
  LogEvent* event = teller.current();
  if (event != nullptr && passed.value_or(0) >= kSilence) ++event->silences;
}

void LogStory::noteStart(Teller& teller, const LogLine& line, const LineRow& row, const Places& places) {
  switch (row.kind) {
    case LineKind::started:
      cut(teller, "the process started anew");
      ++summary_.starts;
      teller = {
          .process = teller.process, .context = {.bench = teller.context.bench}, .last_time = line.millis};
      teller.start_up = begin(EventKind::startUp, line);
      return;
    case LineKind::ready:
      endRequest(teller, line.millis, Ending::answered);
      endStart(teller, line.millis, Ending::success);
      return;
    case LineKind::ended: {
      endReport(teller);
      LogEvent end = begin(EventKind::end, line);
      addDetail(end, inWords(row.words, places, teller.context));
      return tell(std::move(end));
    }
    default:
      break;
  }
  if (!teller.start_up) return;
  if (row.kind == LineKind::arguments)
    addDetail(*teller.start_up, inWords(row.words, places, teller.context));
  if (row.kind == LineKind::waits) ++teller.waits;
  if (row.kind == LineKind::connected) {
    const auto took = millisBetween(teller.start_up->began, line.millis);
    if (took)
      addDetail(*teller.start_up, fmt::format("the modem's services were there after {}", inSeconds(*took)));
    if (teller.waits > 0)
      addDetail(*teller.start_up, fmt::format("waited {} for one, up to 1 s each", times(teller.waits)));
  }
  if (row.kind == LineKind::notStarted) {
    addProblem(*teller.start_up, {summary_.lines, inWords(row.words, places, teller.context)});
    endStart(teller, line.millis, Ending::failed);
  }
}

void LogStory::noteRequest(Teller& teller, const LogLine& line, const LineRow& row, const Places& places) {
  const auto words = [&] { return inWords(row.words, places, teller.context); };
  switch (row.kind) {
    case LineKind::received:
      cut(teller, "the next one came");
      teller.request = begin(EventKind::request, line);
      teller.request->name = "without an id";
      return;
    case LineKind::element:
      teller.context.element = words();
      return;
    case LineKind::dumpAhead:
      teller.announced = announcementOn(line.text);
      return;
    default:
      break;
  }
  LogEvent* event = teller.current();
  if (row.kind == LineKind::dump) {
    teller.context.dump = places[0];
    const DumpAnnouncement* announced = std::exchange(teller.announced, nullptr);
    if (announced != nullptr && event != nullptr) addDump(*event, *announced, places[0]);
    return;
  }
  if (event == nullptr) {
    if (row.kind != LineKind::trouble) return;  // of a request that began before the log
    LogEvent trouble = begin(EventKind::trouble, line);
    addProblem(trouble, {trouble.line, words()});
    return tell(std::move(trouble));
  }
  if (teller.context.bench && tellsTimeOut(row.words, places)) ++event->silences;
  switch (row.kind) {
    case LineKind::identified: {
      const uint32_t id = hexIn(places[0]);
      const RequestRow* request = findRequest(places[1] == "0" ? Family::cdma : Family::generic, id);
      event->name = request != nullptr ? request->command : "unknown";
      if (request == nullptr) addDetail(*event, fmt::format("id 0x{:08X}", id));
      teller.missing = 0;
      teller.writes_nam = id == kesext::HOOK_NAM_WRITE;
      return;
    }
    case LineKind::transfer:
      if (++teller.transfers <= kTransfersMax) teller.transferred.push_back(words());
      return;
    case LineKind::asks:
      teller.asked = Problem{summary_.lines, words()};
      return;
    case LineKind::answers:
      teller.asked.reset();
      return;
    case LineKind::succeeded:
      teller.asked.reset();
      worsen(*event, Ending::success);
      return addDetail(*event, words());
    case LineKind::unserved:
      worsen(*event, Ending::notServed);
      return addProblem(*event, {summary_.lines, words()});
    case LineKind::failed: {
      teller.asked.reset();
      // An item that a NAM is written into may be missing: its other bytes are zeros then.
      if (teller.request && teller.writes_nam && line.text.starts_with("NV Read")) {
        ++teller.missing;
        return;
      }
      if (teller.request) worsen(*event, Ending::failed);
      return addProblem(*event, {summary_.lines, words()});
    }
    case LineKind::zeros:
      worsen(*event, Ending::zeros);
      return addProblem(*event, {summary_.lines, words()});
    case LineKind::trouble:
      return addProblem(*event, {summary_.lines, words()});
    default:
      return addDetail(*event, words());
  }
}

void LogStory::noteApart(Teller& teller, const LogLine& line, const LineRow& row, const Places& places) {
  const std::string words = inWords(row.words, places, teller.context);
  if (row.kind == LineKind::indication) {
    endReport(teller);
    teller.report = begin(EventKind::report, line);
    teller.report->name = indicationName(hexIn(places[0]));
    return addDetail(*teller.report, fmt::format("{} bytes", places[1]));
  }
  if (words.empty()) return;
  if (row.kind == LineKind::report && teller.report) return addDetail(*teller.report, words);
  endReport(teller);
  LogEvent event = begin(row.kind == LineKind::report ? EventKind::report : EventKind::modemLog, line);
  if (row.kind == LineKind::logTrouble)
    addProblem(event, {event.line, words});
  else
    addDetail(event, words);
  tell(std::move(event));
}

/// A few elements with what they hold; of more, how many.
void LogStory::addTransfers(Teller& teller, LogEvent& event) {
  const size_t transfers = std::exchange(teller.transfers, 0);
  const std::vector<std::string> transferred = std::exchange(teller.transferred, {});
  if (transfers > kTransfersMax)
    return addDetail(event, fmt::format("{} elements read or written", transfers));
  for (const std::string& words : transferred)
    addDetail(event, words);
}

void LogStory::endStart(Teller& teller, std::optional<int64_t> now, Ending ending) {
  if (!teller.start_up) return;
  endReport(teller);
  LogEvent event = *std::exchange(teller.start_up, std::nullopt);
  event.took = millisBetween(event.began, now);
  event.ending = ending;
  addTransfers(teller, event);
  tell(std::move(event));
}

void LogStory::endRequest(Teller& teller, std::optional<int64_t> now, Ending ending) {
  if (!teller.request) return;
  endReport(teller);
  LogEvent event = *std::exchange(teller.request, std::nullopt);
  event.took = millisBetween(event.began, now);
  worsen(event, ending);
  if (teller.asked) {
    addProblem(event, *teller.asked);
    worsen(event, Ending::failed);
  }
  addTransfers(teller, event);
  if (const size_t missing = std::exchange(teller.missing, 0); missing > 0)
    addDetail(event, fmt::format("{} items were not there before", missing));
  teller.asked.reset();
  teller.announced = nullptr;
  tell(std::move(event));
}

void LogStory::endReport(Teller& teller) {
  if (teller.report) tell(*std::exchange(teller.report, std::nullopt));
}

void LogStory::cut(Teller& teller, std::string_view why) {
  const auto say = [&](std::optional<LogEvent>& event, std::string_view what) {
    if (event) addDetail(*event, fmt::format("{}: {}", what, why));
  };
  say(teller.request, "no answer in the log");
  say(teller.start_up, "not ready in the log");
  teller.asked.reset();
  endRequest(teller, std::nullopt, Ending::cut);
  endStart(teller, std::nullopt, Ending::cut);
  endReport(teller);
}

void LogStory::finish() {
  for (Teller& teller : tellers_)
    cut(teller, "the log ends");
  tellers_.clear();
  if (held_) tell_(*std::exchange(held_, std::nullopt));
}

void LogStory::tell(LogEvent event) {
  summary_.count(event);
  const auto same = [](const LogEvent& a, const LogEvent& b) {
    const auto words = [](const Problem& x, const Problem& y) { return x.words == y.words; };
    return a.happening == b.happening && a.process == b.process && a.name == b.name &&
           a.details == b.details &&
           std::equal(a.problems.begin(), a.problems.end(), b.problems.begin(), b.problems.end(), words);
  };
  if (held_ && same(*held_, event)) {
    ++held_->count;
    return;
  }
  if (held_) tell_(*std::exchange(held_, std::nullopt));
  const bool repeats = event.happening != EventKind::request && event.happening != EventKind::startUp;
  if (repeats)
    held_ = std::move(event);
  else
    tell_(event);
}

}  // namespace tools
