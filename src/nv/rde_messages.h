// The vendor messages that read and write the modem's RDE elements (non-volatile items).
#pragma once

#include <cstddef>
#include <cstdint>

#include "qmi/send.h"

namespace kesext {

/// Most data bytes that travel in one message.
inline constexpr uint32_t kRdeDataMax = 512;

struct RdeReadRequest {
  uint32_t rde_index;
  uint32_t record_num;
  uint32_t offset;
  uint32_t length;
  uint32_t data_len;
  uint8_t data[kRdeDataMax];
};
static_assert(sizeof(RdeReadRequest) == 532);
static_assert(offsetof(RdeReadRequest, record_num) == 4);
static_assert(offsetof(RdeReadRequest, offset) == 8);
static_assert(offsetof(RdeReadRequest, length) == 12);
static_assert(offsetof(RdeReadRequest, data) == 20);

struct RdeReadResponse {
  uint32_t result;  // 0: success
  uint32_t error;
  uint32_t rde_index;
  uint32_t record_num;
  uint32_t offset;
  uint32_t length;    // valid bytes of `data`, as the modem has it
  uint32_t data_len;  // length of the array as decoded
  uint8_t data[kRdeDataMax];
};
static_assert(sizeof(RdeReadResponse) == 540);
static_assert(offsetof(RdeReadResponse, error) == 4);
static_assert(offsetof(RdeReadResponse, rde_index) == 8);
static_assert(offsetof(RdeReadResponse, record_num) == 12);
static_assert(offsetof(RdeReadResponse, offset) == 16);
static_assert(offsetof(RdeReadResponse, length) == 20);
static_assert(offsetof(RdeReadResponse, data_len) == 24);
static_assert(offsetof(RdeReadResponse, data) == 28);

struct RdeWriteRequest {
  uint32_t rde_index;
  uint32_t record_num;
  uint32_t offset;
  uint32_t length;    // bytes of `data` to write
  uint32_t data_len;  // the same
  uint8_t data[kRdeDataMax];
};
static_assert(sizeof(RdeWriteRequest) == 532);
static_assert(offsetof(RdeWriteRequest, record_num) == 4);
static_assert(offsetof(RdeWriteRequest, offset) == 8);
static_assert(offsetof(RdeWriteRequest, length) == 12);
static_assert(offsetof(RdeWriteRequest, data_len) == 16);
static_assert(offsetof(RdeWriteRequest, data) == 20);

using RdeWriteResponse = ResultAndError;  // result 0: success

inline constexpr VendorMessage<RdeReadRequest, RdeReadResponse> kRdeRead{0x0008};
inline constexpr VendorMessage<RdeWriteRequest, RdeWriteResponse> kRdeWrite{0x0009};

/// Whether so many bytes fit a message. A negative length, read as unsigned, never does.
constexpr bool fitsRdeData(uint32_t length) {
  return length <= kRdeDataMax;
}

}  // namespace kesext
