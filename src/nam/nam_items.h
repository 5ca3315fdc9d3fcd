// The NAM items: the RDE elements that hold the handset's CDMA subscription, and the accessors that every NAM
// handler goes through.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>

namespace kesext {

/// The only NAM that is programmed.
inline constexpr uint8_t kNam = 0;

/// Room for the record of any item, as the modem returns it.
struct NamItemBuffer {
  uint8_t bytes[1024];
};
static_assert(sizeof(NamItemBuffer) == 1024);

/// The subscription's values as the items hold them.
struct NamValues {
  uint32_t min1;
  uint32_t min2;
  uint32_t imsi_t_s1;
  uint32_t imsi_t_s2;
  uint32_t home_sid;
  uint32_t home_nid;
  uint32_t scm;
  uint32_t imsi_11_12;
  uint32_t mcc;
  uint32_t p_channel_a;
  uint32_t p_channel_b;
  uint32_t s_channel_a;
  uint32_t s_channel_b;
  uint32_t service_option;
  uint32_t mcc_t;
  uint32_t imsi_t_11_12;
  uint32_t access_overload_class;
};

/// Where a value stands in an item's record: little-endian, at any alignment.
struct NamField {
  uint8_t offset;
  uint8_t width;  // bytes, 0 for no field
  uint32_t NamValues::*value;
};

struct NamItem {
  int32_t rde_index;
  uint32_t length;  // bytes of a write
  bool read_first;  // before a write, so that the bytes it does not set go back as they were
  bool nam_byte;    // byte 0 holds the NAM
  NamField fields[2];
};

inline constexpr int32_t kMdnItem = 8;
inline constexpr int32_t kSidNidItem = 15;
inline constexpr int32_t kProtocolRevisionItem = 28;

inline constexpr size_t kMdnDigitsMax = 15;

struct MdnRecord {
  uint8_t nam;
  uint8_t digit_count;
  uint8_t digits[kMdnDigitsMax];  // 1 to 9, 10 for '0'; 0 where there is none
};
static_assert(sizeof(MdnRecord) == 17);

/// The SID/NID record: NAM, then pairs of u16.
inline constexpr uint32_t kSidNidItemLength = 81;
inline constexpr size_t kSidNidPairs = 20;

/// The items of NAM programming, one for each step, in the order in which they are written and read. The
/// first, the MDN, is digits rather than values.
// clang-format off
inline constexpr NamItem kNamItems[] = {
    // index, length, read first, NAM byte, fields
    { 8, 17, false, true,  {}},                                                                  // MDN (NV_DIR_NUMBER_PCS_I)
    {25,  9, true,  true,  {{5, 4, &NamValues::min1}}},                                          // MIN1
    {26,  5, true,  true,  {{3, 2, &NamValues::min2}}},                                          // MIN2
    {21,  9, true,  true,  {{5, 4, &NamValues::imsi_t_s1}}},                                     // IMSI_T_S1
    {22,  5, true,  true,  {{3, 2, &NamValues::imsi_t_s2}}},                                     // IMSI_T_S2
    {15, 81, true,  true,  {{1, 2, &NamValues::home_sid}, {3, 2, &NamValues::home_nid}}},        // SID NID
    {36,  1, false, false, {{0, 1, &NamValues::scm}}},                                           // SCM
    {16,  2, false, true,  {{1, 1, &NamValues::imsi_11_12}}},                                    // IMSI_11_12
    {17,  3, false, true,  {{1, 2, &NamValues::mcc}}},                                           // IMSI_MCC
    {29,  5, false, true,  {{1, 2, &NamValues::p_channel_a}, {3, 2, &NamValues::p_channel_b}}},  // P_CHANNEL_A / _B
    {31,  5, false, true,  {{1, 2, &NamValues::s_channel_a}, {3, 2, &NamValues::s_channel_b}}},  // S_CHANNEL_A / _B
    {30,  8, true,  false, {{4, 2, &NamValues::service_option}}},                                // VOCODER
    {20,  3, false, true,  {{1, 2, &NamValues::mcc_t}}},                                         // IMSI_MCC_T
    {18,  2, false, true,  {{1, 1, &NamValues::imsi_t_11_12}}},                                  // IMSI_T_11_12
    { 2,  3, true,  true,  {{2, 1, &NamValues::access_overload_class}}},                         // OVERLOAD CLASS
};
// clang-format on
static_assert(kNamItems[0].rde_index == kMdnItem && kNamItems[0].length == sizeof(MdnRecord));
static_assert(kNamItems[5].rde_index == kSidNidItem && kNamItems[5].length == kSidNidItemLength);
inline constexpr size_t kNamItemSteps = std::size(kNamItems);
static_assert(kNamItemSteps == 15);

/// The status of each step: the items of kNamItems, of which the MDN is the first, then unused ones, and the
/// change of the code as the last.
inline constexpr size_t kNamSteps = 20;
inline constexpr size_t kNamMdnStep = 0;
inline constexpr size_t kNamFirstValueStep = 1;
inline constexpr size_t kNamSpcStep = 19;

struct NamStepResults {
  uint32_t status[kNamSteps];

  /// The first failed step, or kNamSteps when all succeeded.
  [[nodiscard]] size_t firstFailure() const {
    for (size_t step = 0; step < kNamSteps; ++step)
      if (status[step] != 0) return step;
    return kNamSteps;
  }
};

/// Clears the buffer and reads an item into it. 0, or the status of the failed read.
uint32_t kesext_hook_sprint_get_nam_item(int32_t rde_index, NamItemBuffer* buffer);

/// Writes the first `length` bytes of the buffer to an item. 0, or the status of the failed write.
uint32_t kesext_hook_sprint_set_nam_item(int32_t rde_index, uint32_t length, const NamItemBuffer& buffer);

/// Puts the item's NAM byte and values into the buffer, and leaves the other bytes as they are.
void putNamValues(const NamItem& item, const NamValues& values, NamItemBuffer* buffer);

/// Takes the item's values out of the buffer.
void takeNamValues(const NamItem& item, const NamItemBuffer& buffer, NamValues* values);

}  // namespace kesext
