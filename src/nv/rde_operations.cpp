#include "nv/rde_operations.h"

#include <cstring>

#include "core/ground/hex_text.h"
#include "core/ground/log.h"
#include "nv/rde_messages.h"

namespace kesext {

uint32_t kes_qmi_sprint_rde_write(int32_t rde_index, int32_t record_num, int32_t offset, uint32_t length,
                                  const uint8_t* data) {
  LOGE("NV Write with RDE index %d, record number %d, offset %d.", rde_index, record_num, offset);
  RdeWriteRequest write{.rde_index = static_cast<uint32_t>(rde_index),
                        .record_num = static_cast<uint32_t>(record_num),
                        .offset = static_cast<uint32_t>(offset),
                        .length = length,
                        .data_len = length};
  if (!fitsRdeData(length)) {
    LOGE("Data more than buffer size %d", length);
    return kRdeFailure;
  }
  std::memcpy(write.data, data, length);
  LOGE("kes_qmi_sprint_rde_write: hexdump len %d...", length);
  hexDump(write.data, length);
  RdeWriteResponse response;
  const int32_t sent = sendVendor(kRdeWrite, write, response);
  if (sent != 0 || response.result != 0) {
    LOGE("NV Write fail - %d, result - %d, error - %d", sent, response.result, response.error);
    return kRdeFailure;
  }
  LOGE("NV Write success for element %u", rde_index);
  return kRdeSuccess;
}

uint32_t kes_qmi_sprint_rde_read(int32_t rde_index, int32_t record_num, int32_t offset, uint8_t* buffer,
                                 uint32_t capacity, uint32_t* count) {
  LOGE("NV Read with RDE index (%d), recordNum(%d), offset(%d).", rde_index, record_num, offset);
  const RdeReadRequest read{.rde_index = static_cast<uint32_t>(rde_index),
                            .record_num = static_cast<uint32_t>(record_num),
                            .offset = static_cast<uint32_t>(offset)};
  RdeReadResponse response;
  const int32_t sent = sendVendor(kRdeRead, read, response);
  if (sent != 0 || response.result != 0 || !fitsRdeData(response.length)) {
    LOGE("NV Read fail - %d, result - %d, error - %d", sent, response.result, response.error);
    return kRdeFailure;
  }
  char text[2 * kRdeDataMax + 1] = "";
  toHexString(response.length, response.data, text);
  LOGE("NV Read %u, length %u, data length %u, grde - %s", response.rde_index, response.length,
       response.data_len, text);
  if (buffer == nullptr || response.length > capacity) {
    LOGE("Input buffer is NULL or too small! max_len(%d).", capacity);
    return kRdeSuccess;
  }
  std::memcpy(buffer, response.data, response.length);
  if (count != nullptr) *count = response.length;
  return kRdeSuccess;
}

}  // namespace kesext
