// The records that cross the pipes, put together byte by byte.
#pragma once

#include <cstdint>

#include "handset/bytes.h"

namespace handset {

/// A CDMA request with its payload; `msg_len` where it is not the payload's length.
Bytes cdmaRequest(uint32_t id, ByteView payload = {});
Bytes cdmaRequest(uint32_t id, ByteView payload, int32_t msg_len);
/// A CDMA response record.
Bytes cdmaResponse(uint32_t id, uint32_t status, ByteView payload = {});
/// A generic request, of message type 0 to 2 in the id's highest byte.
Bytes genericRequest(uint32_t id, ByteView payload = {});
/// The reply to a generic request.
Bytes genericReply(uint32_t id, ByteView payload);
/// The reply to a generic request that nothing serves.
Bytes genericErrorReply(uint32_t id);
/// An unsolicited message of CDMA form.
Bytes cdmaUnsolicited(uint32_t id, ByteView payload);
/// An unsolicited message of generic form.
Bytes genericUnsolicited(uint8_t type, uint32_t id, ByteView payload);
/// The payload of a generic NV request: four words, then the data of a write.
Bytes nvPayload(uint32_t index, uint32_t record, uint32_t offset, uint32_t length, ByteView data = {});

}  // namespace handset
