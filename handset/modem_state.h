// What the modem remembers, and what it answers by that where no rule gives another answer.
#pragma once

#include <cstdint>
#include <map>
#include <utility>

#include "handset/bytes.h"
#include "handset/message_table.h"

namespace handset {

/// Bands by the index that the band messages carry.
inline constexpr uint32_t kBandClass10 = 0;
inline constexpr uint32_t kBandClass14 = 1;

/// Error words of the responses about elements, which go with result 1.
inline constexpr uint32_t kRdeNoElement = 16;
inline constexpr uint32_t kRdeBadLength = 19;

/// As it is at first, of a modem that was told nothing.
struct ModemState {
  /// RDE elements (non-volatile items) by index and record, of up to kesext::kRdeDataMax bytes each. They
  /// grow as needed and never shrink.
  std::map<std::pair<uint32_t, uint32_t>, Bytes> elements;
  std::map<uint32_t, uint32_t> bands{{kBandClass10, 1}, {kBandClass14, 0}};
  uint32_t bsr_timer = 300;
  Bytes tot_order;  // kesext::kTotOrderEntrySize bytes for each entry

  /// The response to a request of the row's size.
  Bytes answer(const MessageRow& row, ByteView request);
};

}  // namespace handset
