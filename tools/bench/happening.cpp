#include "tools/bench/happening.h"

#include <algorithm>
#include <utility>

#include "tools/bench/link_trace.h"
#include "tools/records/decode.h"

namespace tools {

void append(Happenings& all, std::vector<handset::StampedLine> lines) {
  for (handset::StampedLine& line : lines)
    all.push_back({line.time, std::move(line.text)});
}

void append(Happenings& all, std::vector<handset::Crossing> crossings) {
  for (handset::Crossing& crossing : crossings)
    all.push_back({crossing.done, std::move(crossing)});
}

void sortByTime(Happenings& happenings) {
  std::stable_sort(happenings.begin(), happenings.end(),
                   [](const Happening& a, const Happening& b) { return a.time < b.time; });
}

void show(const Console& console, const Happening& happening) {
  if (const auto* line = std::get_if<std::string>(&happening.what)) console.note(*line, happening.time);
  if (const auto* crossing = std::get_if<handset::Crossing>(&happening.what))
    console.trace(traceLines(*crossing), happening.time);
  if (const auto* message = std::get_if<handset::Bytes>(&happening.what))
    console.record("message", decodeUnsolicited(*message), *message, {.time = happening.time});
}

}  // namespace tools
