// The modem's engineering records, and the reports that the parent's field-test screens get of them.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kesext {

inline constexpr size_t kActiveSetSize = 6;
inline constexpr size_t kNeighborSetSize = 40;
inline constexpr size_t kSectorIdSize = 16;

/// Call-processing status, as the modem's text decodes.
struct CpStatusRecord {
  uint32_t fer;
  uint8_t unused_4[8];
  uint8_t activePilotCount;
  uint8_t neighborPilotCount;
  uint8_t candPilotCount;
  uint8_t unused_15;
  uint16_t bestActivePilot;
  uint16_t bestActiveStrength;
  uint16_t bestNeighborPilot;
  uint16_t bestNeighborStrength;
  uint16_t sid;
  uint16_t nid;
  uint16_t channel;
  uint16_t serviceOption;
  uint8_t PRevInUse;
  uint8_t band;
  uint8_t lnaStatus;
  uint8_t unused_35;
  uint16_t cpState;
  int16_t txPower;
  uint16_t rssi;
  uint16_t bid;
  uint32_t bsLat;
  uint32_t bsLon;
  uint16_t activeSetPn[kActiveSetSize];
  uint16_t activeSetStrength[kActiveSetSize];
  uint16_t neighborSetPn[kNeighborSetSize];
  uint16_t sCallCounter;
  uint16_t droppedCallCounter;
  uint16_t lastCallIndicator;
  uint8_t padding_162[2];
};
static_assert(sizeof(CpStatusRecord) == 164);
static_assert(offsetof(CpStatusRecord, activePilotCount) == 12);
static_assert(offsetof(CpStatusRecord, neighborPilotCount) == 13);
static_assert(offsetof(CpStatusRecord, candPilotCount) == 14);
static_assert(offsetof(CpStatusRecord, bestActivePilot) == 16);
static_assert(offsetof(CpStatusRecord, bestActiveStrength) == 18);
static_assert(offsetof(CpStatusRecord, bestNeighborPilot) == 20);
static_assert(offsetof(CpStatusRecord, bestNeighborStrength) == 22);
static_assert(offsetof(CpStatusRecord, sid) == 24);
static_assert(offsetof(CpStatusRecord, nid) == 26);
static_assert(offsetof(CpStatusRecord, channel) == 28);
static_assert(offsetof(CpStatusRecord, serviceOption) == 30);
static_assert(offsetof(CpStatusRecord, PRevInUse) == 32);
static_assert(offsetof(CpStatusRecord, band) == 33);
static_assert(offsetof(CpStatusRecord, lnaStatus) == 34);
static_assert(offsetof(CpStatusRecord, cpState) == 36);
static_assert(offsetof(CpStatusRecord, txPower) == 38);
static_assert(offsetof(CpStatusRecord, rssi) == 40);
static_assert(offsetof(CpStatusRecord, bid) == 42);
static_assert(offsetof(CpStatusRecord, bsLat) == 44);
static_assert(offsetof(CpStatusRecord, bsLon) == 48);
static_assert(offsetof(CpStatusRecord, activeSetPn) == 52);
static_assert(offsetof(CpStatusRecord, activeSetStrength) == 64);
static_assert(offsetof(CpStatusRecord, neighborSetPn) == 76);
static_assert(offsetof(CpStatusRecord, sCallCounter) == 156);
static_assert(offsetof(CpStatusRecord, droppedCallCounter) == 158);
static_assert(offsetof(CpStatusRecord, lastCallIndicator) == 160);

/// The position of a report's field, in words.
#define KESEXT_WORD_OF(Report, field) (offsetof(Report, field) / sizeof(uint32_t))

/// Every field widened to a word: txPower by its sign, the others without.
struct CpStatusReport {
  uint32_t fer;
  uint32_t bestActivePilot;
  uint32_t bestActiveStrength;
  uint32_t bestNeighborPilot;
  uint32_t bestNeighborStrength;
  uint32_t sid;
  uint32_t nid;
  uint32_t channel;
  uint32_t serviceOption;
  uint32_t droppedCallCounter;
  uint32_t sCallCounter;
  int32_t txPower;
  uint32_t band;
  uint32_t activePilotCount;
  uint32_t neighborPilotCount;
  uint32_t candPilotCount;
  uint32_t cpState;
  uint32_t lastCallIndicator;
  uint32_t lnaStatus;
  uint32_t rssi;
  uint32_t reserved;
  uint32_t pRevInUseAbove5;
  uint32_t PRevInUse;
  uint32_t bid;
  uint32_t activeSetPn[kActiveSetSize];
  uint32_t activeSetStrength[kActiveSetSize];
  uint32_t neighborSetPn[kNeighborSetSize];
  uint32_t bsLat;
  uint32_t bsLon;
};
static_assert(sizeof(CpStatusReport) == 312);
static_assert(KESEXT_WORD_OF(CpStatusReport, bestActivePilot) == 1);
static_assert(KESEXT_WORD_OF(CpStatusReport, bestActiveStrength) == 2);
static_assert(KESEXT_WORD_OF(CpStatusReport, bestNeighborPilot) == 3);
static_assert(KESEXT_WORD_OF(CpStatusReport, bestNeighborStrength) == 4);
static_assert(KESEXT_WORD_OF(CpStatusReport, sid) == 5);
static_assert(KESEXT_WORD_OF(CpStatusReport, nid) == 6);
static_assert(KESEXT_WORD_OF(CpStatusReport, channel) == 7);
static_assert(KESEXT_WORD_OF(CpStatusReport, serviceOption) == 8);
static_assert(KESEXT_WORD_OF(CpStatusReport, droppedCallCounter) == 9);
static_assert(KESEXT_WORD_OF(CpStatusReport, sCallCounter) == 10);
static_assert(KESEXT_WORD_OF(CpStatusReport, txPower) == 11);
static_assert(KESEXT_WORD_OF(CpStatusReport, band) == 12);
static_assert(KESEXT_WORD_OF(CpStatusReport, activePilotCount) == 13);
static_assert(KESEXT_WORD_OF(CpStatusReport, neighborPilotCount) == 14);
static_assert(KESEXT_WORD_OF(CpStatusReport, candPilotCount) == 15);
static_assert(KESEXT_WORD_OF(CpStatusReport, cpState) == 16);
static_assert(KESEXT_WORD_OF(CpStatusReport, lastCallIndicator) == 17);
static_assert(KESEXT_WORD_OF(CpStatusReport, lnaStatus) == 18);
static_assert(KESEXT_WORD_OF(CpStatusReport, rssi) == 19);
static_assert(KESEXT_WORD_OF(CpStatusReport, reserved) == 20);
static_assert(KESEXT_WORD_OF(CpStatusReport, pRevInUseAbove5) == 21);
static_assert(KESEXT_WORD_OF(CpStatusReport, PRevInUse) == 22);
static_assert(KESEXT_WORD_OF(CpStatusReport, bid) == 23);
static_assert(KESEXT_WORD_OF(CpStatusReport, activeSetPn) == 24);
static_assert(KESEXT_WORD_OF(CpStatusReport, activeSetStrength) == 30);
static_assert(KESEXT_WORD_OF(CpStatusReport, neighborSetPn) == 36);
static_assert(KESEXT_WORD_OF(CpStatusReport, bsLat) == 76);
static_assert(KESEXT_WORD_OF(CpStatusReport, bsLon) == 77);

/// EVDO status, as the modem's text decodes.
struct EvdoStatusRecord {
  uint16_t hdrChanNum;
  uint8_t uatiColorCode;
  uint8_t padding_3;
  uint32_t txUati;
  uint16_t pilotPn;
  uint16_t hdrRssi;
  uint32_t rxPwrRx0Dbm;
  uint32_t rxPwrRx1Dbm;
  uint16_t measPkts;
  uint16_t errPkts;
  uint8_t sessionState;
  uint8_t atState;
  uint8_t userCount;
  uint8_t hybridMode;
  uint8_t macIndex;
  uint8_t sectorIds[kSectorIdSize];
  uint8_t padding_45;
  int16_t pilotEnergy;
  uint8_t drcCover;
  uint8_t sinr;
  uint8_t anAuthStatus;
  uint8_t padding_51;
};
static_assert(sizeof(EvdoStatusRecord) == 52);
static_assert(offsetof(EvdoStatusRecord, uatiColorCode) == 2);
static_assert(offsetof(EvdoStatusRecord, txUati) == 4);
static_assert(offsetof(EvdoStatusRecord, pilotPn) == 8);
static_assert(offsetof(EvdoStatusRecord, hdrRssi) == 10);
static_assert(offsetof(EvdoStatusRecord, rxPwrRx0Dbm) == 12);
static_assert(offsetof(EvdoStatusRecord, rxPwrRx1Dbm) == 16);
static_assert(offsetof(EvdoStatusRecord, measPkts) == 20);
static_assert(offsetof(EvdoStatusRecord, errPkts) == 22);
static_assert(offsetof(EvdoStatusRecord, sessionState) == 24);
static_assert(offsetof(EvdoStatusRecord, atState) == 25);
static_assert(offsetof(EvdoStatusRecord, userCount) == 26);
static_assert(offsetof(EvdoStatusRecord, hybridMode) == 27);
static_assert(offsetof(EvdoStatusRecord, macIndex) == 28);
static_assert(offsetof(EvdoStatusRecord, sectorIds) == 29);
static_assert(offsetof(EvdoStatusRecord, pilotEnergy) == 46);
static_assert(offsetof(EvdoStatusRecord, drcCover) == 48);
static_assert(offsetof(EvdoStatusRecord, sinr) == 49);
static_assert(offsetof(EvdoStatusRecord, anAuthStatus) == 50);

/// Every field widened to a word: pilotEnergy by its sign, the others without.
struct EvdoStatusReport {
  uint32_t hdrChanNum;
  uint32_t uatiColorCode;
  uint32_t txUati;
  uint32_t pilotPn;
  uint32_t hdrRssi;
  uint32_t rxPwrRx0Dbm;
  uint32_t rxPwrRx1Dbm;
  uint32_t measPkts;
  uint32_t errPkts;
  uint32_t sessionState;
  uint32_t atState;
  uint32_t reserved;
  uint32_t userCount;
  uint32_t hybridMode;
  uint32_t dropCount;  // always 0, the modem reports none
  uint32_t macIndex;
  uint32_t sectorIds[kSectorIdSize];
  int32_t pilotEnergy;
  uint32_t drcCover;
  uint32_t sinr;
  uint32_t anAuthStatus;
};
static_assert(sizeof(EvdoStatusReport) == 144);
static_assert(KESEXT_WORD_OF(EvdoStatusReport, uatiColorCode) == 1);
static_assert(KESEXT_WORD_OF(EvdoStatusReport, txUati) == 2);
static_assert(KESEXT_WORD_OF(EvdoStatusReport, pilotPn) == 3);
static_assert(KESEXT_WORD_OF(EvdoStatusReport, hdrRssi) == 4);
static_assert(KESEXT_WORD_OF(EvdoStatusReport, rxPwrRx0Dbm) == 5);
static_assert(KESEXT_WORD_OF(EvdoStatusReport, rxPwrRx1Dbm) == 6);
static_assert(KESEXT_WORD_OF(EvdoStatusReport, measPkts) == 7);
static_assert(KESEXT_WORD_OF(EvdoStatusReport, errPkts) == 8);
static_assert(KESEXT_WORD_OF(EvdoStatusReport, sessionState) == 9);
static_assert(KESEXT_WORD_OF(EvdoStatusReport, atState) == 10);
static_assert(KESEXT_WORD_OF(EvdoStatusReport, reserved) == 11);
static_assert(KESEXT_WORD_OF(EvdoStatusReport, userCount) == 12);
static_assert(KESEXT_WORD_OF(EvdoStatusReport, hybridMode) == 13);
static_assert(KESEXT_WORD_OF(EvdoStatusReport, dropCount) == 14);
static_assert(KESEXT_WORD_OF(EvdoStatusReport, macIndex) == 15);
static_assert(KESEXT_WORD_OF(EvdoStatusReport, sectorIds) == 16);
static_assert(KESEXT_WORD_OF(EvdoStatusReport, pilotEnergy) == 32);
static_assert(KESEXT_WORD_OF(EvdoStatusReport, drcCover) == 33);
static_assert(KESEXT_WORD_OF(EvdoStatusReport, sinr) == 34);
static_assert(KESEXT_WORD_OF(EvdoStatusReport, anAuthStatus) == 35);

#undef KESEXT_WORD_OF

}  // namespace kesext
