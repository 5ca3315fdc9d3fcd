#include "handset/modem_state.h"

#include <algorithm>
#include <stdexcept>
#include <string_view>

namespace handset {
namespace {

constexpr size_t kTotEntrySize = 4;

// Where a read's response and an update's request keep the entry count and the entries.
constexpr size_t kTotReadCountAt = 10;
constexpr size_t kTotReadEntriesAt = 20;
constexpr size_t kTotUpdateEntriesAt = 8;

void put(Bytes& response, size_t offset, ByteView part) {
  if (offset > response.size() || response.size() - offset < part.size()) throw std::out_of_range("put");
  std::copy(part.begin(), part.end(), response.begin() + static_cast<ptrdiff_t>(offset));
}

// Utility requests and tuning commands come back as they were given: a length and its bytes, cut to
// `data_max`.
void echo(ByteView request, size_t length_at, size_t data_max, Bytes& response) {
  const size_t data_at = length_at + sizeof(uint32_t);
  const size_t room = std::min(data_max, request.size() - data_at);
  const size_t length = std::min<size_t>(getLe<uint32_t>(request, length_at), room);
  putLe(response, length_at, static_cast<uint32_t>(length));
  put(response, data_at, request.subspan(data_at, length));
}

Bytes callProcessingRecord() {
  Bytes record(164);
  putLe<uint32_t>(record, 0, 12);    // frame error rate
  record[12] = 1;                    // active pilots
  putLe<uint16_t>(record, 16, 168);  // best active pilot
  putLe<uint16_t>(record, 24, 4183);
  putLe<uint16_t>(record, 26, 65535);
  putLe<uint16_t>(record, 28, 476);                         // channel
  record[32] = 6;                                           // protocol revision
  putLe<uint16_t>(record, 38, static_cast<uint16_t>(-17));  // transmit power
  putLe<uint16_t>(record, 40, 83);
  return record;
}

Bytes evdoRecord() {
  Bytes record(52);
  putLe<uint16_t>(record, 0, 100);  // channel
  record[2] = 21;                   // UATI colour code
  putLe<uint32_t>(record, 4, 0x00C0FFEE);
  putLe<uint16_t>(record, 8, 168);  // pilot
  putLe<uint16_t>(record, 10, 79);
  record[24] = 2;                                            // session state
  putLe<uint16_t>(record, 46, static_cast<uint16_t>(-200));  // pilot energy
  return record;
}

void fillEngineeringText(ByteView request, Bytes& response) {
  const bool call_processing = getLe<uint32_t>(request, 0) == 0;
  const Bytes text = bytesOf(toHex(call_processing ? callProcessingRecord() : evdoRecord(), ""));
  putLe(response, 8, static_cast<uint32_t>(text.size()));
  put(response, 12, text);
}

void fillApnList(Bytes& response) {
  response[8] = 1;  // APNs
  response[9] = 1;  // the list is present
  put(response, 20, bytesOf("internet.example"));
  putLe<uint32_t>(response, 20 + 108, 1);
  put(response, 20 + 112, hex("0A 00 00 01"));
}

void fillLteChannels(Bytes& response) {
  response[8] = 1;
  putLe<uint16_t>(response, 10, 26665);
  response[12] = 1;
  putLe<uint16_t>(response, 14, 8665);
  response[16] = 1;
  response[17] = 3;
  response[18] = 1;
  response[19] = 3;
}

void fillServingSystem(Bytes& response) {
  response[1104] = 1;
  putLe<uint16_t>(response, 1106, 310);
  putLe<uint16_t>(response, 1108, 120);
  response[1434] = 1;
  putLe<uint32_t>(response, 1436, 0x0A1B2C);
}

void fillPlmnName(Bytes& response) {
  constexpr std::string_view kShortName = "Testnet";  // its letters are the same in the GSM alphabet
  response[8] = 1;                                    // the name is valid
  putLe(response, 48, static_cast<uint16_t>(kShortName.size()));
  put(response, 52, bytesOf(kShortName));
}

void fillSignal(Bytes& response) {
  response[8] = 1;
  response[10] = static_cast<uint8_t>(-62);
  response[11] = static_cast<uint8_t>(-9);
  putLe(response, 12, static_cast<uint16_t>(-95));
}

void fillTransmitPower(Bytes& response) {
  response[8] = 1;
  putLe(response, 12, static_cast<uint32_t>(-35));
}

void answerNas(uint16_t id, Bytes& response) {
  switch (id) {
    case 0x0024:
      return fillServingSystem(response);
    case 0x0044:
      return fillPlmnName(response);
    case 0x004F:
      return fillSignal(response);
    case 0x005A:
      return fillTransmitPower(response);
    default:
      return;
  }
}

}  // namespace

uint32_t ModemState::band(uint32_t index) const {
  const std::scoped_lock lock(mutex_);
  const auto found = bands_.find(index);
  return found == bands_.end() ? 0 : found->second;
}

void ModemState::setBand(uint32_t index, uint32_t status) {
  const std::scoped_lock lock(mutex_);
  bands_[index] = status;
}

uint32_t ModemState::bsrTimer() const {
  const std::scoped_lock lock(mutex_);
  return bsr_timer_;
}

void ModemState::setBsrTimer(uint32_t timer) {
  const std::scoped_lock lock(mutex_);
  bsr_timer_ = timer;
}

Bytes ModemState::totOrder() const {
  const std::scoped_lock lock(mutex_);
  return tot_order_;
}

void ModemState::setTotOrder(ByteView entries) {
  if (entries.size() % kTotEntrySize != 0 || entries.size() > kTotEntriesMax * kTotEntrySize) {
    throw std::length_error("not a TOT order");
  }
  const std::scoped_lock lock(mutex_);
  tot_order_.assign(entries.begin(), entries.end());
}

Bytes ModemState::answer(const MessageRow& row, ByteView request) {
  Bytes response(row.response_size);
  response[0] = row.done;
  switch (row.service) {
    case Service::vendor:
      answerVendor(row.id, request, response);
      break;
    case Service::nas:
      answerNas(row.id, response);
      break;
    case Service::dms:
      break;
  }
  return response;
}

void ModemState::answerVendor(uint16_t id, ByteView request, Bytes& response) {
  switch (id) {
    case 0x0008:
      response = rde_.read(request);
      return;
    case 0x0009:
      response = rde_.write(request);
      return;
    case 0x000F:
      return echo(request, 4, 256, response);
    case 0x0010:
      return fillEngineeringText(request, response);
    case 0x0101:
      return putLe(response, 4, band(getLe<uint32_t>(request, 0)));
    case 0x0102:
      return setBand(getLe<uint32_t>(request, 0), getLe<uint32_t>(request, 4));
    case 0x0104: {
      const Bytes entries = totOrder();
      putLe(response, kTotReadCountAt, static_cast<uint16_t>(entries.size() / kTotEntrySize));
      return put(response, kTotReadEntriesAt, entries);
    }
    case 0x0105: {
      const size_t count = std::min<size_t>(getLe<uint16_t>(request, 0), kTotEntriesMax);
      return setTotOrder(request.subspan(kTotUpdateEntriesAt, count * kTotEntrySize));
    }
    case 0x0106:
      return fillApnList(response);
    case 0x0107:
      response[8] = 2;
      return;
    case 0x0108:
      return putLe(response, 8, bsrTimer());
    case 0x0109:
      return setBsrTimer(getLe<uint32_t>(request, 0));
    case 0x010A:
      return fillLteChannels(response);
    case 0x0110:
      return echo(request, 0, 28, response);
    default:
      return;
  }
}

}  // namespace handset
