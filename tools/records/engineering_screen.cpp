#include "tools/records/engineering_screen.h"

#include <fmt/format.h>

#include <cstddef>
#include <cstring>
#include <initializer_list>
#include <optional>
#include <string_view>

#include "nam/engineering_records.h"

namespace tools {

namespace {

struct Item {
  std::string_view label;
  std::string value;
};

std::string number(uint32_t value) {
  return std::to_string(value);
}
std::string signedNumber(int32_t value) {
  return fmt::format("{:+}", value);
}
std::string hexNumber(uint32_t value) {
  return fmt::format("0x{:08X}", value);
}

/// A group's title, then its items in three columns.
std::string group(std::string_view title, std::initializer_list<Item> items) {
  constexpr size_t kColumns = 3;
  std::string text;
  size_t column = 0;
  for (const Item& item : items) {
    text += column == 0 ? fmt::format("      {:<10}", text.empty() ? title : "") : "    ";
    text += fmt::format("{:<18}{:>10}", item.label, item.value);
    if (++column == kColumns) {
      text += '\n';
      column = 0;
    }
  }
  if (column != 0) text += '\n';
  return text;
}

/// A group of `count` words of the payload, without labels, eight to a row.
std::string list(std::string_view title, handset::ByteView payload, size_t offset, size_t count) {
  constexpr size_t kColumns = 8;
  std::string text;
  for (size_t i = 0; i < count; ++i) {
    if (i % kColumns == 0) text += fmt::format("{}      {:<10}", i == 0 ? "" : "\n", i == 0 ? title : "");
    text += fmt::format("{:>8}", handset::getLe<uint32_t>(payload, offset + 4 * i));
  }
  return text + '\n';
}

template <typename Report>
std::optional<Report> reportIn(handset::ByteView payload) {
  if (payload.size() != sizeof(Report)) return std::nullopt;
  Report report;
  std::memcpy(&report, payload.data(), sizeof report);
  return report;
}

std::string notAReport(handset::ByteView payload) {
  return fmt::format("      no report: {} bytes\n", payload.size());
}

}  // namespace

std::string callProcessingScreen(handset::ByteView payload) {
  const auto report = reportIn<kesext::CpStatusReport>(payload);
  if (!report) return notAReport(payload);
  const kesext::CpStatusReport& r = *report;
  return group("Serving", {{"SID", number(r.sid)},
                           {"NID", number(r.nid)},
                           {"channel", number(r.channel)},
                           {"band", number(r.band)},
                           {"P_REV in use", number(r.PRevInUse)},
                           {"P_REV above 5", r.pRevInUseAbove5 != 0 ? "yes" : "no"}}) +
         group("Station", {{"base station", number(r.bid)},
                           {"latitude", number(r.bsLat)},
                           {"longitude", number(r.bsLon)}}) +
         group("Radio", {{"RSSI", number(r.rssi)},
                         {"TX power", signedNumber(r.txPower)},
                         {"LNA status", number(r.lnaStatus)},
                         {"frame errors", number(r.fer)}}) +
         group("Call", {{"state", number(r.cpState)},
                        {"service option", number(r.serviceOption)},
                        {"last call", number(r.lastCallIndicator)},
                        {"calls", number(r.sCallCounter)},
                        {"dropped", number(r.droppedCallCounter)}}) +
         group("Pilots", {{"active", number(r.activePilotCount)},
                          {"candidate", number(r.candPilotCount)},
                          {"neighbor", number(r.neighborPilotCount)},
                          {"best active", number(r.bestActivePilot)},
                          {"its strength", number(r.bestActiveStrength)},
                          {"best neighbor", number(r.bestNeighborPilot)},
                          {"its strength", number(r.bestNeighborStrength)}}) +
         list("Active PN", payload, offsetof(kesext::CpStatusReport, activeSetPn), kesext::kActiveSetSize) +
         list(" strength", payload, offsetof(kesext::CpStatusReport, activeSetStrength),
              kesext::kActiveSetSize) +
         list("Neighbors", payload, offsetof(kesext::CpStatusReport, neighborSetPn),
              kesext::kNeighborSetSize);
}

std::string evdoScreen(handset::ByteView payload) {
  const auto report = reportIn<kesext::EvdoStatusReport>(payload);
  if (!report) return notAReport(payload);
  const kesext::EvdoStatusReport& r = *report;
  return group("Serving", {{"channel", number(r.hdrChanNum)},
                           {"pilot PN", number(r.pilotPn)},
                           {"MAC index", number(r.macIndex)},
                           {"UATI", hexNumber(r.txUati)},
                           {"UATI colour code", number(r.uatiColorCode)}}) +
         group("Radio", {{"RSSI", number(r.hdrRssi)},
                         {"RX power 0, dBm", number(r.rxPwrRx0Dbm)},
                         {"RX power 1, dBm", number(r.rxPwrRx1Dbm)},
                         {"pilot energy", signedNumber(r.pilotEnergy)},
                         {"SINR", number(r.sinr)},
                         {"DRC cover", number(r.drcCover)}}) +
         group("Session", {{"session state", number(r.sessionState)},
                           {"AT state", number(r.atState)},
                           {"AN auth status", number(r.anAuthStatus)},
                           {"users", number(r.userCount)},
                           {"hybrid mode", number(r.hybridMode)},
                           {"drops", number(r.dropCount)}}) +
         group("Packets", {{"measured", number(r.measPkts)}, {"in error", number(r.errPkts)}}) +
         list("Sector", payload, offsetof(kesext::EvdoStatusReport, sectorIds), kesext::kSectorIdSize);
}

}  // namespace tools
