#include "faults/player.h"

#include <fmt/format.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <thread>

#include "tools/bench/modem_control.h"
#include "tools/bench/station.h"
#include "tools/records/decode.h"
#include "tools/records/encode.h"

namespace faults {
namespace {

namespace fs = std::filesystem;
using handset::Bytes;
using handset::Millis;
using Clock = std::chrono::steady_clock;

constexpr std::string_view kServing = "Child process waiting for data";
/// A step that takes longer than any wait that a fault brings about.
constexpr Millis kHangs{20000};

Effect effectOf(const FaultPlan& plan) {
  return kFaultClasses[plan.fault_class].effect;
}

/// Without what differs from run to run.
std::string withoutTimes(const std::string& text) {
  static const std::regex kTimes("adam_[0-9]{14}|@[0-9]{13}|\\.new\\.[A-Za-z0-9]{6}");
  return std::regex_replace(text, kTimes, "#");
}

size_t entries(const std::string& folder) {
  std::error_code ignored;
  return static_cast<size_t>(std::distance(fs::directory_iterator(folder, ignored), {}));
}

Files filesIn(const std::string& root) {
  constexpr uintmax_t kSmall = 65536;
  Files files;
  for (const auto& entry : fs::recursive_directory_iterator(root)) {
    std::string content;
    if (entry.is_symlink())
      content = fs::read_symlink(entry.path());
    else if (entry.is_regular_file() && entry.file_size() > kSmall)
      content = std::to_string(entry.file_size());
    else if (entry.is_regular_file())
      content = {std::istreambuf_iterator<char>(std::ifstream(entry.path()).rdbuf()), {}};
    files.emplace(withoutTimes(entry.path().string().substr(root.size())), withoutTimes(content));
  }
  return files;
}

/// One play of a scenario.
class Player {
 public:
  Outcome play(const tools::Scenario& scenario, const std::string& executable, FaultPlan& plan,
               const std::vector<handset::ModemState>* states) {
    tools::Station station({.executable = executable, .instance_id = scenario.instance});
    station_ = &station;
    plan_ = &plan;
    const bool kills = plan.first_struck != 0 && effectOf(plan) == Effect::killed;
    for (size_t i = 0; i < scenario.steps.size() && outcome_.trouble.empty(); ++i) {
      if (states != nullptr)
        station.modem().change([&](handset::ModemState& state) { state = states->at(i); });
      outcome_.states.push_back(station.modem().state());
      if (i + 1 == scenario.steps.size() && station.started()) outcome_.last = awaitHeld(outcome_.first);
      const Logs before = handset::logEntries(station.folder());
      step(scenario.steps[i]);
      if (scenario.steps[i].typed == Texts{"restart"} && outcome_.trouble.empty()) outcome_.first = held();
      if (outcome_.struck_call.empty() && plan.strikes > 0) {
        outcome_.struck_step = i;
        outcome_.struck_call = plan.struck_name;
      }
      if (kills && (plan.strikes > 0 || i + 1 == scenario.steps.size())) {
        goOnAfterKill(before, plan);
        break;
      }
      const Texts disorder = disorderAfterStep(before, handset::logEntries(station.folder()));
      outcome_.lost.insert(outcome_.lost.end(), disorder.begin(), disorder.end());
    }
    outcome_.files = filesIn(station.folder().root());
    return std::move(outcome_);
  }

 private:
  Held held() {
    const std::string process = fmt::format("/proc/{}/", station_->process().pid());
    return {.descriptors = entries(process + "fd"), .threads = entries(process + "task")};
  }

  /// Waits until no more is held, as a save that has told the modem is about to end.
  Held awaitHeld(const Held& most) {
    const auto given_up = Clock::now() + kHangs;
    Held now = held();
    while ((now.threads > most.threads || now.descriptors > most.descriptors) && Clock::now() < given_up) {
      std::this_thread::yield();
      now = held();
    }
    return now;
  }

  /// A new start, and one more package. The process may have lived until here.
  void goOnAfterKill(const Logs& before, FaultPlan& plan) {
    if (outcome_.struck_call.empty()) outcome_.struck_call = "the end";
    plan.first_struck = 0;
    if (station_->started()) {
      station_->process().kill(SIGKILL);
      station_->process().wait(kHangs);
    }
    outcome_.trouble.clear();
    const Logs left = handset::logEntries(station_->folder());
    try {
      station_->start();
      indicate(fmt::format("log {} 'text:{}'", kNextPackageId, kNextPackage));
    } catch (const std::runtime_error& error) {
      outcome_.trouble = error.what();
    }
    outcome_.lost = disorderAfterKill(station_->folder(), before, left);
  }

  void step(const tools::Step& step) {
    tools::Play played(*station_);
    outcome_.words.push_back(step.typed.empty() ? step.title : step.typed.front());
    seen_ = {};
    try {
      act(step, played);
    } catch (const std::runtime_error& error) {
      outcome_.trouble = fmt::format("{}: {}", step.title, error.what());
      if (station_->started()) played.exit = station_->process().wait(Millis(0));
    }
    // The process may not have waited for its answers.
    if (effectOf(*plan_) == Effect::late)
      station_->modem().waitForRequests(plan_->calls[plan_->fault_class] - asked_, kHangs);
    asked_ += station_->modem().requests().size();
    for (const handset::Received& request : station_->modem().requests())
      seen_.asked.push_back(fmt::format("{:x} {}", request.id, handset::toHex(request.body, "")));
    outcome_.steps.push_back(std::move(seen_));
    if (played.exit) outcome_.exits.push_back(*played.exit);
    if (!station_->started() || (!played.exit && outcome_.trouble.empty())) return;
    for (const std::string& line : station_->process().logs())
      outcome_.lines.push_back(withoutTimes(line));
  }

  /// Requests and indications in this file's own way, which can do without an answer; all else as a player
  /// does.
  void act(const tools::Step& step, tools::Play& played) {
    constexpr std::string_view kIndicate = "modem indicate ";
    const std::string typed = step.typed.size() == 1 ? step.typed[0] : "";
    if (typed.starts_with(kIndicate)) return indicate(typed.substr(kIndicate.size()));
    if (!typed.empty() && typed != "restart" && !typed.starts_with("modem ")) return ask(typed);
    for (const tools::Deed& deed : step.deeds)
      deed(played);
  }

  /// Sends a request and waits until the process is through with it, answered or not.
  void ask(const std::string& words) {
    handset::Parent& process = station_->process();
    const Bytes request = tools::encodeWords(tools::splitWords(words));
    const size_t mark = process.logMark();
    if (!process.send(request)) throw station_->trouble("the request is not taken");
    // A read that failed has been followed by a wait as well.
    const auto read = process.waitForLogPart(mark, " bytes from pipe", kHangs);
    if (!read || !process.waitForLogSince(*read, kServing, kHangs))
      throw station_->trouble("the request is not served");
    while (auto answer = process.nextResponse(Millis(0)))
      take(words, *answer, tools::decodeAnswer(request, *answer), seen_.answers);
  }

  /// Lets the modem indicate something and waits until the process is through with it. What tells that is an
  /// indication too, which a fault may take.
  void indicate(const std::string& words) {
    handset::Parent& process = station_->process();
    const size_t mark = process.logMark();
    tools::indication(tools::splitWords(words))(station_->modem());
    const auto given_up = Clock::now() + kHangs;
    do {
      if (Clock::now() > given_up) throw station_->trouble("the indication is not served");
      if (station_->modem().indicate(++unknown_, {}) == 0) break;  // the link is lost
    } while (!process.waitForLogPart(mark, fmt::format("Indicator message {}", unknown_), Millis(300)) &&
             !process.waitForLogPart(mark, fmt::format("indication {:#x} dropped", unknown_), Millis(0)));
    // A save has a thread of its own.
    if (words == "rf-save") station_->modem().waitForRequests(1, Millis(1000));
    while (auto message = process.nextUnsolicited(Millis(0)))
      take(words, *message, tools::decodeUnsolicited(*message), seen_.messages);
  }

  void take(const std::string& words, const Bytes& bytes, const tools::DecodedRecord& record,
            std::vector<Bytes>& taken) {
    if (record.problem) outcome_.malformed.push_back(fmt::format("{}: {}", words, record.problem->text));
    taken.push_back(bytes);
  }

  tools::Station* station_ = nullptr;
  const FaultPlan* plan_ = nullptr;
  size_t asked_ = 0;           // of the modem, in steps before
  uint16_t unknown_ = 0xF000;  // an indication that nothing knows; the process logs the next number for each
  Outcome outcome_;
  SeenStep seen_;
};

}  // namespace

Outcome play(const tools::Scenario& scenario, const std::string& executable, FaultPlan& plan,
             const std::vector<handset::ModemState>* states) {
  return Player().play(scenario, executable, plan, states);
}

}  // namespace faults
