#include "generic/data_plmn.h"

#include "core/ground/hex_text.h"
#include "core/ground/hook_ids.h"
#include "core/ground/log.h"
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

}  // namespace

int handleDataPlmnRequest(const HookRequest&, uint32_t, uint32_t) {
  DataPlmnResponse response;
  if (sendVendor(kDataPlmn, DataPlmnRequest{0}, response) == 0) {
    LOGE("Dumping modem response for QMI_DATA_PLMN_REQ_V01...");
    hexDump(response.record, sizeof response.record);
  } else {
    LOGE("Sending QMI_DATA_PLMN_REQ_V01 failed!");
  }
  writeToParent(response.record, sizeof response.record);
  return 0;
}

int dataPlmnIndHndlr(qmi_client_type, uint32_t, const uint8_t*, uint32_t, void*) {
  if (!sendGenericUnsol(UNSOL_DATA_PLMN, nullptr, 0)) LOGE("dataPlmnIndHndlr: out of memory!");
  return 0;
}

}  // namespace kesext
