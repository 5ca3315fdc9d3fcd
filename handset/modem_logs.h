// The modem's logs: the indications that they come in, and the directory that they end in.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "handset/bytes.h"
#include "handset/folder.h"

namespace handset {

/// The vendor service's utility indication.
inline constexpr uint16_t kUtilityIndicationId = 0x000F;

/// What a package of logs begins with.
inline constexpr uint32_t kLogHeader = 0x01C0FFEE;        // not part of the log
inline constexpr uint32_t kLogHeaderStored = 0xFFFFFFFF;  // part of the log
inline constexpr uint32_t kKpiHeaders[] = {0x02C0FFEE, 0x03C0FFEE, 0x06C0FFEE, 0x07C0FFEE};
/// The payload bytes that a packet has room for.
inline constexpr size_t kLogPacketPayloadMax = 506;

/// A utility indication; `len` where it is not the data's length. Throws when the data do not fit.
Bytes utilityIndication(uint32_t type, ByteView data);
Bytes utilityIndication(uint32_t type, ByteView data, uint32_t len);

/// One packet of a package.
struct LogPacket {
  uint8_t package_id = 0;
  uint8_t sequence_id = 1;
  uint8_t last = 0;
  Bytes payload;                 // of the first packet: the header word, little-endian, first
  std::optional<uint16_t> size;  // where it is not the payload's length
};

/// The indication that carries a packet. Throws when the payload does not fit.
Bytes logPacketIndication(const LogPacket& packet);

/// The indications of a whole package, its header word and as many packets as its content takes. Throws when
/// it takes more than 255.
std::vector<Bytes> logPackage(uint8_t package_id, uint32_t header, ByteView content);

/// An entry of the modem logs' directory.
struct LogEntry {
  std::string name;
  std::optional<std::string> target;  // of a link
  bool dangling = false;              // a link that leads nowhere
  uint64_t size = 0;                  // in bytes; like the next two, of a link's target
  mode_t mode = 0;                    // permission bits
  gid_t group = 0;
};

/// The modem logs' directory by name, links first; empty when there is none.
std::vector<LogEntry> logEntries(const Folder& folder);

/// Makes this process, where it may, a member of the group that modem logs are given to, as the handset's
/// radio layer is. Whether it is one now.
bool joinLogGroup();

}  // namespace handset
