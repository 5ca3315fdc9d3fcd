// One packet of the modem link: a 12-byte header, all integers little-endian, and a body.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace host {

/// What a frame is; the process sends lookup, connect and request, the modem the others.
enum class FrameKind : uint8_t {
  lookup = 1,
  services = 2,  // code: how many instances of the service are published
  connect = 3,
  connected = 4,  // code: 0, or why not
  request = 5,
  response = 6,  // code: 0, or an error and no body
  indication = 7,
};

enum class Service : uint8_t { dms = 2, nas = 3, vendor = 0xE4 };

/// The header as it stands in the packet.
struct FrameHeader {
  FrameKind kind{};
  Service service{};
  uint16_t message_id = 0;   // request, response and indication, else 0
  uint32_t transaction = 0;  // request and response, else 0
  int32_t code = 0;          // services, connected and response, else 0
};
static_assert(sizeof(FrameHeader) == 12 && std::has_unique_object_representations_v<FrameHeader>);
static_assert(offsetof(FrameHeader, service) == 1 && offsetof(FrameHeader, message_id) == 2);
static_assert(offsetof(FrameHeader, transaction) == 4 && offsetof(FrameHeader, code) == 8);
static_assert(std::endian::native == std::endian::little, "headers are copied as they are");

/// More than any message of the contract; a longer packet is dropped.
inline constexpr size_t kFrameSizeMax = size_t{64} * 1024;

/// Name of the modem's socket below the handset folder.
inline constexpr const char* kModemSocketPath = "/modem.sock";

}  // namespace host
