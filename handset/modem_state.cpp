#include "handset/modem_state.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <string_view>

#include "carrier/modem_messages.h"
#include "generic/utility_messages.h"
#include "nam/engineering_records.h"
#include "nv/rde_messages.h"

namespace handset {
namespace {

struct Place {
  size_t at;
  size_t size;
};

Place placeOf(Fields fields, std::string_view name) {
  size_t at = 0;
  for (const FieldSpec& field : fields) {
    if (field.name == name) return {at, field.size};
    at += field.size;
  }
  throw std::out_of_range("no field " + std::string(name));
}

/// A request and its response, by the names of their fields.
struct Exchange {
  ModemState& state;
  const MessageRow& row;
  ByteView request;
  Bytes& response;

  [[nodiscard]] ByteView askedBytes(std::string_view name) const {
    const Place place = placeOf(row.request, name);
    return request.subspan(place.at, place.size);
  }
  [[nodiscard]] uint32_t asked(std::string_view name) const {
    const ByteView bytes = askedBytes(name);
    uint32_t number = 0;
    for (size_t i = bytes.size(); i > 0; --i)
      number = number << 8 | bytes[i - 1];
    return number;
  }
  void say(std::string_view name, ByteView bytes) const {
    const Place place = placeOf(row.response, name);
    if (bytes.size() > place.size) throw std::out_of_range("too much for " + std::string(name));
    std::copy(bytes.begin(), bytes.end(), response.begin() + static_cast<ptrdiff_t>(place.at));
  }
  void say(std::string_view name, int64_t number) const {
    const Place place = placeOf(row.response, name);
    for (size_t i = 0; i < place.size; ++i)
      response[place.at + i] = static_cast<uint8_t>(static_cast<uint64_t>(number) >> (8 * i));
  }
  void refuse(uint32_t error) const {
    say("result", 1);
    say("error", error);
  }
  /// Gives back what was sent, as far as its length says.
  void echo(std::string_view length, std::string_view sent, std::string_view received) const {
    const ByteView data = askedBytes(sent);
    const size_t count = std::min<size_t>(asked(length), data.size());
    say(length, static_cast<int64_t>(count));
    say(received, data.first(count));
  }
};

void readElement(const Exchange& exchange) {
  for (const std::string_view name : {"rde_index", "record_num", "offset"})
    exchange.say(name, exchange.asked(name));
  const auto found =
      exchange.state.elements.find({exchange.asked("rde_index"), exchange.asked("record_num")});
  if (found == exchange.state.elements.end()) return exchange.refuse(kRdeNoElement);
  const ByteView element = found->second;
  const ByteView behind = element.subspan(std::min<size_t>(exchange.asked("offset"), element.size()));
  const size_t length = exchange.asked("length");
  const ByteView data = behind.first(length == 0 ? behind.size() : std::min(length, behind.size()));
  exchange.say("length", static_cast<int64_t>(data.size()));
  exchange.say("data_len", static_cast<int64_t>(data.size()));
  exchange.say("data", data);
}

void writeElement(const Exchange& exchange) {
  const size_t offset = exchange.asked("offset");
  const size_t length = exchange.asked("length");
  if (offset > kesext::kRdeDataMax || length > kesext::kRdeDataMax - offset ||
      exchange.asked("data_len") != length)
    return exchange.refuse(kRdeBadLength);
  Bytes& element = exchange.state.elements[{exchange.asked("rde_index"), exchange.asked("record_num")}];
  element.resize(std::max(element.size(), offset + length));
  const ByteView data = exchange.askedBytes("data").first(length);
  std::copy(data.begin(), data.end(), element.begin() + static_cast<ptrdiff_t>(offset));
}

/// Both engineering records come as hexadecimal text.
void sayEngineeringRecord(const Exchange& exchange) {
  constexpr kesext::CpStatusRecord kCallProcessing{.fer = 12,
                                                   .activePilotCount = 1,
                                                   .bestActivePilot = 168,
                                                   .sid = 4183,
                                                   .nid = 65535,
                                                   .channel = 476,
                                                   .PRevInUse = 6,
                                                   .txPower = -17,
                                                   .rssi = 83};
  constexpr kesext::EvdoStatusRecord kEvdo{.hdrChanNum = 100,
                                           .uatiColorCode = 21,
                                           .txUati = 0x00C0FFEE,
                                           .pilotPn = 168,
                                           .hdrRssi = 79,
                                           .sessionState = 2,
                                           .pilotEnergy = -200};
  const bool call_processing = exchange.asked("type") == 0;
  const Bytes text = bytesOf(toHex(call_processing ? recordBytes(kCallProcessing) : recordBytes(kEvdo), ""));
  exchange.say("data_length", static_cast<int64_t>(text.size()));
  exchange.say("data", text);
}

/// What a message of the vendor service does.
struct ActRow {
  uint32_t id;
  void (*act)(const Exchange&);
};
constexpr ActRow kActs[] = {
    {kesext::kRdeRead.id, readElement},
    {kesext::kRdeWrite.id, writeElement},
    {kesext::kUtility.id, [](const Exchange& e) { e.echo("len", "req_data", "data"); }},
    {0x0010, sayEngineeringRecord},
    {kesext::kReadBand.id,
     [](const Exchange& e) {
       const auto found = e.state.bands.find(e.asked("band_index"));
       e.say("band_status", found == e.state.bands.end() ? 0 : found->second);
     }},
    {kesext::kWriteBand.id,
     [](const Exchange& e) { e.state.bands[e.asked("band_index")] = e.asked("band_status"); }},
    {kesext::kReadTotOrder.id,
     [](const Exchange& e) {
       e.say("count", static_cast<int64_t>(e.state.tot_order.size() / kesext::kTotOrderEntrySize));
       e.say("entries", e.state.tot_order);
     }},
    {kesext::kUpdateTotOrder.id,
     [](const Exchange& e) {
       const size_t size = e.asked("count") * kesext::kTotOrderEntrySize;
       const ByteView entries = e.askedBytes("entries");
       const ByteView order = entries.first(std::min(size, entries.size()));
       e.state.tot_order.assign(order.begin(), order.end());
     }},
    {kesext::kReadBsrTimer.id, [](const Exchange& e) { e.say("timer", e.state.bsr_timer); }},
    {kesext::kSetBsrTimer.id, [](const Exchange& e) { e.state.bsr_timer = e.asked("timer"); }},
    {0x0110, [](const Exchange& e) { e.echo("length", "data", "data"); }},
};

}  // namespace

Bytes ModemState::answer(const MessageRow& row, ByteView request) {
  Bytes response(row.response_size);
  const Exchange exchange{*this, row, request, response};
  response[0] = row.done;
  for (const FieldValue& value : row.says) {
    if (value.text.empty())
      exchange.say(value.field, value.number);
    else
      exchange.say(value.field, bytesOf(value.text));
  }
  for (const ActRow& row_of_act : kActs)
    if (row.service == Service::vendor && row_of_act.id == row.id) row_of_act.act(exchange);
  return response;
}

}  // namespace handset
