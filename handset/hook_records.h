// The requests that cross the request pipe, put together byte by byte.
#pragma once

#include <cstdint>

#include "handset/bytes.h"

namespace handset {

/// The first three words of a CDMA record, and no code.
inline Bytes cdmaHeader(uint32_t id, int32_t msg_len, uint32_t status) {
  return concat(le32(id), le32(static_cast<uint32_t>(msg_len)), le32(status), Bytes(6));
}

/// A CDMA request with its payload.
inline Bytes cdmaRequest(uint32_t id, ByteView payload = {}) {
  return concat(cdmaHeader(id, static_cast<int32_t>(payload.size()), 0), payload);
}

/// A generic request, of message type 0 to 2 in the id's highest byte.
inline Bytes genericRequest(uint32_t id, ByteView payload = {}) {
  return concat(be32(id), be32(static_cast<uint32_t>(payload.size())), payload);
}

}  // namespace handset
