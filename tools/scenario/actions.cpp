#include <fmt/format.h>

#include "tools/bench/interruption.h"
#include "tools/bench/modem_control.h"
#include "tools/records/encode.h"
#include "tools/scenario/files.h"
#include "tools/scenario/scenario.h"
#include "tools/text/usage_error.h"

namespace tools {

namespace {

void needProcess(const Reading& reading) {
  if (!reading.running)
    throw UsageError(R"(the process does not run here; a step with "process": "start" goes before)");
}

/// Keeps a record that came. Nothing has to be expected of it for it to make sense.
void take(Play& play, PlayedRecord record) {
  if (const auto& problem = record.decoded.problem)
    play.wrong.push_back(fmt::format("the {} does not parse, at byte {}: {}", record.direction,
                                     problem->offset, problem->text));
  play.records.push_back(std::move(record));
}

Deed readProcess(const Json& value, Reading& reading) {
  const std::string& word = textOf(value);
  const bool ends = word == "end" || word == "restart";
  const bool starts = word == "start" || word == "restart";
  if (!ends && !starts) throw UsageError(fmt::format("takes start, end or restart, not '{}'", word));
  if (ends) needProcess(reading);
  if (!ends && reading.running) throw UsageError("the process runs already");
  reading.running = starts;
  reading.ends_process = ends;
  if (starts) reading.step.typed = {"restart"};
  return [ends, starts](Play& play) {
    if (ends) play.exit = play.station.end();
    if (ends && !play.exit) throw play.station.trouble("the process does not end when its requests do");
    if (!starts) return;
    play.station.start();
    play.log_mark = 0;
  };
}

Deed readRequest(const Json& value, Reading& reading) {
  reading.request = encodeWords(splitWords(textOf(value)));
  reading.step.typed = {textOf(value)};
  needProcess(reading);
  return [request = reading.request](Play& play) {
    play.records.push_back({"request", request, decodeRequest(request), {}});
    const Answer answer = play.station.ask(request);
    play.records.back().moment = {.time = answer.asked};
    take(play, {"answer", answer.bytes, decodeAnswer(request, answer.bytes), {answer.came, answer.asked}});
    // The log is complete then.
    play.station.process().waitForLogSince(play.log_mark, "Child process waiting for data");
  };
}

/// Lines of words for the modem, which are typed behind others in the shell.
Deed readOrders(const Json& value, Reading& reading, std::string_view behind, ModemOrder (*read)(Words)) {
  return [orders = readEach(value, [&](const Json& line) {
            reading.step.typed.push_back(fmt::format("{} {}", behind, textOf(line)));
            return read(splitWords(textOf(line)));
          })](Play& play) {
    for (const ModemOrder& order : orders)
      order(play.station.modem());
  };
}

Deed readModem(const Json& value, Reading& reading) {
  return readOrders(value, reading, "modem", [](Words words) {
    if (!words.empty() && words.front() == "indicate")
      throw UsageError(R"(an indication is a step of its own: "indicate": "NAME ...")");
    return modemOrder(words);
  });
}

Deed readIndicate(const Json& value, Reading& reading) {
  const Deed indicate = readOrders(value, reading, "modem indicate", indication);
  needProcess(reading);
  reading.indicates = true;
  return [indicate](Play& play) {
    indicate(play);
    if (!play.station.settle())
      play.wrong.emplace_back("the process has no link to the modem, so it heard nothing");
    // Everything was written before the process came to the end of the indications.
    while (auto message = play.station.process().nextUnsolicited(handset::Millis(0)))
      take(play,
           {"message", *message, decodeUnsolicited(*message), {.time = std::chrono::steady_clock::now()}});
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
