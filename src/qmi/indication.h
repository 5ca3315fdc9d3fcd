// Decoding of the vendor service's indications.
#pragma once

#include <cstdint>
#include <cstring>
#include <type_traits>

#include "platform/qmi_client.h"

namespace kesext {

/// Clears the record and decodes an indication into it. The framework's result.
template <typename Record>
int32_t decodeIndication(qmi_client_type client, uint32_t indication_id, const uint8_t* buffer,
                         uint32_t buffer_length, Record& record) {
  static_assert(std::is_trivially_copyable_v<Record>);
  std::memset(&record, 0, sizeof record);
  return qmi_client_message_decode(client, QMI_IDL_INDICATION, indication_id, buffer, buffer_length, &record,
                                   sizeof record);
}

}  // namespace kesext
