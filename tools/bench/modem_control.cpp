#include "tools/bench/modem_control.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <limits>
#include <optional>

#include "carrier/modem_messages.h"
#include "handset/modem_logs.h"
#include "nv/rde_messages.h"
#include "tools/bench/interruption.h"
#include "tools/records/encode.h"
#include "tools/text/usage_error.h"

namespace tools {

namespace {

using handset::Bytes;
using handset::Modem;

constexpr int64_t kInt32Max = std::numeric_limits<int32_t>::max();
constexpr int64_t kUint32Max = std::numeric_limits<uint32_t>::max();
constexpr int64_t kDelayMax = 60'000;  // milliseconds

/// Of an argument "MESSAGE".
const handset::MessageRow& messageOf(Words arguments) {
  return messageByName(arguments.front());
}

uint32_t parseWord(std::string_view what, std::string_view text) {
  return static_cast<uint32_t>(parseNumber(what, text, 0, kUint32Max));
}

ModemOrder setRde(Words arguments) {
  const uint32_t index = parseWord("INDEX", arguments[0]);
  const Bytes bytes = parseBytes("BYTES", arguments[1]);
  const uint32_t record = arguments.size() > 2 ? parseWord("RECORD", arguments[2]) : 0;
  if (bytes.size() > kesext::kRdeDataMax)
    throw UsageError(
        fmt::format("an element holds up to {} bytes, not {}", kesext::kRdeDataMax, bytes.size()));
  return [index, bytes, record](Modem& modem) { modem.setElement(index, bytes, record); };
}

ModemOrder setBand(Words arguments) {
  const int64_t band = parseNumber("the band class", arguments[0], 10, 14);
  if (band != 10 && band != 14) throw UsageError("the band class is 10 or 14");
  const uint32_t status = parseWord("STATUS", arguments[1]);
  return [index = band == 10 ? handset::kBandClass10 : handset::kBandClass14, status](Modem& modem) {
    modem.change([&](handset::ModemState& state) { state.bands[index] = status; });
  };
}

ModemOrder setBsrTimer(Words arguments) {
  return [seconds = parseWord("SECONDS", arguments[0])](Modem& modem) {
    modem.change([&](handset::ModemState& state) { state.bsr_timer = seconds; });
  };
}

ModemOrder setTotOrder(Words arguments) {
  const Bytes order = encodeField({"ENTRIES", kRest, FieldKind::words}, arguments[0]);
  if (order.size() > sizeof(kesext::TotOrderUpdateRequest::entries))
    throw UsageError(fmt::format("a TOT order has up to {} entries", kesext::kTotOrderEntriesMax));
  return
      [order](Modem& modem) { modem.change([&](handset::ModemState& state) { state.tot_order = order; }); };
}

ModemOrder setAnswer(Words arguments) {
  const handset::MessageRow& row = messageOf(arguments);
  Bytes body = parseBytes("BYTES", arguments[1]);
  if (body.size() > row.response_size)
    throw UsageError(fmt::format("{} answers {} bytes, not {}", row.name, row.response_size, body.size()));
  body.resize(row.response_size);
  return [&row, body](Modem& modem) { modem.answer(row.service, row.id, body); };
}

ModemOrder fail(Words arguments) {
  const handset::MessageRow& row = messageOf(arguments);
  const auto code = static_cast<int32_t>(parseNumber("CODE", arguments[1], 1, kInt32Max));
  return [&row, code](Modem& modem) { modem.fail(row.service, row.id, code); };
}

ModemOrder refuse(Words arguments) {
  const handset::MessageRow& row = messageOf(arguments);
  const std::optional<Bytes> response = refusal(row, parseWord("ERROR", arguments[1]));
  if (!response)
    throw UsageError(
        fmt::format("the response to {0} has no result to refuse with; 'fail {0} CODE' lets the link "
                    "refuse it, 'answer {0} BYTES' says what it holds",
                    row.name));
  return [&row, body = *response](Modem& modem) { modem.answer(row.service, row.id, body); };
}

ModemOrder delay(Words arguments) {
  const handset::MessageRow& row = messageOf(arguments);
  const handset::Millis time(parseNumber("MS", arguments[1], 0, kDelayMax));
  return [&row, time](Modem& modem) { modem.delay(row.service, row.id, time); };
}

ModemOrder silence(Words arguments) {
  const handset::MessageRow& row = messageOf(arguments);
  return [&row](Modem& modem) { modem.silence(row.service, row.id); };
}

ModemOrder restore(Words arguments) {
  const handset::MessageRow& row = messageOf(arguments);
  return [&row](Modem& modem) { modem.restore(row.service, row.id); };
}

ModemOrder publish(Words arguments) {
  constexpr int64_t kInstancesMax = 16;
  for (const handset::Service service : handset::kServices) {
    if (handset::serviceName(service) != arguments[0]) continue;
    const auto instances = static_cast<int32_t>(parseNumber("INSTANCES", arguments[1], 0, kInstancesMax));
    return [service, instances](Modem& modem) { modem.publish(service, instances); };
  }
  throw UsageError(fmt::format("there is no service '{}'; there are vendor, nas and dms", arguments[0]));
}

ModemOrder reset(Words) {
  return [](Modem& modem) { modem.reset(); };
}

ModemOrder stop(Words) {
  return [](Modem& modem) { modem.stop(); };
}

ModemOrder start(Words) {
  return [](Modem& modem) {
    const auto held = holdOffInterruption();
    modem.start();
  };
}

constexpr ModemCommandRow kCommands[] = {
    {"set rde", "INDEX BYTES [RECORD]", "what an element holds", setRde},
    {"set band", "10|14 STATUS", "the status of a band class", setBand},
    {"set bsr-timer", "SECONDS", "the BSR timer", setBsrTimer},
    {"set tot-order", "ENTRIES", "the TOT order, numbers with commas", setTotOrder},
    {"answer", "MESSAGE BYTES", "the response to a message; zeros behind what is given", setAnswer},
    {"fail", "MESSAGE CODE", "lets the link refuse a message: no response, only this code", fail},
    {"refuse", "MESSAGE ERROR", "responds that a message was not done, and why where there is room", refuse},
    {"delay", "MESSAGE MS", "answers a message later", delay},
    {"silent", "MESSAGE", "does not answer a message", silence},
    {"restore", "MESSAGE", "answers a message as at first", restore},
    {"publish", "vendor|nas|dms INSTANCES", "how many instances a service has; 0 is none", publish},
    {"reset", "", "forgets all of the above, and what was written", reset},
    {"indicate", "INDICATION [ARGUMENT ...]", "sends an indication", indication},
    {"stop", "", "goes away, with all connections", stop},
    {"start", "", "comes back", start},
};

/// Throws UsageError unless there are as many arguments as the row takes.
void checkCount(const ModemCommandRow& row, Words arguments) {
  const std::vector<std::string> takes = splitWords(row.arguments);
  const auto least = std::count_if(takes.begin(), takes.end(), [](const std::string& word) {
    return !word.starts_with('[') && !word.ends_with(']');
  });
  const bool any_number = row.arguments.ends_with("...]");
  if (arguments.size() < static_cast<size_t>(least) || (!any_number && arguments.size() > takes.size()))
    throw UsageError(fmt::format("that takes: {} {}", row.name, row.arguments));
}

constexpr PackageRow kPackages[] = {
    {"log", handset::kLogHeader, "a whole package of log, in as many packets as it takes"},
    {"kpi", handset::kKpiHeaders[0], "a package of performance indicators"},
};

void sendIndication(Modem& modem, uint16_t id, handset::ByteView body) {
  if (modem.indicate(id, body) == 0)
    throw UsageError("nobody heard the indication: no process is connected to the modem");
}

ModemOrder package(const PackageRow& row, Words arguments) {
  if (arguments.size() != 2) throw UsageError(fmt::format("that takes: {} PACKAGE BYTES", row.name));
  constexpr int64_t kPackageIdMax = 255;
  constexpr size_t kContentMax = 255 * handset::kLogPacketPayloadMax - 4;
  const auto id = static_cast<uint8_t>(parseNumber("PACKAGE", arguments[0], 0, kPackageIdMax));
  const Bytes content = parseBytes("BYTES", arguments[1]);
  if (content.empty() || content.size() > kContentMax)
    throw UsageError(fmt::format("a package holds 1 to {} bytes", kContentMax));
  return [packets = handset::logPackage(id, row.header, content)](Modem& modem) {
    for (const Bytes& packet : packets)
      sendIndication(modem, handset::kUtilityIndicationId, packet);
  };
}

std::vector<std::string_view> indicationNames() {
  std::vector<std::string_view> names = namesOf(handset::indicationTable());
  for (const std::string_view name : namesOf(kPackages))
    names.push_back(name);
  return names;
}

}  // namespace

std::span<const PackageRow> packageTable() {
  return kPackages;
}

std::span<const ModemCommandRow> modemCommandTable() {
  return kCommands;
}

ModemOrder modemOrder(Words words) {
  if (words.empty() || words.front().starts_with('#')) return [](Modem&) {};
  std::string name;
  for (size_t taken = 1; taken <= std::min<size_t>(2, words.size()); ++taken) {
    name += (taken > 1 ? " " : "") + words[taken - 1];
    for (const ModemCommandRow& row : kCommands) {
      if (row.name != name) continue;
      checkCount(row, words.subspan(taken));
      return row.read(words.subspan(taken));
    }
  }
  const std::vector<std::string_view> names = namesOf(kCommands);
  throw UsageError(fmt::format("the modem cannot be told '{}'{}; it can be told {}", name,
                               didYouMean(name, names), fmt::join(names, ", ")));
}

ModemOrder indication(Words words) {
  if (words.empty())
    throw UsageError(
        fmt::format("indicate needs one of {}, or an id such as 0x0110", fmt::join(indicationNames(), ", ")));
  const std::string& name = words.front();
  for (const PackageRow& row : kPackages)
    if (row.name == name) return package(row, words.subspan(1));
  for (const handset::IndicationRow& row : handset::indicationTable()) {
    if (row.name != name) continue;
    Bytes body = encodeFields(row.name, row.fields, words.subspan(1));
    body.resize(row.size);
    return [id = row.id, body](Modem& modem) { sendIndication(modem, id, body); };
  }
  if (!name.starts_with("0x")) {
    const std::vector<std::string_view> names = indicationNames();
    throw UsageError(fmt::format("there is no indication '{}'{}", name, didYouMean(name, names)));
  }
  Bytes body;
  for (const std::string& word : words.subspan(1))
    body = handset::concat(body, parseBytes(name, word));
  const auto id = static_cast<uint16_t>(parseNumber("the id", name, 0, 0xFFFF));
  return [id, body](Modem& modem) { sendIndication(modem, id, body); };
}

const handset::MessageRow& messageByName(std::string_view name) {
  for (const handset::MessageRow& row : handset::messageTable())
    if (row.name == name) return row;
  throw UsageError(fmt::format("the modem has no message '{}'{}", name, didYouMean(name, messageNames())));
}

std::vector<std::string_view> messageNames() {
  return namesOf(handset::messageTable());
}

}  // namespace tools
