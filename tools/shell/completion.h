// What a line that is being typed may go on with.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tools {

/// A command of one word and what it takes: words such as "on|off|since", "COMMAND" (of the modem) or
/// "TOPIC".
struct Syntax {
  std::string_view name;
  std::string_view arguments;
};

struct Completion {
  std::string insertion;                // what to type at the cursor; empty when nothing is certain
  std::vector<std::string> candidates;  // for the word at the cursor, in order
};

/// Of the line up to the cursor. Besides `commands` it may begin with any request's name.
Completion complete(std::span<const Syntax> commands, std::string_view line);

}  // namespace tools
