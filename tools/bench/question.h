// What the modem is asked, in words: MESSAGE alone, whatever it holds; MESSAGE BYTES; or MESSAGE FIELD=VALUE
// ... by the fields of handset/message_table.h. What is not given is zero, and lengths follow the data.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "handset/message_table.h"
#include "handset/modem.h"

namespace tools {

/// A message that the modem is expected to be asked.
struct Question {
  std::string written;
  const handset::MessageRow* row;
  std::optional<handset::Bytes> body;  // nothing: it may hold whatever it will
};

/// Throws UsageError that tells what would be right.
Question readQuestion(std::string_view line);

/// What a message that the modem was asked has otherwise, a text for each field; nothing when it is the same.
std::vector<std::string> compareQuestion(const Question& expected, const handset::Received& asked);

/// The shortest words that readQuestion reads to exactly this message: fields by name without those that are
/// zero, or the bytes where fields cannot say them.
std::string writeQuestion(const handset::Received& asked);

}  // namespace tools
