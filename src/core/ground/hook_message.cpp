#include "core/ground/hook_message.h"

#include <bit>

#include "core/ground/log.h"

namespace kesext {

static_assert(std::endian::native == std::endian::little,
              "records are copied to and from the pipes as they are");

namespace {

/// Bytes 1 to 3 of every CDMA id, read big-endian.
constexpr uint32_t kCdmaIdPattern = 0x000002;
constexpr uint8_t kMsgTypeMax = 2;

}  // namespace

uint32_t getOemHook(const uint8_t* buffer, int32_t length, uint32_t* family) {
  if (buffer == nullptr || length < static_cast<int32_t>(kGenericHookHeaderSize)) {
    LOGE("getOemHook: NULL DATA or check size");
    return kUnusableMsgId;
  }
  if (loadBe24(buffer + 1) == kCdmaIdPattern) {
    *family = HOOK_FAMILY_CDMA;
    return loadLe32(buffer);
  }
  if (buffer[0] > kMsgTypeMax) {
    LOGE("getOemHook: UNABLE TO IDENTIFY OEM_HOOK REQUEST!");
    return kUnusableMsgId;
  }
  GenericHookHeader header;
  ParOemGen(buffer, length, &header);
  *family = HOOK_FAMILY_GENERIC;
  return header.msgId;
}

int ParOemGen(const uint8_t* buffer, int32_t length, GenericHookHeader* header) {
  if (header == nullptr) {
    LOGE("Oem gen header null");
    return 0;
  }
  if (buffer == nullptr || length < static_cast<int32_t>(kGenericHookHeaderSize)) {
    LOGE("ParOemGen INVALID DATA LEN OR NULL POINTER");
    return 0;
  }
  header->msgType = buffer[0];
  header->msgId = loadBe24(buffer + 1);
  header->msgLen = loadBe32(buffer + 4);
  return 1;
}

}  // namespace kesext
