#include "tools/records/engineering_screen.h"

#include <fmt/format.h>

#include <algorithm>

#include "tools/text/window.h"

namespace tools {

namespace {

enum class Report { callProcessing, evdo };
using enum Report;

/// Fields of a report that belong together.
struct Group {
  Report report;
  std::string_view title;
  std::string_view fields;
};

constexpr Group kGroups[] = {
    {callProcessing, "Serving", "sid nid channel band PRevInUse pRevInUseAbove5"},
    {callProcessing, "Radio", "rssi txPower lnaStatus fer"},
    {evdo, "EVDO serving", "hdrChanNum pilotPn macIndex txUati uatiColorCode"},
    {evdo, "EVDO radio", "hdrRssi rxPwrRx0Dbm rxPwrRx1Dbm pilotEnergy sinr drcCover"},
    {callProcessing, "Call", "cpState serviceOption lastCallIndicator sCallCounter droppedCallCounter"},
    {evdo, "EVDO session", "sessionState atState anAuthStatus userCount hybridMode dropCount"},
    {callProcessing, "Best pilots",
     "bestActivePilot bestActiveStrength bestNeighborPilot bestNeighborStrength"},
    {callProcessing, "Pilots", "activePilotCount candPilotCount neighborPilotCount"},
    {evdo, "EVDO packets", "measPkts errPkts"},
    {callProcessing, "Active set", "activeSetPn"},
    {callProcessing, "", "activeSetStrength"},
    {callProcessing, "Neighbors", "neighborSetPn"},
    {callProcessing, "Station", "bid bsLat bsLon"},
    {evdo, "EVDO sector", "sectorIds"},
};

constexpr size_t kTitleWidth = 13;
/// Of most values, so that columns stay where they are while the values change.
constexpr size_t kValueWidth = 5;

/// The group's fields, each as wide as the widest when they are `aligned`; the numbers of a list one by one.
std::vector<std::string> cellsOf(const Group& group, const DecodedRecord& report, bool aligned) {
  std::vector<std::string> cells;
  size_t name_width = 0;
  size_t value_width = aligned ? kValueWidth : 0;
  const std::vector<std::string> names = atBlanks(group.fields);
  const auto each = [&](const auto& take) {
    for (const std::string& name : names)
      for (const DecodedField& field : report.fields)
        if (field.name == name) take(field);
  };
  const auto widen = [&](const DecodedField& field) {
    name_width = std::max(name_width, field.name.size());
    value_width = std::max(value_width, field.value.size());
  };
  if (aligned) each(widen);
  each([&](const DecodedField& field) {
    if (field.kind == FieldKind::words)
      cells = atBlanks(field.name + " " + field.value);
    else
      cells.push_back(fmt::format("{:<{}} {:>{}}", field.name, name_width, field.value, value_width));
  });
  return cells;
}

}  // namespace

std::vector<std::string> engineeringRows(const EngineeringReport& call_processing,
                                         const EngineeringReport& evdo_report, size_t columns, bool aligned) {
  std::vector<std::string> rows;
  bool troubled[] = {false, false};
  for (const Group& group : kGroups) {
    const EngineeringReport& report = group.report == evdo ? evdo_report : call_processing;
    bool& told = troubled[static_cast<size_t>(group.report)];
    if (told) continue;
    told = !report.trouble.empty();
    const std::vector<std::string> cells =
        told ? atBlanks(report.trouble) : cellsOf(group, report.answer, aligned);
    std::string_view title = group.title;
    for (const std::string& row : inRows(cells, columns - kTitleWidth, told ? 1 : 2)) {
      rows.push_back(fmt::format("{:<{}}{}", title, kTitleWidth, row).substr(0, columns));
      title = "";
    }
  }
  return rows;
}

}  // namespace tools
