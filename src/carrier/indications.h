// The carrier's indications, which are offered here before any other handler. Everything here runs on the
// framework's indication thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "platform/qmi_client.h"

namespace kesext {

/// The value indication, decoded.
struct ValueIndication {
  uint16_t value;
};
static_assert(sizeof(ValueIndication) == 2);

inline constexpr size_t kLteErrorBlockSize = 103;

/// The LTE error indication, decoded.
struct LteErrorIndication {
  uint32_t first_word;
  uint8_t value;
  uint32_t second_word;
  uint8_t block[kLteErrorBlockSize];
};
static_assert(sizeof(LteErrorIndication) == 116);
static_assert(offsetof(LteErrorIndication, value) == 4);
static_assert(offsetof(LteErrorIndication, second_word) == 8);
static_assert(offsetof(LteErrorIndication, block) == 12);

/// The same as the parent gets it.
struct [[gnu::packed]] LteErrorRecord {
  uint32_t first_word;
  uint8_t value;
  uint32_t second_word;
  uint8_t block[kLteErrorBlockSize];
};
static_assert(sizeof(LteErrorRecord) == 112 && std::has_unique_object_representations_v<LteErrorRecord>);
static_assert(offsetof(LteErrorRecord, value) == 4);
static_assert(offsetof(LteErrorRecord, second_word) == 5);
static_assert(offsetof(LteErrorRecord, block) == 9);

/// Copies the fields to their places. A null pointer is logged, and nothing done.
void convert_lte_error_to_ril_format(const LteErrorIndication* indication, LteErrorRecord* record);

/// Sends one unsolicited message of CDMA form with `length` bytes of data; without memory it is logged and
/// dropped.
void send_unsol_response(uint32_t msg_id, const void* data, uint32_t length);

/// 0 when the indication was taken here, served or not decodable; 0xFFFFFFFF when it is not one of the
/// carrier's.
uint32_t kes_qmi_sprint_hook_ind_cb(qmi_client_type client, uint32_t indication_id, const uint8_t* buffer,
                                    uint32_t buffer_length, void* callback_data);

}  // namespace kesext
