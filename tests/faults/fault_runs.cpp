// Plays the tour once for each call that can fail, with that call failing, and once with all from it on, and
// holds what came of it against the undisturbed play.
#include <fcntl.h>
#include <fmt/format.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "faults/verdict.h"

namespace faults {
namespace {

namespace fs = std::filesystem;
using tools::Scenario;
using Clock = std::chrono::steady_clock;

/// So many calls fail in a row that fail for ever: more than any start retries, and still requests end at
/// last.
constexpr uint32_t kForEver = 600;

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
    programme.calm.push_back(play(programme.scenarios.back(), FAULTY_PROCESS, plan, nullptr));
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
  const Outcome outcome = play(programme.scenarios[point.scenario], FAULTY_PROCESS, plan, &calm.states);
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
  CLI::App app("Lets each call of the process fail, and holds what comes of it against the undisturbed tour.",
               "./prove faults");
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
