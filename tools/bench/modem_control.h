// The simulated modem at a person's command: one line of words for each thing that it can be told.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "handset/message_table.h"
#include "handset/modem.h"
#include "tools/text/words.h"

namespace tools {

/// A whole package of the modem's logs that it can send, PACKAGE BYTES, by the header word it begins with.
struct PackageRow {
  std::string_view name;
  uint32_t header;
  std::string_view help;
};
std::span<const PackageRow> packageTable();

/// Something that the modem is told, once it is to be.
using ModemOrder = std::function<void(handset::Modem&)>;

/// What the modem can be told.
struct ModemCommandRow {
  std::string_view name;
  std::string_view arguments;
  std::string_view help;
  ModemOrder (*read)(Words arguments);
};
std::span<const ModemCommandRow> modemCommandTable();

/// What the words say: a row's name and its arguments; nothing to do for none and for a comment, which begins
/// with '#'. Throws UsageError.
ModemOrder modemOrder(Words words);

/// Lets the modem send what the words say: NAME [ARGUMENT ...], "log PACKAGE BYTES" or "kpi PACKAGE BYTES"
/// for a whole package of log or performance indicators in as many indications as it takes, or an id and its
/// bytes. Throws UsageError.
ModemOrder indication(Words words);

/// The messages of the modem as words have them: "rde-read".
std::vector<std::string_view> messageNames();

/// The message of this name. Throws UsageError, with the nearest names, when there is none.
const handset::MessageRow& messageByName(std::string_view name);

}  // namespace tools
