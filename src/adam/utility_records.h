// The vendor service's utility indication, and the packet of a modem log package that one of its types holds.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/ground/byte_access.h"

namespace kesext {

inline constexpr uint32_t kUtilityIndicationDataMax = 512;  // bytes

struct utils_ind_msg_v01 {
  uint32_t type;
  uint32_t len;  // valid bytes of `data`; not used for a packet
  uint8_t data[kUtilityIndicationDataMax];
};
static_assert(sizeof(utils_ind_msg_v01) == 520);
static_assert(offsetof(utils_ind_msg_v01, len) == 4);
static_assert(offsetof(utils_ind_msg_v01, data) == 8);

inline constexpr size_t kPacketPayloadMax = 506;  // bytes
inline constexpr uint8_t kFirstSequenceId = 1;
inline constexpr uint8_t kLastPacket = 1;
/// The first bytes of a package tell what it holds.
inline constexpr size_t kPackageHeaderSize = 4;

struct adam_packet {
  uint8_t package_id;
  uint8_t sequence_id;  // from kFirstSequenceId on
  uint8_t last;         // kLastPacket for a package's last packet
  uint8_t unread_3;
  uint8_t size_le[2];
  uint8_t payload[kPacketPayloadMax];

  /// Bytes of payload as the modem has it, which may be more than there is room for.
  [[nodiscard]] uint16_t size() const { return loadLe16(size_le); }
};
static_assert(sizeof(adam_packet) == kUtilityIndicationDataMax);
static_assert(offsetof(adam_packet, sequence_id) == 1);
static_assert(offsetof(adam_packet, last) == 2);
static_assert(offsetof(adam_packet, size_le) == 4);
static_assert(offsetof(adam_packet, payload) == 6);

}  // namespace kesext
