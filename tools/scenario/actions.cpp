#include <fmt/format.h>

#include "tools/bench/interruption.h"
#include "tools/bench/modem_control.h"
#include "tools/records/encode.h"
#include "tools/scenario/files.h"
#include "tools/scenario/steps.h"
#include "tools/scenario/values.h"
#include "tools/text/usage_error.h"

namespace tools {

namespace {

using handset::Bytes;

void needProcess(const Reading& reading) {
  if (!reading.running)
    throw UsageError(R"(the process does not run here; a step with "process": "start" goes before)");
}

void startProcess(Play& play) {
  play.station.start();
  play.log_mark = 0;
}

void endProcess(Play& play) {
  play.exit = play.station.end();
  if (!play.exit) throw play.station.trouble("the process does not end when its requests do");
}

struct ProcessWord {
  std::string_view name;
  bool ends;
  bool starts;
};
constexpr ProcessWord kProcessWords[] = {
    {"start", false, true}, {"end", true, false}, {"restart", true, true}};

Deed readProcess(const Json& value, Reading& reading) {
  const std::string& name = textOf(value);
  for (const ProcessWord& word : kProcessWords) {
    if (word.name != name) continue;
    if (word.ends) needProcess(reading);
    if (!word.ends && reading.running) throw UsageError("the process runs already");
    reading.running = word.starts;
    reading.ends_process = word.ends;
    return [word](Play& play) {
      if (word.ends) endProcess(play);
      if (word.starts) startProcess(play);
    };
  }
  throw UsageError(fmt::format("takes start, end or restart, not '{}'", name));
}

Deed readRequest(const Json& value, Reading& reading) {
  const Bytes request = encodeWords(splitWords(textOf(value)));
  needProcess(reading);
  reading.request = request;
  return [request](Play& play) {
    play.request = {request, decodeRequest(request)};
    const Answer answer = play.station.ask(request);
    play.request->moment = {.time = answer.asked};
    play.answer = {answer.bytes, decodeAnswer(request, answer.bytes), {answer.came, answer.asked}};
    // The log is complete then.
    play.station.process().waitForLogSince(play.log_mark, "Child process waiting for data");
  };
}

std::vector<ModemOrder> readOrders(const Json& value, ModemOrder (*read)(Words)) {
  std::vector<ModemOrder> orders;
  for (const Json* line : eachOf(value))
    orders.push_back(read(splitWords(textOf(*line))));
  return orders;
}

Deed readModem(const Json& value, Reading&) {
  const auto read = [](Words words) {
    if (!words.empty() && words.front() == "indicate")
      throw UsageError(R"(an indication is a step of its own: "indicate": "NAME ...")");
    return modemOrder(words);
  };
  return [orders = readOrders(value, read)](Play& play) {
    for (const ModemOrder& order : orders)
      order(play.station.modem());
  };
}

Deed readIndicate(const Json& value, Reading& reading) {
  const std::vector<ModemOrder> orders = readOrders(value, indication);
  needProcess(reading);
  reading.indicates = true;
  return [orders](Play& play) {
    for (const ModemOrder& order : orders)
      order(play.station.modem());
    if (!play.station.settle()) {
      play.wrong.emplace_back("the process has no link to the modem, so it heard nothing");
      return;
    }
    // Everything was written before the process came to the end of the indications.
    while (auto message = play.station.process().nextUnsolicited(handset::Millis(0)))
      play.messages.push_back(
          {*message, decodeUnsolicited(*message), {.time = std::chrono::steady_clock::now()}});
  };
}

Deed readFile(const Json& value, Reading&) {
  std::vector<FileDescription> files;
  for (const Json* file : eachOf(value))
    files.push_back(readFileDescription(*file));
  return [files](Play& play) {
    const auto held = holdOffInterruption();
    for (const FileDescription& file : files)
      makeFile(play.station.folder(), file);
  };
}

Deed readProperties(const Json& value, Reading&) {
  return [properties = readPropertyTexts(value)](Play& play) {
    const auto held = holdOffInterruption();
    makeProperties(play.station.folder(), properties);
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
     "makes a file of the handset; a size without content cuts or extends it, and takes no room", readFile},
    {"properties", R"({"NAME": "VALUE" | null})", "sets system properties, or takes them away",
     readProperties},
};

}  // namespace

std::span<const StepWord> actionWords() {
  return kActions;
}

}  // namespace tools
