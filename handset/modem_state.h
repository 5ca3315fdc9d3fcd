// What the modem remembers and reports where no rule gives another answer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>

#include "handset/bytes.h"
#include "handset/message_table.h"
#include "handset/rde_store.h"

namespace handset {

/// Bands by the index that the band messages carry.
inline constexpr uint32_t kBandClass10 = 0;
inline constexpr uint32_t kBandClass14 = 1;

/// Entries of a TOT order, of 4 bytes each.
inline constexpr size_t kTotEntriesMax = 15;

/// May be used from any thread.
class ModemState {
 public:
  RdeStore& rde() { return rde_; }

  [[nodiscard]] uint32_t band(uint32_t index) const;
  void setBand(uint32_t index, uint32_t status);

  [[nodiscard]] uint32_t bsrTimer() const;
  void setBsrTimer(uint32_t timer);

  /// The entries, 4 bytes each.
  [[nodiscard]] Bytes totOrder() const;
  /// Throws unless the entries are up to kTotEntriesMax times 4 bytes.
  void setTotOrder(ByteView entries);

  /// The modem's own response to a request of the row's size.
  Bytes answer(const MessageRow& row, ByteView request);

 private:
  void answerVendor(uint16_t id, ByteView request, Bytes& response);

  RdeStore rde_;
  mutable std::mutex mutex_;
  std::map<uint32_t, uint32_t> bands_{{kBandClass10, 1}, {kBandClass14, 0}};
  uint32_t bsr_timer_ = 300;
  Bytes tot_order_;
};

}  // namespace handset
