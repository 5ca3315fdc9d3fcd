// The messages between the parent and this process: records, result codes, classification of requests.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "core/ground/byte_access.h"

namespace kesext {

/// Result codes in the `status` field of CDMA response records.
enum HookStatus : uint32_t {
  HOOK_STATUS_SUCCESS = 0,
  HOOK_STATUS_SPC_INVALID = 3,
  HOOK_STATUS_FAILURE = 5,
  HOOK_STATUS_NOT_SUPPORTED = 6,
};

enum HookFamily : uint32_t { HOOK_FAMILY_CDMA = 0, HOOK_FAMILY_GENERIC = 1 };

/// Size of a service programming code, in bytes.
inline constexpr size_t kSpcSize = 6;

/// Header of a CDMA hook request and of every CDMA response record; little-endian.
struct [[gnu::packed]] OemHookHeader {
  uint32_t msgId;   // 0x020000xx
  int32_t msgLen;   // payload bytes that follow the header
  uint32_t status;  // HookStatus in a response, not read in a request
  uint8_t spc[kSpcSize];
};
static_assert(sizeof(OemHookHeader) == 18);
static_assert(offsetof(OemHookHeader, msgLen) == 4);
static_assert(offsetof(OemHookHeader, status) == 8);
static_assert(offsetof(OemHookHeader, spc) == 12);

/// Where a CDMA payload starts, in bytes from the start of its record.
inline constexpr size_t kOemHookPayloadOffset = sizeof(OemHookHeader);
/// What a CDMA header counts for in every size: the payload is followed by two zero bytes.
inline constexpr size_t kOemHookHeaderCount = 20;

/// Header of a generic hook request, parsed; on the pipe it is 8 bytes, big-endian.
struct GenericHookHeader {
  uint8_t msgType;  // 0 to 2
  uint32_t msgId;   // 24 bits
  uint32_t msgLen;  // payload bytes that follow the header
};

/// Size of a generic header on the pipe, and where the payload starts.
inline constexpr size_t kGenericHookHeaderSize = 8;

/// What stands in front of every unsolicited message: which header follows, and what that counts for.
struct UnsolMessage {
  uint32_t hookType;    // HookFamily
  uint32_t headerSize;  // bytes
};
static_assert(sizeof(UnsolMessage) == 8);
static_assert(offsetof(UnsolMessage, headerSize) == 4);

/// What an unsolicited message counts beside its payload, in bytes.
inline constexpr uint32_t kUnsolOverhead = sizeof(UnsolMessage) + kOemHookHeaderCount;

/// The id that stands for a request which cannot be used.
inline constexpr uint32_t kUnusableMsgId = 0xFFFFFFFF;

/// Most bytes that are read as one request.
inline constexpr size_t kRequestBufferSize = 17408;

/// One received request: the whole receive buffer, zero behind the bytes that the parent sent. Handlers may
/// read it only while they run.
struct HookRequest {
  std::array<uint8_t, kRequestBufferSize> bytes;

  [[nodiscard]] OemHookHeader header() const {
    OemHookHeader header;
    std::memcpy(&header, bytes.data(), sizeof header);
    return header;
  }
  [[nodiscard]] uint32_t msgId() const { return header().msgId; }
  [[nodiscard]] int32_t msgLen() const { return header().msgLen; }
  /// The CDMA payload, which may be read up to the end of the buffer.
  [[nodiscard]] const uint8_t* payload() const { return bytes.data() + kOemHookPayloadOffset; }
  /// A generic request's payload, which may be read up to the end of the buffer, and the length it is said to
  /// have.
  [[nodiscard]] const uint8_t* genericPayload() const { return bytes.data() + kGenericHookHeaderSize; }
  [[nodiscard]] uint32_t genericMsgLen() const { return loadBe32(bytes.data() + 4); }
  /// The `index`-th little-endian word of the CDMA payload.
  [[nodiscard]] uint32_t payloadWord(size_t index) const { return loadLe32(payload() + 4 * index); }
};

/// A handler of one request id: (request, the argument of its table row, 0). It writes its own answer; its
/// result is not looked at.
using HookHandler = int(const HookRequest& request, uint32_t argument, uint32_t reserved);

/// Classifies `length` received bytes: the message id, with the family in `family`, or kUnusableMsgId with
/// `family` untouched.
uint32_t getOemHook(const uint8_t* buffer, int32_t length, uint32_t* family);

/// Parses a generic header from `length` received bytes. 1, or 0 when there are too few of them.
int ParOemGen(const uint8_t* buffer, int32_t length, GenericHookHeader* header);

}  // namespace kesext
