// What a line that is being typed may go on with.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tools/text/words.h"

namespace tools {

/// A command and what it takes: words such as "on|off|since", "REQUEST", "COMMAND" (of the
/// modem) or "TOPIC".
struct Syntax {
  std::string_view name;
  std::string_view arguments;
};

/// What the next word may be behind these, as far as it is there, in order. Besides `commands` they may begin
/// with any request's name.
std::vector<std::string> candidates(std::span<const Syntax> commands, Words before, std::string_view word);

struct Completion {
  std::string insertion;                // what to type at the cursor; empty when nothing is certain
  std::vector<std::string> candidates;  // for the word at the cursor, in order
};

/// Of the line up to the cursor.
Completion complete(std::span<const Syntax> commands, std::string_view line);

}  // namespace tools
