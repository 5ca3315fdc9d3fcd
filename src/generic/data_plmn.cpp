#include "generic/data_plmn.h"

#include <cstring>

#include "core/ground/hex_text.h"
#include "core/ground/hook_ids.h"
#include "core/ground/log.h"
#include "core/ground/message_buffer.h"
#include "core/ground/parent_pipes.h"
#include "qmi/send.h"

namespace kesext {

namespace {

struct DataPlmnRequest {
  uint32_t zero;
};
static_assert(sizeof(DataPlmnRequest) == 4);

struct DataPlmnResponse {
  uint8_t record[568];
};
static_assert(sizeof(DataPlmnResponse) == 568);

constexpr VendorMessage<DataPlmnRequest, DataPlmnResponse> kDataPlmn{0x0016};

constexpr uint8_t kDataPlmnUnsolMsgType = 0;

}  // namespace

int handleDataPlmnRequest(const HookRequest*, uint32_t, uint32_t) {
  DataPlmnResponse response;
  if (sendVendor(kDataPlmn, DataPlmnRequest{0}, response) == 0) {
    LOGE("Dumping modem response for QMI_DATA_PLMN_REQ_V01...");
    hexDump(response.record, sizeof response.record);
  } else {
    LOGE("Sending QMI_DATA_PLMN_REQ_V01 failed!");
  }
  const MessageBuffer reply(sizeof response);
  if (!reply) {
    LOGE("handleDataPlmnRequest: out of memory!");
    return 0;
  }
  std::memcpy(reply.data(), response.record, sizeof response.record);
  writeToParent(reply.data(), reply.size());
  return 0;
}

int dataPlmnIndHndlr(qmi_client_type, uint32_t, const uint8_t*, uint32_t, void*) {
  const MessageBuffer message = buildGenericUnsol(kDataPlmnUnsolMsgType, UNSOL_DATA_PLMN, 0);
  if (!message) {
    LOGE("dataPlmnIndHndlr: out of memory!");
    return 0;
  }
  writeUnsolToParent(message.data(), message.size());
  return 0;
}

}  // namespace kesext
