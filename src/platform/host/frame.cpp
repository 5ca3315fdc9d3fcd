#include "platform/host/frame.h"

namespace host {
namespace {

void putU32(uint8_t* to, uint32_t value) {
  for (int byte = 0; byte < 4; ++byte)
    to[byte] = static_cast<uint8_t>(value >> (8 * byte));
}

uint32_t getU32(const uint8_t* from) {
  uint32_t value = 0;
  for (int byte = 0; byte < 4; ++byte)
    value |= static_cast<uint32_t>(from[byte]) << (8 * byte);
  return value;
}

}  // namespace

std::array<uint8_t, kFrameHeaderSize> encodeFrameHeader(const FrameHeader& header) {
  std::array<uint8_t, kFrameHeaderSize> bytes{};
  bytes[0] = static_cast<uint8_t>(header.kind);
  bytes[1] = static_cast<uint8_t>(header.service);
  bytes[2] = static_cast<uint8_t>(header.message_id);
  bytes[3] = static_cast<uint8_t>(header.message_id >> 8);
  putU32(&bytes[4], header.transaction);
  putU32(&bytes[8], static_cast<uint32_t>(header.code));
  return bytes;
}

FrameHeader decodeFrameHeader(const uint8_t* bytes) {
  FrameHeader header;
  header.kind = static_cast<FrameKind>(bytes[0]);
  header.service = static_cast<Service>(bytes[1]);
  header.message_id = static_cast<uint16_t>(bytes[2] | bytes[3] << 8);
  header.transaction = getU32(bytes + 4);
  header.code = static_cast<int32_t>(getU32(bytes + 8));
  return header;
}

}  // namespace host
