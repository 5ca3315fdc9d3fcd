#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "core/ground/hook_message.h"
#include "tools/bench/happening.h"
#include "tools/bench/modem_control.h"
#include "tools/bench/record_json.h"
#include "tools/bench/reference.h"
#include "tools/bench/station.h"
#include "tools/commands/commands.h"
#include "tools/records/encode.h"

namespace tools {

namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* kSendFooter =
    R"(Bytes are hexadecimal digits (A5*16: sixteen times), text:CHARACTERS or @FILE; numbers are decimal or
0x-hexadecimal.
A field of digits takes as many as the process reads and nothing else: it would turn other characters into
other digits without a word. --force, or the word force before a request, sends it all the same.
The status is 0 when an answer came, whatever it says, but see --check; 2 when there is no such request.
An answer that takes longer than 2 s is waited for with a word on standard error.

Examples:
  hookctl send rde write 10017 0102030405
  hookctl send nam write mdn=5551234560 min=6195551234 mcc=310 imsi11_12=12 imsiT=310120123456789 spc=000000
  hookctl send --json plmn 310 120
  hookctl send --modem 'fail utility 90' sysinfo-filter 1
  hookctl send --log --trace --times nam read
  hookctl send --check bsr-timer set 30 && echo done
  hookctl send --messages 5 coverage 7 start)";

struct SendOptions {
  std::vector<std::string> words;
  std::vector<std::string> modem_lines;
  std::string root;
  int instance = 0;
  std::optional<double> messages;  // seconds
  bool log = false;
  bool trace = false;
  bool times = false;
  bool force = false;
  bool check = false;
  bool json = false;
  bool list = false;
};

/// One request, and what is to be told of it.
class Sending {
 public:
  Sending(const SendOptions& options, const Common& common)
      : options_(options),
        console_(common.colour, options.times),
        request_(encodeWords(options.words)),
        station_({.executable = common.process(),
                  .root = options.root,
                  .instance_id = options.instance,
                  .share_modem = options.modem_lines.empty()}) {}

  /// Whether the answer says success.
  bool run();

 private:
  void prepare();
  void waitForMessages(double seconds);
  /// Takes what there is by now and shows it; for scripts it is kept until the end.
  void showNews();
  void printAll(const Answer& answer) const;

  const SendOptions& options_;
  const Console console_;
  const handset::Bytes request_;
  Station station_;
  size_t log_mark_ = 0;
  Happenings taken_;
};

void Sending::prepare() {
  station_.start();
  // What the start leads to does not follow the request.
  while (options_.messages && station_.process().nextUnsolicited(handset::Millis(0))) {
  }
  if (options_.trace) {
    station_.needOwnModem("its own console shows what it is asked");
    station_.modem().recordCrossings(true);
  }
  for (const std::string& line : options_.modem_lines)
    modemOrder(splitWords(line))(station_.modem());
  log_mark_ = station_.process().logMark();
}

void Sending::showNews() {
  if (options_.log) {
    std::vector<handset::StampedLine> lines = station_.process().stampedLogsSince(log_mark_);
    log_mark_ += lines.size();
    append(taken_, std::move(lines));
  }
  append(taken_, station_.modem().takeCrossings());
  sortByTime(taken_);
  if (options_.json) return;
  for (const Happening& happening : taken_)
    show(console_, happening);
  taken_.clear();
  flushOutput();
}

void Sending::waitForMessages(double seconds) {
  const handset::Instant until =
      Clock::now() + std::chrono::round<Clock::duration>(std::chrono::duration<double>(seconds));
  std::optional<handset::Bytes> message;
  do {
    const auto left = std::chrono::ceil<handset::Millis>(until - Clock::now());
    message = station_.process().nextUnsolicited(std::max(left, handset::Millis(0)));
    if (message) taken_.push_back({Clock::now(), *message});
    showNews();
  } while (message);
}

bool Sending::run() {
  prepare();
  if (!options_.json) {
    console_.record("request", decodeRequest(request_), request_, {.time = Clock::now()});
    flushOutput();
  }
  const size_t log_mark = log_mark_;
  const Answer answer = station_.ask(request_, options_.messages ? &taken_ : nullptr);
  // What was logged before the answer is shown before it.
  if (options_.log) station_.process().catchUpWithLog();
  showNews();
  const DecodedRecord decoded = decodeAnswer(request_, answer.bytes);
  if (!options_.json) console_.record("answer", decoded, answer.bytes, {answer.came, answer.asked});
  if (options_.log) station_.process().waitForLogSince(log_mark, "Child process waiting for data");
  showNews();
  if (options_.messages) waitForMessages(*options_.messages);
  const bool ended_well = station_.end() == 0;
  if (options_.json) printAll(answer);
  if (!ended_well) throw station_.trouble("the answer came, but the process ended badly");
  return decoded.status.value_or(decoded.problem
                                     ? kesext::HOOK_STATUS_FAILURE
                                     : kesext::HOOK_STATUS_SUCCESS) == kesext::HOOK_STATUS_SUCCESS;
}

void Sending::printAll(const Answer& answer) const {
  using Json = nlohmann::ordered_json;
  const bool times = options_.times;
  Json all{{"request", toJson(decodeRequest(request_), request_, {.time = answer.asked}, times)},
           {"answer",
            toJson(decodeAnswer(request_, answer.bytes), answer.bytes, {answer.came, answer.asked}, times)}};
  if (options_.log) all["log"] = Json::array();
  if (options_.trace) all["trace"] = Json::array();
  if (options_.messages) all["messages"] = Json::array();
  for (const Happening& happening : taken_)
    addHappening(all, happening, times);
  printJson(all);
}

}  // namespace

void addSendCommand(CLI::App& tool, Common& common) {
  CLI::App* command = tool.add_subcommand("send", "Sends one request and shows its answer");
  auto options = std::make_shared<SendOptions>();
  command->add_option("request", options->words,
                      "NAME [ARGUMENT ...]: a request by name, its arguments in order or as FIELD=VALUE, and "
                      "spc=CODE for a CDMA\nrequest; or raw HEX");
  addShared(*command, {&options->root, &options->instance, &options->trace, &options->times});
  command
      ->add_option("--modem", options->modem_lines,
                   "tells the modem something first, such as 'fail rde-read 90'; may be given again")
      ->allow_extra_args(false)
      ->option_text("LINE");
  command->add_flag("--log", options->log, "also what the process logs for it");
  command
      ->add_option("--messages", options->messages, "also the unsolicited messages that follow for so long")
      ->check(CLI::Range(0.0, 3600.0))
      ->option_text("SECONDS");
  command->add_flag("--force", options->force,
                    "sends it also where fields lack digits or have other characters");
  command->add_flag("--check", options->check, "the status is 1 unless the answer's is success");
  command->add_flag("--json", options->json, "for scripts: all of it, with fields and bytes");
  command->add_flag("--list", options->list, "tells all requests, their ids and arguments");
  command->footer(kSendFooter);
  command->callback([&common, options] {
    if (options->force) options->words.insert(options->words.begin(), "force");
    if (options->list)
      fmt::print("{}", requestReference());
    else if (!Sending(*options, common).run() && options->check)
      common.status = kStatusWrong;
  });
}

}  // namespace tools
