#include "tools/bench/modem_control.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>

#include "handset/message_table.h"
#include "handset/modem_logs.h"
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

void need(Words arguments, size_t least, size_t most, std::string_view usage) {
  if (arguments.size() < least || arguments.size() > most)
    throw UsageError(fmt::format("that takes: {}", usage));
}

ModemOrder setRde(Words arguments) {
  need(arguments, 2, 2, "set rde INDEX BYTES");
  const auto index = static_cast<uint32_t>(parseNumber("INDEX", arguments[0], 0, kUint32Max));
  return [index, bytes = parseBytes("BYTES", arguments[1])](Modem& modem) { modem.rde().set(index, bytes); };
}

ModemOrder setBand(Words arguments) {
  need(arguments, 2, 2, "set band 10|14 STATUS");
  const int64_t band = parseNumber("the band class", arguments[0], 10, 14);
  if (band != 10 && band != 14) throw UsageError("the band class is 10 or 14");
  const auto status = static_cast<uint32_t>(parseNumber("STATUS", arguments[1], 0, kUint32Max));
  return [band, status](Modem& modem) {
    modem.state().setBand(band == 10 ? handset::kBandClass10 : handset::kBandClass14, status);
  };
}

ModemOrder setBsrTimer(Words arguments) {
  need(arguments, 1, 1, "set bsr-timer SECONDS");
  const auto seconds = static_cast<uint32_t>(parseNumber("SECONDS", arguments[0], 0, kUint32Max));
  return [seconds](Modem& modem) { modem.state().setBsrTimer(seconds); };
}

ModemOrder setAnswer(Words arguments) {
  need(arguments, 2, 2, "answer MESSAGE BYTES");
  const handset::MessageRow& row = messageByName(arguments[0]);
  Bytes body = parseBytes("BYTES", arguments[1]);
  if (body.size() > row.response_size)
    throw UsageError(
        fmt::format("{} answers {} bytes, not {}", arguments[0], row.response_size, body.size()));
  body.resize(row.response_size);
  return [&row, body](Modem& modem) { modem.answer(row.service, row.id, body); };
}

ModemOrder fail(Words arguments) {
  need(arguments, 2, 2, "fail MESSAGE CODE");
  const handset::MessageRow& row = messageByName(arguments[0]);
  const auto code = static_cast<int32_t>(parseNumber("CODE", arguments[1], 1, kInt32Max));
  return [&row, code](Modem& modem) { modem.fail(row.service, row.id, code); };
}

ModemOrder refuse(Words arguments) {
  need(arguments, 2, 2, "refuse MESSAGE ERROR");
  const handset::MessageRow& row = messageByName(arguments[0]);
  const auto error = static_cast<uint32_t>(parseNumber("ERROR", arguments[1], 0, kUint32Max));
  const std::optional<Bytes> response = refusal(row, error);
  if (!response)
    throw UsageError(
        fmt::format("the response to {0} has no result to refuse with; 'fail {0} CODE' lets the link "
                    "refuse it, 'answer {0} BYTES' says what it holds",
                    arguments[0]));
  return [&row, body = *response](Modem& modem) { modem.answer(row.service, row.id, body); };
}

ModemOrder delay(Words arguments) {
  need(arguments, 2, 2, "delay MESSAGE MS");
  const handset::MessageRow& row = messageByName(arguments[0]);
  const handset::Millis time(parseNumber("MS", arguments[1], 0, kDelayMax));
  return [&row, time](Modem& modem) { modem.delay(row.service, row.id, time); };
}

ModemOrder silence(Words arguments) {
  need(arguments, 1, 1, "silent MESSAGE");
  const handset::MessageRow& row = messageByName(arguments[0]);
  return [&row](Modem& modem) { modem.silence(row.service, row.id); };
}

ModemOrder restore(Words arguments) {
  need(arguments, 1, 1, "restore MESSAGE");
  const handset::MessageRow& row = messageByName(arguments[0]);
  return [&row](Modem& modem) { modem.restore(row.service, row.id); };
}

ModemOrder publish(Words arguments) {
  need(arguments, 2, 2, "publish vendor|nas|dms INSTANCES");
  constexpr int64_t kInstancesMax = 16;
  for (const auto service : {handset::Service::vendor, handset::Service::nas, handset::Service::dms}) {
    if (handset::serviceName(service) != arguments[0]) continue;
    const auto instances = static_cast<int32_t>(parseNumber("INSTANCES", arguments[1], 0, kInstancesMax));
    return [service, instances](Modem& modem) { modem.publish(service, instances); };
  }
  throw UsageError(fmt::format("there is no service '{}'; there are vendor, nas and dms", arguments[0]));
}

ModemOrder stop(Words arguments) {
  need(arguments, 0, 0, "stop");
  return [](Modem& modem) { modem.stop(); };
}

ModemOrder start(Words arguments) {
  need(arguments, 0, 0, "start");
  return [](Modem& modem) {
    const auto held = holdOffInterruption();
    modem.start();
  };
}

constexpr ModemCommandRow kCommands[] = {
    {"set rde", "INDEX BYTES", "what an element holds", setRde},
    {"set band", "10|14 STATUS", "the status of a band class", setBand},
    {"set bsr-timer", "SECONDS", "the BSR timer", setBsrTimer},
    {"answer", "MESSAGE BYTES", "the response to a message; zeros behind what is given", setAnswer},
    {"fail", "MESSAGE CODE", "lets the link refuse a message: no response, only this code", fail},
    {"refuse", "MESSAGE ERROR", "responds that a message was not done, and why where there is room", refuse},
    {"delay", "MESSAGE MS", "answers a message later", delay},
    {"silent", "MESSAGE", "does not answer a message", silence},
    {"restore", "MESSAGE", "answers a message as at first", restore},
    {"indicate", "INDICATION [ARGUMENT ...]", "sends an indication", indication},
    {"publish", "vendor|nas|dms INSTANCES", "how many instances a service has; 0 is none", publish},
    {"stop", "", "goes away, with all connections", stop},
    {"start", "", "comes back", start},
};

template <typename Rows>
std::vector<std::string_view> namesOf(const Rows& rows) {
  std::vector<std::string_view> names;
  for (const auto& row : rows)
    if (std::find(names.begin(), names.end(), row.name) == names.end()) names.push_back(row.name);
  return names;
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
  need(arguments, 2, 2, fmt::format("{} PACKAGE BYTES", row.name));
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
  std::vector<std::string_view> names = namesOf(indicationTable());
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

void commandModem(Modem& modem, Words words) {
  modemOrder(words)(modem);
}

ModemOrder modemOrder(Words words) {
  std::string name;
  for (size_t taken = 1; taken <= std::min<size_t>(2, words.size()); ++taken) {
    name += (taken > 1 ? " " : "") + words[taken - 1];
    for (const ModemCommandRow& row : kCommands)
      if (row.name == name) return row.read(words.subspan(taken));
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
  for (const IndicationRow& row : indicationTable()) {
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
    if (messageName(row.service, row.id) == name) return row;
  const std::vector<std::string> names = messageNames();
  const std::vector<std::string_view> views(names.begin(), names.end());
  throw UsageError(fmt::format("the modem has no message '{}'{}", name, didYouMean(name, views)));
}

std::vector<std::string> messageNames() {
  std::vector<std::string> names;
  for (const handset::MessageRow& row : handset::messageTable())
    names.push_back(messageName(row.service, row.id));
  return names;
}

}  // namespace tools
