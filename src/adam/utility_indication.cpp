#include "adam/utility_indication.h"

#include <algorithm>
#include <cstring>

#include "adam/log_packets.h"
#include "adam/utility_records.h"
#include "core/ground/hook_ids.h"
#include "core/ground/log.h"
#include "core/ground/message_buffer.h"
#include "core/ground/parent_pipes.h"

namespace kesext {

namespace {

constexpr uint32_t kUtilityLogPacket = 1;
constexpr uint8_t kForwardedUnsolMsgType = 0;

/// How a type is forwarded.
struct ForwardedType {
  uint32_t type;
  uint32_t unsol_msg_id;
  uint32_t prefix_length;  // how much of kPrefix goes before the data, in bytes
};

constexpr uint8_t kPrefix[] = {0x02};
constexpr ForwardedType kForwardedTypes[] = {
    {0, UNSOL_UTILITY_0, 1},
    {2, UNSOL_UTILITY_2, 0},
    {3, UNSOL_UTILITY_3, 0},
};

void forward(const ForwardedType& row, const utils_ind_msg_v01& indication) {
  const uint32_t length = std::min(indication.len, kUtilityIndicationDataMax);
  const MessageBuffer message =
      buildGenericUnsol(kForwardedUnsolMsgType, row.unsol_msg_id, row.prefix_length + length);
  if (!message) {
    LOGE("utilsIndHndlr: out of memory!");
    return;
  }
  uint8_t* payload = message.data() + kUnsolGenericPayloadOffset;
  std::memcpy(payload, kPrefix, row.prefix_length);
  std::memcpy(payload + row.prefix_length, indication.data, length);
  writeUnsolToParent(message.data(), message.size());
  LOGE("utils_ind_msg_v01: respsize=%d, msgLen=%d", message.size(), length);
}

}  // namespace

int utilsIndHndlr(qmi_client_type client, uint32_t indication_id, const uint8_t* buffer,
                  uint32_t buffer_length, void*) {
  utils_ind_msg_v01 indication{};
  if (qmi_client_message_decode(client, QMI_IDL_INDICATION, indication_id, buffer, buffer_length, &indication,
                                sizeof indication) != 0) {
    LOGE("uploadbplogs:failed to decode idl data");
    return 0;
  }
  if (indication.type == kUtilityLogPacket) {
    adamIndHndlr(indication);
    return 0;
  }
  for (const ForwardedType& row : kForwardedTypes) {
    if (row.type != indication.type) continue;
    forward(row, indication);
    return 0;
  }
  LOGE("utilsIndHndlr: unknown indication type [%d]", indication.type);
  return 0;
}

}  // namespace kesext
