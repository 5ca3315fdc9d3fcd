#include "adam/utility_indication.h"

#include <algorithm>
#include <cstring>

#include "adam/log_packets.h"
#include "adam/utility_records.h"
#include "core/ground/hook_ids.h"
#include "core/ground/log.h"
#include "core/ground/parent_pipes.h"
#include "core/ground/table.h"
#include "qmi/indication.h"

namespace kesext {

namespace {

constexpr uint32_t kUtilityLogPacket = 1;

/// How a type is forwarded.
struct ForwardedType {
  uint32_t type;
  GenericUnsolId unsol;
  uint32_t prefix_length;  // how much of kPrefix goes before the data, in bytes
};

constexpr uint8_t kPrefix[] = {0x02};
constexpr ForwardedType kForwardedTypes[] = {
    {0, UNSOL_UTILITY_0, 1},
    {2, UNSOL_UTILITY_2, 0},
    {3, UNSOL_UTILITY_3, 0},
};
static_assert(keysAreUnique(kForwardedTypes, &ForwardedType::type));

void forward(const ForwardedType& row, const utils_ind_msg_v01& indication) {
  const uint32_t length = std::min(indication.len, kUtilityIndicationDataMax);
  uint8_t payload[sizeof kPrefix + kUtilityIndicationDataMax];
  std::memcpy(payload, kPrefix, row.prefix_length);
  std::memcpy(payload + row.prefix_length, indication.data, length);
  const uint32_t payload_length = row.prefix_length + length;
  if (sendGenericUnsol(row.unsol, payload, payload_length))
    LOGE("utils_ind_msg_v01: respsize=%d, msgLen=%d", kUnsolOverhead + payload_length, length);
  else
    LOGE("utilsIndHndlr: out of memory!");
}

}  // namespace

int utilsIndHndlr(qmi_client_type client, uint32_t indication_id, const uint8_t* buffer,
                  uint32_t buffer_length, void*) {
  utils_ind_msg_v01 indication;
  if (decodeIndication(client, indication_id, buffer, buffer_length, indication) != 0) {
    LOGE("uploadbplogs:failed to decode idl data");
    return 0;
  }
  if (indication.type == kUtilityLogPacket) {
    adamIndHndlr(indication);
    return 0;
  }
  if (const ForwardedType* row = findRow(kForwardedTypes, &ForwardedType::type, indication.type))
    forward(*row, indication);
  else
    LOGE("utilsIndHndlr: unknown indication type [%d]", indication.type);
  return 0;
}

}  // namespace kesext
