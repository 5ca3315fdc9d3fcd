// What a carrier request is answered with, before it becomes a record.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "core/ground/hook_message.h"

namespace kesext {

/// Largest payload: what is read of an element, with the words and zeros around it. Bytes.
inline constexpr size_t kCarrierPayloadMax = 1024 + 20;

/// Starts as a success without payload; handlers change it.
struct CarrierAnswer {
  uint32_t status = HOOK_STATUS_SUCCESS;
  int32_t length = 0;        // payload bytes
  bool has_payload = false;  // else the record's payload is zeros
  uint8_t payload[kCarrierPayloadMax] = {};

  /// Answers with a record as the payload.
  template <typename Record>
  void put(const Record& record) {
    static_assert(sizeof(Record) <= kCarrierPayloadMax);
    std::memcpy(payload, &record, sizeof record);
    putLength(sizeof record);
  }
  /// Answers with the first `bytes` of what stands in `payload`.
  void putLength(uint32_t bytes) {
    length = static_cast<int32_t>(bytes);
    has_payload = true;
  }
  /// Answers with `bytes` zeros that no payload is given for.
  void putZeros(uint32_t bytes) { length = static_cast<int32_t>(bytes); }
  /// Answers success or failure, without payload.
  void putResult(bool success) { status = success ? HOOK_STATUS_SUCCESS : HOOK_STATUS_FAILURE; }
};

/// A handler of one carrier request: (request, the argument of its table row, the answer to fill).
using CarrierHandler = void (*)(const HookRequest& request, uint32_t argument, CarrierAnswer& answer);

}  // namespace kesext
