// Plays the tour once for each call that can fail, with that call failing, and once with all from it on, and
// holds what came of it against the undisturbed play.
#include <fcntl.h>
#include <fmt/format.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <thread>

#include "faults/fault_plan.h"
#include "faults/kept_logs.h"
#include "faults/known_silences.h"
#include "tools/bench/modem_control.h"
#include "tools/bench/station.h"
#include "tools/records/decode.h"
#include "tools/records/encode.h"
#include "tools/scenario/scenario.h"

namespace faults {
namespace {

namespace fs = std::filesystem;
using handset::Bytes;
using handset::Millis;
using tools::Scenario;
using Clock = std::chrono::steady_clock;
/// Names and contents. Logs of different times share a name here.
using Files = std::multiset<std::pair<std::string, std::string>>;

constexpr std::string_view kServing = "Child process waiting for data";
/// Packages that were not appended stay, for the next of their number or the clean-up.
constexpr std::string_view kPackages = "/data/adam/~adam";
/// A step that takes longer than any wait that a fault brings about.
constexpr Millis kHangs{20000};
/// So many calls fail in a row that fail for ever: more than any start retries, and still requests end at
/// last.
constexpr uint32_t kForEver = 600;

/// One play with one fault.
struct Point {
  size_t scenario = 0;
  size_t fault_class = 0;
  uint32_t call = 0;  // 0: none fails
  uint32_t strikes = 0;
};

/// What can be seen of a step from outside.
struct SeenStep {
  std::vector<Bytes> answers;
  std::vector<Bytes> messages;
  Texts asked;  // of the modem
  bool operator==(const SeenStep&) const = default;
};

/// What a process has open.
struct Held {
  size_t descriptors = 0;
  size_t threads = 0;
};

struct Outcome {
  std::vector<SeenStep> steps;
  std::vector<handset::ModemState> states;  // of the modem when each step began
  Texts words;                              // of each step
  Texts lines;
  std::vector<int> exits;
  Files files;  // in the end
  Held first;   // by the last process, once it served
  Held last;    // and before it ended
  size_t struck_step = 0;
  std::string struck_call;  // empty: the fault's call did not come
  std::string trouble;      // the process was of no more use
  Texts malformed;
  Texts lost;  // of the logs, by a process that was killed
};

Effect effectOf(const FaultPlan& plan) {
  return kFaultClasses[plan.fault_class].effect;
}

/// Without what differs from run to run.
std::string withoutTimes(const std::string& text) {
  static const std::regex kTimes("adam_[0-9]{14}|@[0-9]{13}|\\.new\\.[A-Za-z0-9]{6}");
  return std::regex_replace(text, kTimes, "#");
}

bool hasName(const Files& files, const std::string& name) {
  const auto at = files.lower_bound({name, ""});
  return at != files.end() && at->first == name;
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

/// The plan in a file that the process maps as well.
class SharedPlan {
 public:
  SharedPlan() : path_(fs::temp_directory_path() / fmt::format("fault-plan-{}", getpid())) {
    std::ofstream(path_) << std::string(sizeof(FaultPlan), '\0');
    fs::permissions(path_, fs::perms(0666));
    const int file = open(path_.c_str(), O_RDWR | O_CLOEXEC);
    plan_ = static_cast<FaultPlan*>(
        mmap(nullptr, sizeof(FaultPlan), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0));
    close(file);
    if (plan_ == MAP_FAILED) throw std::runtime_error("the plan of faults cannot be mapped: " + path_);
    setenv(kPlanVariable, path_.c_str(), 1);
  }
  SharedPlan(const SharedPlan&) = delete;
  SharedPlan& operator=(const SharedPlan&) = delete;
  ~SharedPlan() {
    munmap(plan_, sizeof *plan_);
    fs::remove(path_);
  }
  FaultPlan& prepare(const Point& point) {
    new (plan_) FaultPlan{.fault_class = static_cast<uint32_t>(point.fault_class),
                          .first_struck = point.call,
                          .struck_count = point.strikes};
    return *plan_;
  }

 private:
  std::string path_;
  FaultPlan* plan_;
};

/// One play of a scenario.
class Player {
 public:
  /// With the states of an undisturbed play, the modem is brought back to them before each step, so that only
  /// the process can make a later answer another one.
  Outcome play(const Scenario& scenario, const std::string& executable, FaultPlan& plan,
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
      if (!kills || (plan.strikes == 0 && i + 1 < scenario.steps.size())) continue;
      goOnAfterKill(before, plan);
      break;
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
    if (station_->started()) kill(station_->process().pid(), SIGKILL);
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

/// Lines that the undisturbed play does not have.
Texts newLines(const Outcome& calm, const Outcome& outcome) {
  std::multiset<std::string> known(calm.lines.begin(), calm.lines.end());
  Texts fresh;
  for (const std::string& line : outcome.lines) {
    const auto at = known.find(line);
    if (at == known.end())
      fresh.push_back(line);
    else
      known.erase(at);
  }
  return fresh;
}

/// The words of the steps and the names of the files that are not as in the undisturbed play.
Texts differences(const Outcome& calm, const Outcome& outcome) {
  Texts found;
  for (size_t i = 0; i < outcome.steps.size(); ++i)
    if (outcome.steps[i] != calm.steps[i]) found.push_back(calm.words[i]);
  Files files;
  std::set_symmetric_difference(calm.files.begin(), calm.files.end(), outcome.files.begin(),
                                outcome.files.end(), std::inserter(files, files.end()));
  for (const auto& [name, content] : files)
    found.push_back(name);
  return found;
}

/// Whether the undisturbed play has the message: with a fault that lasts it may come in a later step.
bool isExpected(const Outcome& calm, const Bytes& message) {
  return std::any_of(calm.steps.begin(), calm.steps.end(), [&](const SeenStep& step) {
    return std::find(step.messages.begin(), step.messages.end(), message) != step.messages.end();
  });
}

/// What must hold and did not.
Texts judge(const Outcome& calm, const Outcome& outcome, const Point& point) {
  if (outcome.struck_call.empty()) return {};
  Texts wrong = outcome.malformed;
  if (kFaultClasses[point.fault_class].effect == Effect::killed) {
    wrong.insert(wrong.end(), outcome.lost.begin(), outcome.lost.end());
    if (!outcome.trouble.empty()) wrong.push_back(outcome.trouble);
    return wrong;
  }
  for (const int status : outcome.exits)
    if (status != 0) wrong.push_back(tools::describeEnd(status));
  const Texts fresh = newLines(calm, outcome);
  const auto says = [&fresh](std::string_view text) {
    return std::any_of(fresh.begin(), fresh.end(),
                       [&](const std::string& line) { return line.find(text) != std::string::npos; });
  };
  // A start that cannot reach the modem ends, and says so.
  const bool gave_up = !outcome.exits.empty() && says(" RIL-KESEXT: main:");
  if (!outcome.trouble.empty() && !gave_up) wrong.push_back(outcome.trouble);
  if (!outcome.trouble.empty()) return wrong;

  for (size_t i = 0; i < outcome.steps.size(); ++i) {
    const SeenStep& seen = outcome.steps[i];
    const SeenStep& expected = calm.steps[i];
    if (seen.answers.size() != expected.answers.size() && !says("Write to parent failed"))
      wrong.push_back(fmt::format("step {}: {} answers", i + 1, seen.answers.size()));
    for (const Bytes& message : seen.messages)
      if (!isExpected(calm, message))
        wrong.push_back(fmt::format("step {}: a message that is another", i + 1));
    if (point.strikes == 1 && i > outcome.struck_step &&
        (seen.answers != expected.answers || seen.messages != expected.messages))
      wrong.push_back(fmt::format("step {} is another still, after step {}", i + 1, outcome.struck_step + 1));
  }
  if (fresh.empty())
    for (const std::string& what : differences(calm, outcome))
      if (!isKnownSilence(kFaultClasses[point.fault_class].name, what))
        wrong.push_back("no line says so: " + what);
  if (outcome.last.descriptors > outcome.first.descriptors)
    wrong.push_back(
        fmt::format("{} descriptors, not {}", outcome.last.descriptors, outcome.first.descriptors));
  if (outcome.last.threads > outcome.first.threads)
    wrong.push_back(fmt::format("{} threads, not {}", outcome.last.threads, outcome.first.threads));
  // What cannot be removed stays.
  const bool removes = point.strikes == 1 && outcome.struck_call != "unlink";
  for (const auto& [name, content] : outcome.files)
    if (!hasName(calm.files, name) && !name.starts_with(kPackages) && removes)
      wrong.push_back("left over: " + name);
  return wrong;
}

struct Options {
  std::string only;
  size_t every = 1;
  unsigned jobs = 2;
  bool show = false;
};

/// The scenarios and what they give undisturbed, and what is to be tried.
struct Programme {
  std::vector<Scenario> scenarios;
  std::vector<Outcome> calm;
  std::vector<Point> points;
};

std::string nameOf(const Point& point, const Programme& programme) {
  return fmt::format("{}:{}:{}:{}", fs::path(programme.scenarios[point.scenario].file).stem().string(),
                     kFaultClasses[point.fault_class].name, point.call, point.strikes == 1 ? "once" : "on");
}

/// Plays each scenario undisturbed. Throws std::runtime_error when one does not end well.
Programme readProgramme(const Options& options) {
  Programme programme;
  SharedPlan shared;
  // A start is like all others, but for the one after a crash.
  std::array<uint32_t, kFaultClasses.size()> calls_of_a_start{};
  for (const std::string& file : tools::scenarioFiles({TOUR})) {
    const size_t scenario = programme.scenarios.size();
    programme.scenarios.push_back(tools::readScenario(file));
    FaultPlan& plan = shared.prepare({});
    programme.calm.push_back(Player().play(programme.scenarios.back(), FAULTY_PROCESS, plan, nullptr));
    if (!programme.calm.back().trouble.empty()) throw std::runtime_error(programme.calm.back().trouble);
    for (size_t i = 0; i < kFaultClasses.size(); ++i) {
      const uint32_t tried = file.find("crash") == std::string::npos ? calls_of_a_start[i] : 0;
      // What is killed after its last call has no more to be struck.
      const uint32_t last = plan.calls[i] + (kFaultClasses[i].effect == Effect::killed ? 1 : 0);
      for (uint32_t call = tried + 1; call <= last; ++call) {
        programme.points.push_back({scenario, i, call, 1});
        if (kFaultClasses[i].may_last) programme.points.push_back({scenario, i, call, kForEver});
      }
      if (scenario == 0) calls_of_a_start[i] = plan.calls[i];
    }
  }
  std::erase_if(programme.points, [&](const Point& point) {
    return nameOf(point, programme).find(options.only) == std::string::npos;
  });
  return programme;
}

/// What the jobs share: how far they are, and what they found.
struct Tally {
  std::atomic<size_t> next;
  std::array<std::atomic<uint32_t>, kFaultClasses.size()> points;
  std::atomic<uint32_t> wrong;
};

void tryPoint(const Point& point, const Programme& programme, const Options& options, SharedPlan& shared,
              Tally& tally) {
  const Outcome& calm = programme.calm[point.scenario];
  FaultPlan& plan = shared.prepare(point);
  const Outcome outcome =
      Player().play(programme.scenarios[point.scenario], FAULTY_PROCESS, plan, &calm.states);
  const Texts wrong = judge(calm, outcome, point);
  tally.points[point.fault_class] += outcome.struck_call.empty() ? 0 : 1;  // the call may not come this time
  if (!wrong.empty()) ++tally.wrong;
  std::string text;
  for (const std::string& what : wrong)
    text += fmt::format("./prove faults --only {} ({}): {}\n", nameOf(point, programme), outcome.struck_call,
                        what);
  if (options.show)
    for (const std::string& line : newLines(calm, outcome))
      text += fmt::format("  {}\n", line);
  (void)!write(STDOUT_FILENO, text.data(), text.size());
}

int run(const Options& options) {
  const auto began = Clock::now();
  const Programme programme = readProgramme(options);
  void* shared_memory =
      mmap(nullptr, sizeof(Tally), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  Tally& tally = *new (shared_memory) Tally{};
  for (unsigned job = 0; job < options.jobs; ++job) {
    if (fork() != 0) continue;
    {
      SharedPlan shared;
      for (size_t i = 0; (i = tally.next++ * options.every) < programme.points.size();)
        tryPoint(programme.points[i], programme, options, shared, tally);
    }
    _exit(0);
  }
  bool all_ended = true;
  for (int status = 0; wait(&status) > 0;)
    all_ended = all_ended && status == 0;
  uint32_t points = 0;
  for (size_t i = 0; i < kFaultClasses.size(); ++i) {
    fmt::print("{:<18}{:>6} points\n", kFaultClasses[i].name, tally.points[i].load());
    points += tally.points[i];
  }
  fmt::print("{} points in {} s, {} of them wrong\n", points,
             std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - began).count(),
             tally.wrong.load());
  return all_ended && points > 0 && tally.wrong == 0 ? 0 : 1;
}

int parseAndRun(int argc, char** argv) {
  CLI::App app(
      "Lets each call of the process fail, and holds what comes of it against the undisturbed tour.");
  Options options;
  app.add_option("--only", options.only, "the points with this in their names: SCENARIO:CLASS:CALL:once|on");
  app.add_option("--every", options.every, "only every so many points");
  app.add_option("--jobs", options.jobs, "plays at once")->capture_default_str();
  app.add_flag("--show", options.show, "show the lines of the log that the undisturbed play does not have");
  CLI11_PARSE(app, argc, argv);
  return run(options);
}

}  // namespace
}  // namespace faults

// All that is thrown derives from std::exception. NOLINTNEXTLINE(bugprone-exception-escape)
int main(int argc, char** argv) {
  try {
    return faults::parseAndRun(argc, argv);
  } catch (const std::exception& error) {
    (void)std::fprintf(stderr, "fault_runs: %s\n", error.what());
    return 2;
  }
}
