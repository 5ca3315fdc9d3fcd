// The modem's non-volatile items, called RDE elements: up to 512 bytes each, found by index and record.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <utility>

#include "handset/bytes.h"

namespace handset {

/// What one read or write carries at most, and the most that an element holds, in bytes.
inline constexpr size_t kRdeDataMax = 512;

/// Error words of the responses, which go with result 1.
inline constexpr uint32_t kRdeNoElement = 16;
inline constexpr uint32_t kRdeBadLength = 19;

/// May be used from any thread.
class RdeStore {
 public:
  /// Creates or replaces an element. Throws when the data are longer than kRdeDataMax.
  void set(uint32_t index, ByteView data, uint32_t record = 0);
  /// The whole element, or nothing when it does not exist.
  [[nodiscard]] std::optional<Bytes> get(uint32_t index, uint32_t record = 0) const;
  void erase(uint32_t index, uint32_t record = 0);
  void clear();

  /// The 540-byte response to a 532-byte read: the bytes from the offset on, at most `length` of them unless
  /// that is 0. Result 1 and kRdeNoElement when the element does not exist.
  [[nodiscard]] Bytes read(ByteView request) const;
  /// The 8-byte response to a 532-byte write. An element grows as needed and never shrinks. Result 1 and
  /// kRdeBadLength when the data do not fit or the request's two lengths differ.
  Bytes write(ByteView request);

 private:
  mutable std::mutex mutex_;
  std::map<std::pair<uint32_t, uint32_t>, Bytes> elements_;
};

}  // namespace handset
