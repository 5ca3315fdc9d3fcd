#include "handset/hook_records.h"

namespace handset {

namespace {

Bytes withHeader(uint32_t id, int32_t msg_len, uint32_t status, ByteView payload) {
  return concat(le32(id), le32(static_cast<uint32_t>(msg_len)), le32(status), Bytes(6), payload);
}

}  // namespace

Bytes cdmaRequest(uint32_t id, ByteView payload) {
  return cdmaRequest(id, payload, static_cast<int32_t>(payload.size()));
}

Bytes cdmaRequest(uint32_t id, ByteView payload, int32_t msg_len) {
  return withHeader(id, msg_len, 0, payload);
}

Bytes cdmaResponse(uint32_t id, uint32_t status, ByteView payload) {
  return concat(withHeader(id, static_cast<int32_t>(payload.size()), status, payload), Bytes(2));
}

Bytes genericRequest(uint32_t id, ByteView payload) {
  return concat(be32(id), be32(static_cast<uint32_t>(payload.size())), payload);
}

Bytes genericReply(uint32_t id, ByteView payload) {
  return concat(be32(id), le32(static_cast<uint32_t>(payload.size())), payload);
}

Bytes genericErrorReply(uint32_t id) {
  return concat(be32(id), le32(0xFFFFFFFF));
}

Bytes cdmaUnsolicited(uint32_t id, ByteView payload) {
  return concat(le32(0), le32(20), cdmaResponse(id, 0, payload));
}

Bytes genericUnsolicited(uint8_t type, uint32_t id, ByteView payload) {
  return concat(le32(1), le32(8), le32(id << 8 | type), le32(static_cast<uint32_t>(payload.size())), payload,
                Bytes(12));
}

Bytes nvPayload(uint32_t index, uint32_t record, uint32_t offset, uint32_t length, ByteView data) {
  return concat(le32(index), le32(record), le32(offset), le32(length), data);
}

}  // namespace handset
