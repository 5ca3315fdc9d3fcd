// A message for one of the pipes while it is being built, and the builders of its shapes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

#include "core/ground/hook_message.h"

namespace kesext {

/// A cleared heap buffer for one message, freed when it goes out of scope. False when there was no memory.
class MessageBuffer {
 public:
  MessageBuffer() = default;
  explicit MessageBuffer(size_t size)
      : bytes_(static_cast<uint8_t*>(std::calloc(1, size))), size_(bytes_ ? size : 0) {}

  explicit operator bool() const { return bytes_ != nullptr; }
  [[nodiscard]] uint8_t* data() const { return bytes_.get(); }
  [[nodiscard]] uint32_t size() const { return static_cast<uint32_t>(size_); }

 private:
  struct Free {
    void operator()(uint8_t* bytes) const { std::free(bytes); }
  };
  std::unique_ptr<uint8_t, Free> bytes_;
  size_t size_ = 0;
};

/// Where the payload of a CDMA unsolicited message starts.
inline constexpr size_t kUnsolCdmaPayloadOffset = 8 + kOemHookPayloadOffset;

/// A CDMA response record: the header, `header.msgLen` payload bytes still zero at kOemHookPayloadOffset, two
/// zero bytes. Empty when there was no memory or the length is negative.
MessageBuffer buildCdmaResponse(const OemHookHeader& header);

/// A generic reply: the request's first four bytes, the length, `payload_length` bytes still zero at
/// kGenericHookHeaderSize. Empty when there was no memory.
MessageBuffer buildGenericReply(const HookRequest& request, uint32_t payload_length);

/// An unsolicited message of CDMA form with status 0: `payload_length` bytes still zero at
/// kUnsolCdmaPayloadOffset, two zero bytes. Empty when there was no memory.
MessageBuffer buildCdmaUnsol(uint32_t msg_id, uint32_t payload_length);

/// Where the payload of a generic unsolicited message starts.
inline constexpr size_t kUnsolGenericPayloadOffset = 8 + kGenericHookHeaderSize;

/// An unsolicited message of generic form with a 24-bit id: `payload_length` bytes still zero at
/// kUnsolGenericPayloadOffset, twelve zero bytes. Empty when there was no memory.
MessageBuffer buildGenericUnsol(uint8_t msg_type, uint32_t msg_id, uint32_t payload_length);

}  // namespace kesext
