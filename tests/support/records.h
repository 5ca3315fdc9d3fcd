// The records that cross the pipes as they are expected, put together byte by byte.
#pragma once

#include <cstdint>

#include "handset/bytes.h"
#include "handset/hook_records.h"

namespace kesext_test {

using handset::be32;
using handset::Bytes;
using handset::ByteView;
using handset::cdmaRequest;
using handset::concat;
using handset::genericRequest;
using handset::le32;

/// A CDMA request whose `msg_len` is not its payload's length.
inline Bytes cdmaRequest(uint32_t id, ByteView payload, int32_t msg_len) {
  return concat(handset::cdmaHeader(id, msg_len, 0), payload);
}
/// A CDMA response record.
inline Bytes cdmaResponse(uint32_t id, uint32_t status, ByteView payload = {}) {
  return concat(handset::cdmaHeader(id, static_cast<int32_t>(payload.size()), status), payload, Bytes(2));
}
/// The reply to a generic request.
inline Bytes genericReply(uint32_t id, ByteView payload) {
  return concat(be32(id), le32(static_cast<uint32_t>(payload.size())), payload);
}
/// An unsolicited message of CDMA form.
inline Bytes cdmaUnsolicited(uint32_t id, ByteView payload) {
  return concat(le32(0), le32(20), cdmaResponse(id, 0, payload));
}
/// An unsolicited message of generic form.
inline Bytes genericUnsolicited(uint8_t type, uint32_t id, ByteView payload) {
  return concat(le32(1), le32(8), le32(id << 8 | type), le32(static_cast<uint32_t>(payload.size())), payload,
                Bytes(12));
}
/// The payload of a generic NV request: four words, then the data of a write.
inline Bytes nvPayload(uint32_t index, uint32_t record, uint32_t offset, uint32_t length,
                       ByteView data = {}) {
  return concat(le32(index), le32(record), le32(offset), le32(length), data);
}

}  // namespace kesext_test
