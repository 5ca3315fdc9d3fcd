// Reading and writing one RDE element, for the handlers that build their own answers.
#pragma once

#include <cstdint>

namespace kesext {

/// Results of the operations below.
inline constexpr uint32_t kRdeSuccess = 0;
inline constexpr uint32_t kRdeFailure = 4;

/// Writes `length` bytes, at most 512, from `data`, which is not null. kRdeFailure when there are more, or
/// the modem was not reached or refused.
uint32_t kes_qmi_sprint_rde_write(int32_t rde_index, int32_t record_num, int32_t offset, uint32_t length,
                                  const uint8_t* data);

/// Reads into `buffer` of `capacity` bytes and stores the number of bytes in `count`, which may be null.
/// kRdeFailure when the modem was not reached or refused. An element that is larger than the capacity, or a
/// null buffer, is a success that copies nothing and leaves `count` as it was.
uint32_t kes_qmi_sprint_rde_read(int32_t rde_index, int32_t record_num, int32_t offset, uint8_t* buffer,
                                 uint32_t capacity, uint32_t* count);

}  // namespace kesext
