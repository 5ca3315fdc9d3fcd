// The vendor service's utility message: one id for several small services, told apart by a type.
#pragma once

#include <cstddef>
#include <cstdint>

#include "qmi/send.h"

namespace kesext {

inline constexpr size_t UTILS_REQ_DATA_SIZE_V01 = 256;
inline constexpr uint32_t kUtilityResponseDataMax = 512;

/// Types of utility requests that this process makes.
enum UtilityType : uint32_t {
  kUtilitySilentReboot = 3,
  kUtilitySimPinNotice = 4,
  kUtilitySysInfoFilter = 5,
  kUtilitySignalCoverage = 6,
};

struct utils_req_msg_v01 {
  uint32_t type;
  uint32_t len;  // valid bytes of `req_data`
  uint8_t req_data[UTILS_REQ_DATA_SIZE_V01];
};
static_assert(sizeof(utils_req_msg_v01) == 264);
static_assert(offsetof(utils_req_msg_v01, len) == 4);
static_assert(offsetof(utils_req_msg_v01, req_data) == 8);

struct utils_resp_msg_v01 {
  uint32_t unread_0;
  uint32_t len;  // valid bytes of `data`
  uint8_t data[kUtilityResponseDataMax];
};
static_assert(sizeof(utils_resp_msg_v01) == 520);
static_assert(offsetof(utils_resp_msg_v01, len) == 4);
static_assert(offsetof(utils_resp_msg_v01, data) == 8);

inline constexpr VendorMessage<utils_req_msg_v01, utils_resp_msg_v01> kUtility{0x000F};

/// Clears the response, sends, and bounds the response's length to its data. The framework's result.
int32_t sendUtility(const utils_req_msg_v01& request, utils_resp_msg_v01& response);

}  // namespace kesext
