#include "generic/antenna_tuning.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "core/ground/byte_access.h"
#include "core/ground/hex_text.h"
#include "core/ground/hook_ids.h"
#include "core/ground/log.h"
#include "core/ground/parent_pipes.h"
#include "qmi/indication.h"
#include "qmi/send.h"

namespace kesext {

namespace {

/// Bytes of a command; the record has room for four more.
constexpr uint32_t kTunerCommandMax = 24;
constexpr uint32_t kTunerDataMax = 28;
constexpr uint32_t kTunerIndicationDataMax = 128;

struct TunerRecord {
  uint32_t length;  // valid bytes of `data`
  uint8_t data[kTunerDataMax];
};
static_assert(sizeof(TunerRecord) == 32);
static_assert(offsetof(TunerRecord, data) == 4);

struct TunerIndication {
  uint32_t length;  // valid bytes of `data`
  uint8_t data[kTunerIndicationDataMax];
};
static_assert(sizeof(TunerIndication) == 132);
static_assert(offsetof(TunerIndication, data) == 4);

constexpr VendorMessage<TunerRecord, TunerRecord> kTuner{0x0110};

/// The first two data bytes of the events that are forwarded, little-endian.
constexpr uint16_t kForwardedKind = 0x0181;

}  // namespace

int kesext_hook_set_antenna_tuning(const HookRequest& request, uint32_t, uint32_t) {
  const uint32_t msg_len = request.genericMsgLen();
  LOGE("receive request len  %d", msg_len);
  TunerRecord command{};
  command.length = std::min(msg_len, kTunerCommandMax);
  std::memcpy(command.data, request.genericPayload(), command.length);
  TunerRecord response;
  const int32_t sent = sendVendor(kTuner, command, response);
  if (sent != 0) {
    LOGE("Sending QMI_TUNER_REQ_V01 failed! with error %d", sent);
    LOGE("kesext_hook_set_antenna_tuning sending response, msgLen 0x%x.", 1);
    sendGenericStatus(request, HOOK_STATUS_FAILURE);
    return sent;
  }
  LOGE("Dumping modem response for QMI_TUNER_REQ_V01...");
  hexDump(reinterpret_cast<const uint8_t*>(&response), sizeof response);
  const uint32_t length = std::min(response.length, kTunerDataMax);
  LOGE("kesext_hook_set_antenna_tuning sending response, msgLen 0x%x.", length);
  sendGenericReply(request, response.data, length);
  return sent;
}

int tunerIndHndlr(qmi_client_type client, uint32_t indication_id, const uint8_t* buffer,
                  uint32_t buffer_length, void*) {
  TunerIndication event;
  const int result = decodeIndication(client, indication_id, buffer, buffer_length, event);
  if (result != 0) {
    LOGE("tunerIndHndlr: failed to decode 0x%02x ind data for %d", indication_id, result);
    for (uint32_t i = 0; i < buffer_length; ++i)
      LOGE("tunerIndHndlr: dumping ind data[%d] 0x%02x", i, buffer[i]);
    return 0;
  }
  LOGE("tunerIndHndlr: tuner indication is: %d %d", event.data[0], event.data[1]);
  if (loadLe16(event.data) != kForwardedKind) return 0;
  const uint32_t length = std::min(event.length, kTunerIndicationDataMax);
  if (!sendGenericUnsol(UNSOL_TUNER_EVENT, event.data, length)) LOGE("tunerIndHndlr: out of memory!");
  return 0;
}

}  // namespace kesext
