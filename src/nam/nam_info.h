// The record that NAM programming is written and read with.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kesext {

struct NamInfo {
  uint8_t mdn[16];  // ASCII digits and a terminator; a write uses the first 15 at most
  uint8_t min[16];  // 10 ASCII digits, area code first, and a terminator
  uint32_t homeSid;
  uint32_t homeNid;
  uint32_t scm;
  uint8_t imsi11_12[4];  // 2 ASCII digits and a terminator
  uint8_t mcc[4];        // 3 ASCII digits and a terminator
  uint32_t pChannelA;
  uint32_t pChannelB;
  uint32_t sChannelA;
  uint32_t sChannelB;
  int32_t vocoder;    // selection, -1 for one that is not known
  uint8_t mccT[4];    // as mcc; filled by a read, ignored by a write
  uint8_t imsiT[16];  // 15 ASCII digits (MCC, IMSI_11_12, MSIN) and a terminator
  uint32_t accessOverloadClass;
  uint8_t newSpc[6];  // the code to change to, 6 ASCII digits; zero in a read
  uint8_t reserved[2];
};
static_assert(sizeof(NamInfo) == 104);
static_assert(offsetof(NamInfo, min) == 16);
static_assert(offsetof(NamInfo, homeSid) == 32);
static_assert(offsetof(NamInfo, homeNid) == 36);
static_assert(offsetof(NamInfo, scm) == 40);
static_assert(offsetof(NamInfo, imsi11_12) == 44);
static_assert(offsetof(NamInfo, mcc) == 48);
static_assert(offsetof(NamInfo, pChannelA) == 52);
static_assert(offsetof(NamInfo, pChannelB) == 56);
static_assert(offsetof(NamInfo, sChannelA) == 60);
static_assert(offsetof(NamInfo, sChannelB) == 64);
static_assert(offsetof(NamInfo, vocoder) == 68);
static_assert(offsetof(NamInfo, mccT) == 72);
static_assert(offsetof(NamInfo, imsiT) == 76);
static_assert(offsetof(NamInfo, accessOverloadClass) == 92);
static_assert(offsetof(NamInfo, newSpc) == 96);
static_assert(offsetof(NamInfo, reserved) == 102);

}  // namespace kesext
