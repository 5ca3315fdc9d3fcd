#include "generic/utility_messages.h"

#include <algorithm>

namespace kesext {

int32_t sendUtility(const utils_req_msg_v01& request, utils_resp_msg_v01& response) {
  const int32_t sent = sendVendor(kUtility, request, response);
  response.len = std::min(response.len, kUtilityResponseDataMax);
  return sent;
}

}  // namespace kesext
