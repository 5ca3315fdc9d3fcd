// Modem logs through the process, from their indications to the log on the disk, beside a floor program that
// makes the same system calls on files and does nothing else.
#include <benchmark/benchmark.h>

#include <chrono>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/turns.h"
#include "handset/folder.h"
#include "handset/modem.h"
#include "handset/modem_logs.h"
#include "handset/parent.h"

namespace {

using handset::Bytes;

constexpr uint16_t kTestIndicationId = 0x0001;
/// Of a package's content, the header word of the first packet takes these bytes.
constexpr size_t kHeaderSize = 4;
constexpr double kMiB = 1024 * 1024;

/// What one turn appends.
struct Load {
  size_t packets;   // of a package, each as large as can be
  size_t packages;  // 30 MiB of them over all turns would begin a new log

  [[nodiscard]] size_t packageSize() const { return packets * handset::kLogPacketPayloadMax - kHeaderSize; }
  [[nodiscard]] double mebibytes() const { return static_cast<double>(packages * packageSize()) / kMiB; }
};

/// The process and a modem that sends it a turn's indications as fast as they are taken.
class HookSide {
 public:
  explicit HookSide(const Load& load)
      : packages_(load.packages),
        indications_(handset::logPackage(1, handset::kLogHeader, Bytes(load.packageSize(), 'x'))),
        modem_(folder.root()),
        process_(bench::quiet(folder, {KESEXT_BINARY, "3", "4", "5", "0"})) {
    modem_.start();
    if (!modem_.waitForClients(handset::Service::vendor, 1))
      throw std::runtime_error("the process does not connect");
  }

  /// The test indication comes last, so that what the parent is told of it is the end.
  void turn() {
    for (size_t i = 0; i < packages_; ++i)
      for (const Bytes& indication : indications_)
        modem_.indicate(handset::kUtilityIndicationId, indication);
    modem_.indicate(kTestIndicationId, {});
    if (!process_.nextUnsolicited()) throw std::runtime_error("no end of the logs");
  }

  handset::Folder folder;

 private:
  size_t packages_;
  std::vector<Bytes> indications_;
  handset::Modem modem_;
  handset::Parent process_;
};

class FloorSide {
 public:
  explicit FloorSide(const Load& load)
      : process_(bench::quiet(
            folder, {KESEXT_LOG_FLOOR, "3", "4", std::to_string(load.packages), packetSizes(load)})) {}

  void turn() {
    if (!process_.send(Bytes(1, 0)) || !process_.nextResponse())
      throw std::runtime_error("the floor gave up");
  }

  handset::Folder folder;

 private:
  static std::string packetSizes(const Load& load) {
    std::string sizes = std::to_string(handset::kLogPacketPayloadMax - kHeaderSize);
    for (size_t i = 1; i < load.packets; ++i)
      sizes += "," + std::to_string(handset::kLogPacketPayloadMax);
    return sizes;
  }

  handset::Parent process_;
};

/// In seconds.
template <typename Side>
double timeTurn(Side& side) {
  const auto start = std::chrono::steady_clock::now();
  side.turn();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

Bytes currentLog(const handset::Folder& folder) {
  const std::vector<handset::LogEntry> entries = handset::logEntries(folder);
  if (entries.size() != 2) throw std::runtime_error("not one link and one log");
  return folder.readFile(entries.front().target.value()).value();
}

void appendLogs(benchmark::State& state) {
  const Load load{static_cast<size_t>(state.range(0)), static_cast<size_t>(state.range(1))};
  HookSide hook(load);
  FloorSide floor(load);
  hook.turn();
  floor.turn();
  std::vector<double> hook_times;
  std::vector<double> floor_times;
  for ([[maybe_unused]] auto _ : state) {
    hook_times.push_back(timeTurn(hook));
    floor_times.push_back(timeTurn(floor));
  }
  if (currentLog(hook.folder) != currentLog(floor.folder)) throw std::runtime_error("the logs differ");
  const double hook_time = bench::medianOf(hook_times);
  const double floor_time = bench::medianOf(floor_times);
  state.counters["hook_MiB_per_s"] = load.mebibytes() / hook_time;
  state.counters["floor_MiB_per_s"] = load.mebibytes() / floor_time;
  state.counters["ratio"] = hook_time / floor_time;
}

BENCHMARK(appendLogs)
    ->ArgNames({"packets", "packages"})
    ->Args({1, 50})
    ->Args({64, 10})
    ->Iterations(90)
    ->Unit(benchmark::kMillisecond);

}  // namespace
