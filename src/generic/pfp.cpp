#include "generic/pfp.h"

#include <cstddef>
#include <type_traits>

#include "core/ground/hook_ids.h"
#include "core/ground/log.h"
#include "core/ground/parent_pipes.h"
#include "qmi/indication.h"
#include "qmi/send.h"

namespace kesext {

namespace {

struct PfpRequest {
  uint32_t value;
};
static_assert(sizeof(PfpRequest) == 4);

struct PfpResponse {
  uint16_t result;
  uint8_t unread_2[10];
};
static_assert(sizeof(PfpResponse) == 12);

/// The indication, decoded; it is forwarded whole.
struct mypfp_ind_msg_v01 {
  uint8_t unread_0[2];
  uint16_t rat;
  uint32_t tbl_idx;
  uint8_t unread_8[224];
};
static_assert(sizeof(mypfp_ind_msg_v01) == 232);
static_assert(std::has_unique_object_representations_v<mypfp_ind_msg_v01>);
static_assert(offsetof(mypfp_ind_msg_v01, rat) == 2);
static_assert(offsetof(mypfp_ind_msg_v01, tbl_idx) == 4);

constexpr VendorMessage<PfpRequest, PfpResponse> kPfp{0x000A};

}  // namespace

int handleMyPfpRequest(const HookRequest& request, uint32_t, uint32_t) {
  LOGE("MyPfp: Sending request ");
  PfpResponse response;
  const int32_t sent = sendVendor(kPfp, PfpRequest{0}, response);
  LOGE("MyPfp: returned rc=%d result =%d", sent, response.result);
  sendStatusResponse(&request, sent == 0 ? HOOK_STATUS_SUCCESS : HOOK_STATUS_FAILURE);
  return 0;
}

int myPfpIndHndlr(qmi_client_type client, uint32_t indication_id, const uint8_t* buffer,
                  uint32_t buffer_length, void*) {
  mypfp_ind_msg_v01 indication;
  if (decodeIndication(client, indication_id, buffer, buffer_length, indication) != 0) {
    LOGE("failed to decode pfp idl data");
    return 0;
  }
  if (!sendCdmaUnsol(UNSOL_PFP, &indication, sizeof indication)) return 0;
  LOGE("mypfp_ind_msg_v01: rat = %d , tbl_idx = %d data_size = %d ", indication.rat, indication.tbl_idx,
       static_cast<int>(sizeof indication));
  return 0;
}

}  // namespace kesext
