// What a carrier request is answered with, before it becomes a record.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "core/ground/hook_message.h"

namespace kesext {

/// Largest payload: what is read of an element, with the words and zeros around it. Bytes.
inline constexpr size_t kCarrierPayloadMax = 1024 + 20;

/// Starts as a success without payload; a handler adds to its end.
class CarrierResponse {
 public:
  uint32_t status = HOOK_STATUS_SUCCESS;

  /// Sets the status to success or failure.
  void setStatus(bool success) { status = success ? HOOK_STATUS_SUCCESS : HOOK_STATUS_FAILURE; }

  /// Adds a record to the payload.
  template <typename Record>
  void put(const Record& record) {
    static_assert(sizeof(Record) <= kCarrierPayloadMax);
    static_assert(std::has_unique_object_representations_v<Record>, "padding would go to the parent");
    putBytes(reinterpret_cast<const uint8_t*>(&record), sizeof record);
  }
  /// Adds bytes to the payload, as many as there is room for.
  void putBytes(const uint8_t* bytes, size_t count) {
    count = std::min(count, sizeof payload_ - length_);
    std::copy_n(bytes, count, payload_ + length_);
    length_ += count;
    has_payload_ = true;
  }
  /// Adds zeros, as many as there is room for; they alone are no payload to the builder.
  void putZeros(size_t count) { length_ += std::min(count, sizeof payload_ - length_); }

  [[nodiscard]] int32_t length() const { return static_cast<int32_t>(length_); }
  /// The payload of `length()` bytes; null unless put() or putBytes() added to it.
  [[nodiscard]] const uint8_t* payload() const { return has_payload_ ? payload_ : nullptr; }

 private:
  size_t length_ = 0;
  bool has_payload_ = false;
  uint8_t payload_[kCarrierPayloadMax] = {};
};

/// A handler of one carrier request: (request, the argument of its table row, the answer to fill).
using CarrierHandler = void (*)(const HookRequest& request, uint32_t argument, CarrierResponse& answer);

}  // namespace kesext
