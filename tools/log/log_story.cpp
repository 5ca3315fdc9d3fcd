#include "tools/log/log_story.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <utility>

#include "core/ground/hook_ids.h"
#include "handset/bytes.h"
#include "qmi/send.h"
#include "tools/bench/link_trace.h"
#include "tools/records/record_table.h"

namespace tools {

namespace {

/// Processes that a log is followed by at a time; the one that was silent longest is given up for another.
constexpr size_t kTellersMax = 16;
/// Elements of a request that are told one by one.
constexpr size_t kTransfersMax = 2;

/// The log's clock is not exactly the one that the modem is waited for by. Milliseconds.
constexpr int64_t kSilence = kesext::kSendTimeoutMs - 50;

uint32_t hexIn(std::string_view digits) {
  uint32_t number = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), number, 16);
  return number;
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
    event.addDetail(fmt::format("{} {}", name, plain ? shortened(handset::toHex(value, "")) : field.value));
  }
}

/// What a line does by its kind to the event that it is of.
struct Effect {
  LineKind kind;
  Ending ending = Ending::answered;
  bool answers = false;  // the modem did
  bool trouble = false;  // its words tell what went wrong
};
constexpr Effect kEffects[] = {{LineKind::answers, Ending::answered, true},
                               {LineKind::succeeded, Ending::success, true},
                               {LineKind::failed, Ending::failed, true, true},
                               {LineKind::zeros, Ending::zeros, false, true},
                               {LineKind::unserved, Ending::notServed, false, true},
                               {LineKind::trouble, Ending::answered, false, true},
                               {LineKind::notStarted, Ending::answered, false, true},
                               {LineKind::reportTrouble, Ending::answered, false, true},
                               {LineKind::logTrouble, Ending::answered, false, true}};

Effect effectOf(LineKind kind) {
  const auto* row = std::find_if(std::begin(kEffects), std::end(kEffects),
                                 [kind](const Effect& effect) { return effect.kind == kind; });
  return row != std::end(kEffects) ? *row : Effect{.kind = kind};
}

/// Adds the words of a line to what is told.
void add(LogEvent& event, size_t line, LineKind kind, std::string_view words) {
  if (effectOf(kind).trouble)
    event.addProblem(line, words);
  else
    event.addDetail(words);
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
  return *tellers_.insert(tellers_.begin(), Teller{.process = process});
}

LogEvent LogStory::eventOf(EventKind happening, const LogLine& line) const {
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
    if (summary_.unknown++ == 0) summary_.first_unknown = {summary_.lines, keptWords(line->text)};
    return;
  }
  Teller& teller = tellerOf(line->process);
  teller.context.bench = line->bench;
  note(teller, *line, *row, places);
}

void LogStory::note(Teller& teller, const LogLine& line, const LineRow& row, const Places& places) {
  if (row.kind >= LineKind::indication) return noteApart(teller, line, row, places);
  // The process does nothing but wait for the modem between two lines that are so far apart.
  const auto passed = millisBetween(std::exchange(teller.last_time, line.millis), line.millis);
  if (teller.current && passed.value_or(0) >= kSilence) ++teller.current->silences;
  switch (row.kind) {
    case LineKind::quiet:
      return;
    case LineKind::started:
      ++summary_.starts;
      return begin(teller, EventKind::startUp, line, "the process started anew");
    case LineKind::received:
      begin(teller, EventKind::request, line, "the next one came");
      teller.current->name = "without an id";
      return;
    case LineKind::ready:
      return end(teller, line.millis,
                 teller.current && teller.current->happening == EventKind::startUp ? Ending::success
                                                                                   : Ending::answered);
    case LineKind::element:
      teller.context.element = inWords(row.words, places, teller.context);
      return;
    case LineKind::dumpAhead:
      teller.announced = announcementOn(line.text);
      return;
    case LineKind::ended:
      endReport(teller);
      return tellAlone(EventKind::end, line, row.kind, row.words);
    default:
      break;
  }
  if (teller.current) return noteCurrent(teller, line, row, places);
  // Any other kind is of a request that began before the log.
  if (row.kind == LineKind::trouble)
    tellAlone(EventKind::trouble, line, row.kind, inWords(row.words, places, teller.context));
}

/// What a line tells of the request or the start-up that the process is at.
void LogStory::noteCurrent(Teller& teller, const LogLine& line, const LineRow& row, const Places& places) {
  LogEvent& event = *teller.current;
  const std::string words = inWords(row.words, places, teller.context);
  if (teller.context.bench && tellsTimeOut(row.words, places)) ++event.silences;
  switch (row.kind) {
    case LineKind::waits:
      ++teller.waits;
      return;
    case LineKind::connected:
      if (const auto took = millisBetween(event.began, line.millis))
        event.addDetail(fmt::format("the modem's services were there after {}", inSeconds(*took)));
      if (teller.waits > 0)
        event.addDetail(fmt::format("waited {} for one, up to 1 s each", times(teller.waits)));
      return;
    case LineKind::notStarted:
      event.addProblem(summary_.lines, words);
      return end(teller, line.millis, Ending::failed);
    case LineKind::identified: {
      const uint32_t id = hexIn(places[0]);
      if (id == kesext::kUnusableMsgId) return;
      const RequestRow* request = findRequest(places[1] == "0" ? Family::cdma : Family::generic, id);
      event.name = request != nullptr ? request->command : "unknown";
      if (request == nullptr) event.addDetail(fmt::format("id 0x{:08X}", id));
      teller.writes_nam = id == kesext::HOOK_NAM_WRITE;
      return;
    }
    case LineKind::dump:
      teller.context.dump = places[0];
      if (const auto* announced = std::exchange(teller.announced, nullptr))
        addDump(event, *announced, places[0]);
      return;
    case LineKind::transfer:
      if (++teller.transfers <= kTransfersMax) teller.transferred.push_back(words);
      return;
    case LineKind::asks:
      teller.asked = {summary_.lines, words};
      return;
    case LineKind::failed:
      // An item that a NAM is written into may be missing: its other bytes are zeros then.
      if (teller.writes_nam && line.text.starts_with("NV Read")) {
        ++teller.missing;
        return;
      }
      break;
    default:
      break;
  }
  const Effect effect = effectOf(row.kind);
  if (effect.answers) teller.asked = {};
  if (event.happening == EventKind::request) event.worsen(effect.ending);
  add(event, summary_.lines, row.kind, words);
}

/// What a line tells that comes of the modem's own reports, in between the others.
void LogStory::noteApart(Teller& teller, const LogLine& line, const LineRow& row, const Places& places) {
  if (row.kind == LineKind::indication) {
    endReport(teller);
    teller.report = eventOf(EventKind::report, line);
    teller.report->name = indicationName(static_cast<uint16_t>(hexIn(places[0])));
    return teller.report->addDetail(fmt::format("{} bytes", places[1]));
  }
  const std::string words = inWords(row.words, places, teller.context);
  if (words.empty()) return;
  const bool of_report = row.kind == LineKind::report || row.kind == LineKind::reportTrouble;
  if (of_report && teller.report) return add(*teller.report, summary_.lines, row.kind, words);
  endReport(teller);
  tellAlone(row.kind == LineKind::report          ? EventKind::report
            : row.kind == LineKind::reportTrouble ? EventKind::trouble
                                                  : EventKind::modemLog,
            line, row.kind, words);
}

/// Tells what one line says all of.
void LogStory::tellAlone(EventKind happening, const LogLine& line, LineKind kind, std::string_view words) {
  LogEvent event = eventOf(happening, line);
  add(event, event.line, kind, words);
  tell(std::move(event));
}

/// Begins a request or a start-up, which ends the one before.
void LogStory::begin(Teller& teller, EventKind happening, const LogLine& line, std::string_view why) {
  cut(teller, why);
  teller = {.process = line.process, .current = eventOf(happening, line), .last_time = line.millis};
}

void LogStory::end(Teller& teller, std::optional<int64_t> now, Ending ending) {
  if (!teller.current) return;
  endReport(teller);
  LogEvent event = *std::exchange(teller.current, std::nullopt);
  event.took = millisBetween(event.began, now);
  event.worsen(teller.asked.words.empty() ? ending : std::max(ending, Ending::failed));
  event.addProblem(teller.asked.line, teller.asked.words);
  if (teller.transfers > kTransfersMax)
    event.addDetail(fmt::format("{} elements read or written", teller.transfers));
  else
    for (const std::string& words : teller.transferred)
      event.addDetail(words);
  if (teller.missing > 0) event.addDetail(fmt::format("{} items were not there before", teller.missing));
  tell(std::move(event));
}

void LogStory::endReport(Teller& teller) {
  if (teller.report) tell(*std::exchange(teller.report, std::nullopt));
}

void LogStory::cut(Teller& teller, std::string_view why) {
  if (teller.current) {
    const bool request = teller.current->happening == EventKind::request;
    teller.current->addDetail(fmt::format("{} in the log: {}", request ? "no answer" : "not ready", why));
    teller.asked = {};
  }
  end(teller, std::nullopt, Ending::cut);
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
  if (held_ && held_->isLike(event)) {
    ++held_->count;
    return;
  }
  if (held_) tell_(*std::exchange(held_, std::nullopt));
  if (event.happening == EventKind::request || event.happening == EventKind::startUp)
    tell_(event);
  else
    held_ = std::move(event);
}

}  // namespace tools
