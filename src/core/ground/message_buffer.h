// A message for one of the pipes while it is being built.
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

/// An answer, with its payload still zero. False when there was no memory.
class HookResponse : public MessageBuffer {
 public:
  /// A CDMA record: the header, `header.msgLen` payload bytes, two zero bytes. False also for a negative
  /// length.
  static HookResponse cdma(const OemHookHeader& header);
  /// A generic reply: the request's first four bytes, the length, `payload_length` payload bytes.
  static HookResponse generic(const HookRequest& request, uint32_t payload_length);

  [[nodiscard]] uint8_t* payload() const { return data() + payload_offset_; }

 private:
  HookResponse(size_t size, size_t payload_offset) : MessageBuffer(size), payload_offset_(payload_offset) {}
  HookResponse() = default;

  size_t payload_offset_ = 0;
};

}  // namespace kesext
