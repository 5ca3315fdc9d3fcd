// The payload of the parent's requests that name an RDE element, and of their answers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "core/ground/hook_message.h"

namespace kesext {

/// The words in front of an element's data.
struct ElementPayload {
  uint32_t rde_index;
  uint32_t record_num;
  uint32_t offset;
  uint32_t length;  // bytes of data
};
static_assert(sizeof(ElementPayload) == 16 && std::has_unique_object_representations_v<ElementPayload>);
static_assert(offsetof(ElementPayload, record_num) == 4);
static_assert(offsetof(ElementPayload, offset) == 8);
static_assert(offsetof(ElementPayload, length) == 12);

/// Zero bytes that the length of an answer counts behind the data.
inline constexpr uint32_t kElementZerosSize = 4;

/// The words of a request, whose data follows them.
inline ElementPayload elementPayload(const HookRequest& request) {
  ElementPayload words;
  std::memcpy(&words, request.payload(), sizeof words);
  return words;
}
inline const uint8_t* elementData(const HookRequest& request) {
  return request.payload() + sizeof(ElementPayload);
}

}  // namespace kesext
