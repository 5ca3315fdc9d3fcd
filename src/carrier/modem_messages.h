// The vendor messages of the carrier's requests. All integers are little-endian; what is not named is not
// read, or sent as zero.
#pragma once

#include <cstddef>
#include <cstdint>

#include "qmi/send.h"

namespace kesext {

/// A vendor message whose response starts with a result, and what that is on success. The service has two
/// conventions, one per message.
template <typename Request, typename Response>
struct CarrierMessage : VendorMessage<Request, Response> {
  uint32_t success;
};

struct ResultOnly {
  uint32_t result;
};
static_assert(sizeof(ResultOnly) == 4);

struct FactoryResetRequest {
  uint8_t reset_flag;
};
struct FactoryResetResponse {
  uint8_t result;
};
static_assert(sizeof(FactoryResetRequest) == 1 && sizeof(FactoryResetResponse) == 1);

/// Most bytes of a roaming list (PRL) that go in one segment.
inline constexpr uint32_t kRoamingListSegmentMax = 16384;

struct RoamingListRequest {
  uint32_t data_length;
  uint8_t data[kRoamingListSegmentMax];
};
static_assert(sizeof(RoamingListRequest) == 16388);
static_assert(offsetof(RoamingListRequest, data) == 4);

struct ReadBandRequest {
  uint32_t band_index;
};
static_assert(sizeof(ReadBandRequest) == 4);

struct ReadBandResponse {
  uint32_t result;
  uint32_t band_status;
};
static_assert(sizeof(ReadBandResponse) == 8 && offsetof(ReadBandResponse, band_status) == 4);

struct WriteBandRequest {
  uint32_t band_index;
  uint32_t band_status;
};
static_assert(sizeof(WriteBandRequest) == 8 && offsetof(WriteBandRequest, band_status) == 4);

struct SwitchProfileRequest {
  uint32_t profile;
};
static_assert(sizeof(SwitchProfileRequest) == 4);

/// Entries of a TOT order, of 4 bytes each.
inline constexpr uint16_t kTotOrderEntriesMax = 15;
inline constexpr size_t kTotOrderEntrySize = 4;

struct TotOrderReadResponse {
  uint8_t unread_0[10];
  uint16_t count;
  uint8_t unread_12[8];
  uint8_t entries[kTotOrderEntriesMax * kTotOrderEntrySize];
};
static_assert(sizeof(TotOrderReadResponse) == 80);
static_assert(offsetof(TotOrderReadResponse, count) == 10);
static_assert(offsetof(TotOrderReadResponse, entries) == 20);

struct TotOrderUpdateRequest {
  uint16_t count;
  uint8_t zero[6];
  uint8_t entries[kTotOrderEntriesMax * kTotOrderEntrySize];
};
static_assert(sizeof(TotOrderUpdateRequest) == 68);
static_assert(offsetof(TotOrderUpdateRequest, entries) == 8);

/// APNs that both lists hold.
inline constexpr uint8_t kEhrpdApnsMax = 8;
inline constexpr size_t kEhrpdApnNameSize = 103;
inline constexpr size_t kEhrpdApnBlockSize = 16;

/// What is read of an entry of the modem's APN list; the next one starts kEhrpdApnStride bytes behind its
/// start.
struct EhrpdApnEntry {
  uint8_t apn[kEhrpdApnNameSize];
  uint8_t unread_103[5];
  uint32_t first_word;
  uint32_t second_word;
  uint8_t unread_116[8];
  uint8_t block[kEhrpdApnBlockSize];
};
static_assert(sizeof(EhrpdApnEntry) == 140);
static_assert(offsetof(EhrpdApnEntry, first_word) == 108);
static_assert(offsetof(EhrpdApnEntry, second_word) == 112);
static_assert(offsetof(EhrpdApnEntry, block) == 124);

inline constexpr size_t kEhrpdApnStride = 144;

struct EhrpdApnResponse {
  uint8_t unread_0[8];
  uint8_t count;
  uint8_t list_valid;
  uint8_t unread_10[10];
  uint8_t entries[1148];  // the last entry lacks the four bytes behind its block
};
static_assert(sizeof(EhrpdApnResponse) == 1168);
static_assert(offsetof(EhrpdApnResponse, count) == 8);
static_assert(offsetof(EhrpdApnResponse, list_valid) == 9);
static_assert(offsetof(EhrpdApnResponse, entries) == 20);
static_assert(sizeof(EhrpdApnResponse::entries) ==
              (kEhrpdApnsMax - 1) * kEhrpdApnStride + sizeof(EhrpdApnEntry));

struct LteServiceStateResponse {
  uint32_t result;
  uint32_t error;
  uint8_t state;
};
static_assert(offsetof(LteServiceStateResponse, error) == 4);
static_assert(sizeof(LteServiceStateResponse) == 12 && offsetof(LteServiceStateResponse, state) == 8);

struct BsrTimerResponse {
  uint32_t result;
  uint32_t error;
  uint32_t timer;
};
static_assert(offsetof(BsrTimerResponse, error) == 4);
static_assert(sizeof(BsrTimerResponse) == 12 && offsetof(BsrTimerResponse, timer) == 8);

struct BsrTimerRequest {
  uint32_t timer;
};
static_assert(sizeof(BsrTimerRequest) == 4);

struct LteChannelResponse {
  uint32_t result;
  uint32_t error;
  uint8_t first_channel_valid;
  uint16_t first_channel;
  uint8_t second_channel_valid;
  uint16_t second_channel;
  uint8_t first_value_valid;
  uint8_t first_value;
  uint8_t second_value_valid;
  uint8_t second_value;
};
static_assert(sizeof(LteChannelResponse) == 20 && offsetof(LteChannelResponse, error) == 4);
static_assert(offsetof(LteChannelResponse, first_channel_valid) == 8);
static_assert(offsetof(LteChannelResponse, first_channel) == 10);
static_assert(offsetof(LteChannelResponse, second_channel_valid) == 12);
static_assert(offsetof(LteChannelResponse, second_channel) == 14);
static_assert(offsetof(LteChannelResponse, first_value_valid) == 16);
static_assert(offsetof(LteChannelResponse, first_value) == 17);
static_assert(offsetof(LteChannelResponse, second_value_valid) == 18);
static_assert(offsetof(LteChannelResponse, second_value) == 19);

// The messages, with the result that means success where it is looked at.
inline constexpr CarrierMessage<FactoryResetRequest, FactoryResetResponse> kFactoryReset{{0x0011}, 1};
inline constexpr CarrierMessage<RoamingListRequest, ResultOnly> kSetRoamingList{{0x0100}, 0};
inline constexpr CarrierMessage<ReadBandRequest, ReadBandResponse> kReadBand{{0x0101}, 0};
inline constexpr CarrierMessage<WriteBandRequest, ResultOnly> kWriteBand{{0x0102}, 0};
inline constexpr CarrierMessage<SwitchProfileRequest, ResultOnly> kSwitchProfile{{0x0103}, 0};
inline constexpr VendorMessage<NoRequest, TotOrderReadResponse> kReadTotOrder{0x0104};
inline constexpr CarrierMessage<TotOrderUpdateRequest, ResultAndError> kUpdateTotOrder{{0x0105}, 1};
inline constexpr VendorMessage<NoRequest, EhrpdApnResponse> kReadEhrpdApns{0x0106};
inline constexpr CarrierMessage<NoRequest, LteServiceStateResponse> kReadLteServiceState{{0x0107}, 1};
inline constexpr CarrierMessage<NoRequest, BsrTimerResponse> kReadBsrTimer{{0x0108}, 1};
inline constexpr CarrierMessage<BsrTimerRequest, ResultAndError> kSetBsrTimer{{0x0109}, 1};
inline constexpr CarrierMessage<NoRequest, LteChannelResponse> kReadLteChannels{{0x010A}, 1};

}  // namespace kesext
