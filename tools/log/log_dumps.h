// The bytes that the process logs in hexadecimal, and what the line before tells of them.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "handset/bytes.h"
#include "tools/records/decode.h"
#include "tools/records/record_table.h"

namespace tools {

/// A log line that says what the next dump is.
struct DumpAnnouncement {
  std::string_view line;   // its beginning
  std::string_view title;  // what the bytes are
  Fields fields;           // none: a CDMA answer with its header
};

/// Whether a line is one of a log: a priority and a tag, or a time and these.
bool isLogLine(std::string_view line);

/// The announcement on a log line, or null.
const DumpAnnouncement* announcementOn(std::string_view line);

/// The hexadecimal digits of a dump on a log line; nothing when there is none.
std::optional<std::string_view> dumpOn(std::string_view line);

/// Whether a line stands in the place of a dump that was too long for the log.
bool isUnshownDump(std::string_view line);

/// The bytes of an announced dump field by field.
DecodedRecord decodeDump(const DumpAnnouncement& announcement, handset::ByteView bytes);

}  // namespace tools
