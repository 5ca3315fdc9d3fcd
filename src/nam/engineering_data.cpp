#include "nam/engineering_data.h"

#include <algorithm>
#include <cstring>
#include <optional>

#include "core/ground/hex_text.h"
#include "core/ground/log.h"
#include "nam/engineering_records.h"
#include "qmi/send.h"

namespace kesext {

namespace {

struct EngineeringInfoRequest {
  uint32_t type;
};
static_assert(sizeof(EngineeringInfoRequest) == 4);

struct EngineeringInfoResponse {
  uint32_t result;  // 0: success
  uint32_t error;
  uint32_t data_length;
  uint8_t data[kEngineeringTextMax];
};
static_assert(sizeof(EngineeringInfoResponse) == 1012);
static_assert(offsetof(EngineeringInfoResponse, data_length) == 8);
static_assert(offsetof(EngineeringInfoResponse, data) == 12);

constexpr VendorMessage<EngineeringInfoRequest, EngineeringInfoResponse> kEngineeringInfo{0x0010};

struct EngineeringText {
  uint8_t characters[kEngineeringTextMax];
  uint32_t length;
};

/// The record that the text spells out; what the text does not reach stays zero, what it has beyond is left
/// out.
template <typename Record>
Record decodeRecord(const EngineeringText& text) {
  Record record{};
  const auto used = std::min<uint32_t>(text.length, 2 * sizeof(Record));
  kesext_hook_sprint_hexstr_to_bin(text.characters, used, reinterpret_cast<uint8_t*>(&record));
  return record;
}

CpStatusReport widen(const CpStatusRecord& record) {
  CpStatusReport report{
      .fer = record.fer,
      .bestActivePilot = record.bestActivePilot,
      .bestActiveStrength = record.bestActiveStrength,
      .bestNeighborPilot = record.bestNeighborPilot,
      .bestNeighborStrength = record.bestNeighborStrength,
      .sid = record.sid,
      .nid = record.nid,
      .channel = record.channel,
      .serviceOption = record.serviceOption,
      .droppedCallCounter = record.droppedCallCounter,
      .sCallCounter = record.sCallCounter,
      .txPower = record.txPower,
      .band = record.band,
      .activePilotCount = record.activePilotCount,
      .neighborPilotCount = record.neighborPilotCount,
      .candPilotCount = record.candPilotCount,
      .cpState = record.cpState,
      .lastCallIndicator = record.lastCallIndicator,
      .lnaStatus = record.lnaStatus,
      .rssi = record.rssi,
      .reserved = 0,
      .pRevInUseAbove5 = record.PRevInUse > 5,
      .PRevInUse = record.PRevInUse,
      .bid = record.bid,
      .bsLat = record.bsLat,
      .bsLon = record.bsLon,
  };
  std::copy_n(record.activeSetPn, kActiveSetSize, report.activeSetPn);
  std::copy_n(record.activeSetStrength, kActiveSetSize, report.activeSetStrength);
  std::copy_n(record.neighborSetPn, kNeighborSetSize, report.neighborSetPn);
  return report;
}

EvdoStatusReport widen(const EvdoStatusRecord& record) {
  EvdoStatusReport report{
      .hdrChanNum = record.hdrChanNum,
      .uatiColorCode = record.uatiColorCode,
      .txUati = record.txUati,
      .pilotPn = record.pilotPn,
      .hdrRssi = record.hdrRssi,
      .rxPwrRx0Dbm = record.rxPwrRx0Dbm,
      .rxPwrRx1Dbm = record.rxPwrRx1Dbm,
      .measPkts = record.measPkts,
      .errPkts = record.errPkts,
      .sessionState = record.sessionState,
      .atState = record.atState,
      .reserved = 0,
      .userCount = record.userCount,
      .hybridMode = record.hybridMode,
      .dropCount = 0,
      .macIndex = record.macIndex,
      .pilotEnergy = record.pilotEnergy,
      .drcCover = record.drcCover,
      .sinr = record.sinr,
      .anAuthStatus = record.anAuthStatus,
  };
  std::copy_n(record.sectorIds, kSectorIdSize, report.sectorIds);
  return report;
}

void log(const CpStatusReport& report) {
  LOGE(
      "  CP status1: fer=%d,   activePilotCount=%d,   neighborPilotCount=%d,   candPilotCount=%d,   "
      "bestActivePilot=%d,   bestActiveStrength=%d,   bestNeighborPilot=%d,   bestNeighborStrength=%d, ",
      report.fer, report.activePilotCount, report.neighborPilotCount, report.candPilotCount,
      report.bestActivePilot, report.bestActiveStrength, report.bestNeighborPilot,
      report.bestNeighborStrength);
  LOGE(
      "CP status2: sid=%d,   nid=%d,   channel=%d,   serviceOption=%d,   droppedCallCounter=%d,   "
      "lastCallIndicator=%d,   sCallCounter=%d,   PRevInUse=%d, ",
      report.sid, report.nid, report.channel, report.serviceOption, report.droppedCallCounter,
      report.lastCallIndicator, report.sCallCounter, report.PRevInUse);
  LOGE(
      "CP status3: band=%d,   lnaStatus=%d,   cpState=%d,   txPower=%d,   rssi=%d   bid=%d   bsLat=%d   "
      "bsLat=%d ",
      report.band, report.lnaStatus, report.cpState, report.txPower, report.rssi, report.bid, report.bsLat,
      report.bsLon);
  for (size_t i = 0; i < kActiveSetSize; ++i) {
    LOGE("CP status4: activeSetPn %d = %d", static_cast<int>(i), report.activeSetPn[i]);
    LOGE("CP status4: activeSetStrength %d = %d", static_cast<int>(i), report.activeSetStrength[i]);
  }
  for (size_t i = 0; i < kNeighborSetSize; ++i)
    LOGE("CP status5: neighborSetPn %d = %d", static_cast<int>(i), report.neighborSetPn[i]);
}

void log(const EvdoStatusReport& report) {
  LOGE(
      "EVDO status1: hdrChanNum=%d,  uatiColorCode=%d,  txUati=0x%X,  pilotPn=%d,  hdrRssi=%d,  "
      "rxPwrRx0Dbm=%d  "
      "rxPwrRx1Dbm=%d,  measPkts=%d,  errPkts=%d,  sessionState=%d,",
      report.hdrChanNum, report.uatiColorCode, report.txUati, report.pilotPn, report.hdrRssi,
      report.rxPwrRx0Dbm, report.rxPwrRx1Dbm, report.measPkts, report.errPkts, report.sessionState);
  LOGE(
      "EVDO status2: atState=%d,  userCount=%d   dropCount=%d,  hybridMode=%d   macIndex=%d,  "
      "pilotEnergy=%d,  "
      "drcCover=%d   sinr=%d,  anAuthStatus=%d ",
      report.atState, report.userCount, report.dropCount, report.hybridMode, report.macIndex,
      report.pilotEnergy, report.drcCover, report.sinr, report.anAuthStatus);
  for (size_t i = 0; i < kSectorIdSize; ++i)
    LOGE("EVDO status3: sectorIds %d = %d", static_cast<int>(i), report.sectorIds[i]);
}

/// Answers a screen's request, `name` in the log, with the report of the record that the modem has of `type`.
template <typename Record>
void answerScreen(const char* name, EngineeringInfoType type, CarrierResponse& answer) {
  LOGE("%s:  ENTER FUNCTION  %d ", name, 0);
  EngineeringText text{};
  kes_qmi_sprint_get_engineering_info(type, text.characters, &text.length);
  LOGE("%s() hexDump...", name);
  hexDump(text.characters, text.length);
  const auto report = widen(decodeRecord<Record>(text));
  log(report);
  answer.put(report);
}

/// The value of a hexadecimal digit of either case, or nothing.
std::optional<uint8_t> nibbleOf(uint8_t character) {
  if (character >= '0' && character <= '9') return static_cast<uint8_t>(character - '0');
  if (character >= 'a' && character <= 'f') return static_cast<uint8_t>(character - 'a' + 10);
  if (character >= 'A' && character <= 'F') return static_cast<uint8_t>(character - 'A' + 10);
  return std::nullopt;
}

}  // namespace

int kes_qmi_sprint_get_engineering_info(uint32_t type, uint8_t* text, uint32_t* text_length) {
  if (text == nullptr || text_length == nullptr) return 0;
  LOGE("In Engineering info request %d", type);
  EngineeringInfoResponse response;
  const int32_t sent = sendVendor(kEngineeringInfo, EngineeringInfoRequest{type}, response);
  if (sent != 0) {
    LOGE("kes_qmi_sprint_get_engineering_info: qmi_client_send_msg_sync failed (%d).", sent);
    return 0;
  }
  if (response.result != 0) {
    LOGE("kes_qmi_sprint_get_engineering_info: Get Engineer info failed (%d).", response.result);
    return 0;
  }
  LOGE("Successfully retrieved datalen %d", response.data_length);
  *text_length = std::min(response.data_length, kEngineeringTextMax);
  std::memcpy(text, response.data, *text_length);
  return 1;
}

void kesext_hook_sprint_hexstr_to_bin(const uint8_t* text, uint32_t length, uint8_t* out) {
  uint8_t nibble = 0;
  for (uint32_t i = 0; i < length; ++i) {
    if (const auto digit = nibbleOf(text[i]))
      nibble = *digit;
    else
      LOGE("kesext_hook_sprint_hexstr_to_bin invalid char %d %d", text[i], i);
    if (i % 2 == 0)
      out[i / 2] = static_cast<uint8_t>(nibble << 4);
    else
      out[i / 2] |= nibble;
  }
}

void kesext_hook_sprint_get_call_processing_data(const HookRequest&, uint32_t, CarrierResponse& answer) {
  answerScreen<CpStatusRecord>("kesext_hook_sprint_get_call_processing_data", kCallProcessingInfo, answer);
}

void kesext_hook_sprint_get_evdo_data(const HookRequest&, uint32_t, CarrierResponse& answer) {
  answerScreen<EvdoStatusRecord>("kesext_hook_sprint_get_evdo_data", kEvdoInfo, answer);
}

}  // namespace kesext
