#include <fmt/format.h>

#include "tools/bench/interruption.h"
#include "tools/bench/modem_control.h"
#include "tools/records/encode.h"
#include "tools/scenario/files.h"
#include "tools/scenario/steps.h"
#include "tools/text/usage_error.h"

namespace tools {

namespace {

using handset::Bytes;

void needProcess(const Reading& reading) {
  if (!reading.running)
    throw UsageError(R"(the process does not run here; a step with "process": "start" goes before)");
}

/// A record that came. Nothing has to be expected of it for it to make sense.
PlayedRecord taken(Play& play, std::string_view what, const Bytes& bytes, DecodedRecord decoded,
                   Moment moment) {
  if (decoded.problem)
    play.wrong.push_back(fmt::format("the {} does not parse, at byte {}: {}", what, decoded.problem->offset,
                                     decoded.problem->text));
  return {bytes, std::move(decoded), moment};
}

struct ProcessWord {
  std::string_view name;
  bool ends;
  bool starts;
};
constexpr ProcessWord kProcessWords[] = {
    {"start", false, true}, {"end", true, false}, {"restart", true, true}};

void tellProcess(Play& play, const ProcessWord& word) {
  if (word.ends) play.exit = play.station.end();
  if (word.ends && !play.exit) throw play.station.trouble("the process does not end when its requests do");
  if (!word.starts) return;
  play.station.start();
  play.log_mark = 0;
}

Deed readProcess(const Json& value, Reading& reading) {
  for (const ProcessWord& word : kProcessWords) {
    if (word.name != textOf(value)) continue;
    if (word.ends) needProcess(reading);
    if (!word.ends && reading.running) throw UsageError("the process runs already");
    reading.running = word.starts;
    reading.ends_process = word.ends;
    if (word.starts) reading.typed = {"restart"};
    return [word](Play& play) { tellProcess(play, word); };
  }
  throw UsageError(fmt::format("takes start, end or restart, not '{}'", textOf(value)));
}

Deed readRequest(const Json& value, Reading& reading) {
  reading.request = encodeWords(splitWords(textOf(value)));
  reading.typed = {textOf(value)};
  needProcess(reading);
  return [request = reading.request](Play& play) {
    play.request = {request, decodeRequest(request), {}};
    const Answer answer = play.station.ask(request);
    play.request->moment = {.time = answer.asked};
    play.answer =
        taken(play, "answer", answer.bytes, decodeAnswer(request, answer.bytes), {answer.came, answer.asked});
    // The log is complete then.
    play.station.process().waitForLogSince(play.log_mark, "Child process waiting for data");
  };
}

std::vector<ModemOrder> readOrders(const Json& value, Reading& reading, std::string_view before,
                                   ModemOrder (*read)(Words)) {
  return readEach(value, [&](const Json& line) {
    reading.typed.push_back(fmt::format("{} {}", before, textOf(line)));
    return read(splitWords(textOf(line)));
  });
}

void tellModem(Play& play, const std::vector<ModemOrder>& orders) {
  for (const ModemOrder& order : orders)
    order(play.station.modem());
}

ModemOrder readOrder(Words words) {
  if (!words.empty() && words.front() == "indicate")
    throw UsageError(R"(an indication is a step of its own: "indicate": "NAME ...")");
  return modemOrder(words);
}

Deed readModem(const Json& value, Reading& reading) {
  return [orders = readOrders(value, reading, "modem", readOrder)](Play& play) { tellModem(play, orders); };
}

Deed readIndicate(const Json& value, Reading& reading) {
  const std::vector<ModemOrder> orders = readOrders(value, reading, "modem indicate", indication);
  needProcess(reading);
  reading.indicates = true;
  return [orders](Play& play) {
    tellModem(play, orders);
    if (!play.station.settle()) {
      play.wrong.emplace_back("the process has no link to the modem, so it heard nothing");
      return;
    }
    // Everything was written before the process came to the end of the indications.
    while (auto message = play.station.process().nextUnsolicited(handset::Millis(0)))
      play.messages.push_back(taken(play, "message", *message, decodeUnsolicited(*message),
                                    {.time = std::chrono::steady_clock::now()}));
  };
}

Deed makeFiles(const std::vector<FileDescription>& files) {
  return [files](Play& play) {
    const auto held = holdOffInterruption();
    for (const FileDescription& file : files)
      makeFile(play.station.folder(), file);
  };
}

constexpr StepWord kActions[] = {
    {"process", R"("start" | "end" | "restart")",
     "starts it and waits until it serves; closes its request pipe, whereupon it ends", readProcess},
    {"request", R"("NAME ARGUMENT ...")",
     "sends a request, in the words of hookctl send, and takes its answer", readRequest},
    {"modem", R"("WORDS")", "tells the modem something, in the words of hookctl modem", readModem},
    {"indicate", R"("NAME ARGUMENT ...")",
     "the modem indicates something; done when the process is through with it", readIndicate},
    {"file", kFileFormat,
     "makes a file of the handset; a size without content cuts or extends it, and takes no room",
     [](const Json& value, Reading&) { return makeFiles(readEach(value, readFile)); }},
    {"properties", R"({"NAME": "VALUE" | null})", "sets system properties, or takes them away",
     [](const Json& value, Reading&) { return makeFiles(readProperties(value)); }},
};

}  // namespace

Play::Play(Station& at)
    : station(at),
      log_mark(at.started() ? at.process().logMark() : 0),
      dropbox_mark(at.folder().dropboxEntries().size()) {
  at.modem().takeRequests();
}

std::span<const StepWord> actionWords() {
  return kActions;
}

}  // namespace tools
