#include "carrier/indications.h"

#include <cstring>

#include "core/ground/hook_ids.h"
#include "core/ground/log.h"
#include "core/ground/parent_pipes.h"
#include "qmi/indication.h"
#include "qmi/vendor_indications.h"

namespace kesext {

namespace {

constexpr uint32_t kTaken = 0;
constexpr uint32_t kNotTaken = 0xFFFFFFFF;

/// Decodes into the record. False, after a log line, when it does not decode.
template <typename Record>
bool decode(qmi_client_type client, uint32_t indication_id, const uint8_t* buffer, uint32_t buffer_length,
            Record& record) {
  const int result = decodeIndication(client, indication_id, buffer, buffer_length, record);
  if (result != 0) LOGE("kes_qmi_sprint_hook_ind_cb: qmi_client_message_decode Failed(%d).", result);
  return result == 0;
}

}  // namespace

uint32_t kes_qmi_sprint_hook_ind_cb(qmi_client_type client, uint32_t indication_id, const uint8_t* buffer,
                                    uint32_t buffer_length, void*) {
  switch (indication_id) {
    case IND_CARRIER_VALUE: {
      ValueIndication indication;
      if (!decode(client, indication_id, buffer, buffer_length, indication)) return kTaken;
      const uint32_t widened = indication.value;
      send_unsol_response(UNSOL_CARRIER_VALUE, &widened, sizeof widened);
      return kTaken;
    }
    case IND_LTE_ERROR: {
      LteErrorIndication indication;
      if (!decode(client, indication_id, buffer, buffer_length, indication)) return kTaken;
      LteErrorRecord record{};
      convert_lte_error_to_ril_format(&indication, &record);
      send_unsol_response(UNSOL_LTE_ERROR, &record, sizeof record);
      return kTaken;
    }
    default:
      LOGD("kes_qmi_sprint_hook_ind_cb: Unknown Indication from Modem.");
      return kNotTaken;
  }
}

void convert_lte_error_to_ril_format(const LteErrorIndication* indication, LteErrorRecord* record) {
  if (indication == nullptr || record == nullptr) {
    LOGE("convert_lte_error_to_ril_format: parameter is null!");
    return;
  }
  record->first_word = indication->first_word;
  record->value = indication->value;
  record->second_word = indication->second_word;
  std::memcpy(record->block, indication->block, sizeof record->block);
}

void send_unsol_response(uint32_t msg_id, const void* data, uint32_t length) {
  if (!sendCdmaUnsol(msg_id, data, length)) LOGE("send_unsol_response: out of memory!");
}

}  // namespace kesext
