// Round trips through the process beside a floor program that makes the same system calls and does nothing
// else, both in one run and in turns; and the memory that a million requests leave behind.
#include <benchmark/benchmark.h>
#include <sched.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <fstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "bench/turns.h"
#include "handset/folder.h"
#include "handset/hook_records.h"
#include "handset/modem.h"
#include "handset/parent.h"

namespace {

using bench::medianOf;
using bench::quiet;
using handset::Bytes;

/// Requests that one of the two serves before it is the other's turn.
constexpr int kTurn = 50;
constexpr uint32_t kElement = 100;

/// The handset that all benchmarks share.
struct Stage {
  Stage() : modem(folder.root()) {
    modem.recordRequests(false);
    modem.setElement(kElement, Bytes(32, 7));
    modem.start();
  }
  handset::ParentOptions hook() const { return quiet(folder, {KESEXT_BINARY, "3", "4", "5", "0"}); }

  /// The floor for a request: as many log lines of the same lengths, the same answer's size.
  handset::ParentOptions floor(const Bytes& request, size_t exchange_size) const {
    handset::Parent process({.executable = KESEXT_BINARY, .handset_root = folder.root()});
    const auto waits = [&process](size_t mark) {
      if (!process.waitForLogSince(mark, "Child process waiting for data"))
        throw std::runtime_error("the process does not serve");
    };
    waits(0);
    const size_t mark = process.logMark();
    process.send(request);
    const size_t answer = process.nextResponse().value().size();
    waits(mark);
    std::string lengths;
    for (const std::string& line : process.logsSince(mark))
      lengths += std::to_string(line.size()) + ",";
    std::vector<std::string> command{KESEXT_FLOOR, "3", "4", lengths, std::to_string(answer)};
    if (exchange_size != 0)
      command.insert(command.end(), {folder.path("/modem.sock"), std::to_string(exchange_size)});
    return quiet(folder, command);
  }

  handset::Folder folder;
  handset::Modem modem;
};

Stage& stage() {
  static Stage the_stage;
  return the_stage;
}

/// One round trip, with as little of our own around it as there can be. In microseconds.
double roundTrip(handset::Parent& parent, const Bytes& request) {
  static uint8_t answer[65536];
  const auto start = std::chrono::steady_clock::now();
  if (write(parent.requestsFd(), request.data(), request.size()) < 0 ||
      read(parent.responsesFd(), answer, sizeof answer) <= 0)
    throw std::runtime_error("no answer");
  return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count();
}

double sumOf(const std::vector<double>& values) {
  double sum = 0;
  for (const double value : values)
    sum += value;
  return sum;
}

void compare(benchmark::State& state, const Bytes& request, size_t exchange_size) {
  handset::Parent floor(stage().floor(request, exchange_size));
  handset::Parent hook(stage().hook());
  roundTrip(hook, request);
  roundTrip(floor, request);
  std::vector<double> hook_times;
  std::vector<double> floor_times;
  for ([[maybe_unused]] auto _ : state) {
    for (int i = 0; i < kTurn; ++i)
      hook_times.push_back(roundTrip(hook, request));
    for (int i = 0; i < kTurn; ++i)
      floor_times.push_back(roundTrip(floor, request));
  }
  state.counters["hook_per_s"] = 1e6 * static_cast<double>(hook_times.size()) / sumOf(hook_times);
  state.counters["floor_per_s"] = 1e6 * static_cast<double>(floor_times.size()) / sumOf(floor_times);
  state.counters["hook_median_us"] = medianOf(hook_times);
  state.counters["floor_median_us"] = medianOf(floor_times);
  state.counters["ratio"] = medianOf(hook_times) / medianOf(floor_times);
}

void unknownCdmaId(benchmark::State& state) {
  compare(state, handset::cdmaRequest(0x02000099), 0);
}

void genericNvRead(benchmark::State& state) {
  compare(state, handset::cdmaRequest(0x02000016, handset::concat(handset::le32(kElement), Bytes(12))), 532);
}

double residentKiB(pid_t pid) {
  std::ifstream status("/proc/" + std::to_string(pid) + "/status");
  for (std::string line; std::getline(status, line);)
    if (line.starts_with("VmRSS:")) return std::stod(line.substr(6));
  return 0;
}

void memoryOfAMillionRequests(benchmark::State& state) {
  handset::Parent hook(stage().hook());
  const Bytes requests[] = {
      handset::cdmaRequest(0x02000099),
      handset::cdmaRequest(0x02000016, handset::concat(handset::le32(kElement), Bytes(12)))};
  roundTrip(hook, requests[0]);
  state.counters["start_KiB"] = residentKiB(hook.pid());
  size_t count = 0;
  for ([[maybe_unused]] auto _ : state)
    roundTrip(hook, requests[++count % 2]);
  state.counters["end_KiB"] = residentKiB(hook.pid());
}

BENCHMARK(unknownCdmaId)->Iterations(1000)->Unit(benchmark::kMicrosecond);
BENCHMARK(genericNvRead)->Iterations(1000)->Unit(benchmark::kMicrosecond);
BENCHMARK(memoryOfAMillionRequests)->Iterations(1'000'000)->Unit(benchmark::kMicrosecond);

}  // namespace

int main(int argc, char** argv) {
  // The children inherit it. On two processors the scheduler's placement would be what is measured.
  cpu_set_t last;
  CPU_ZERO(&last);
  CPU_SET(std::thread::hardware_concurrency() - 1, &last);
  sched_setaffinity(0, sizeof last, &last);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
