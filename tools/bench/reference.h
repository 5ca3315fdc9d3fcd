// What can be asked and told, for people to read: printed from the tables.
#pragma once

#include <string>
#include <string_view>

namespace tools {

/// The requests whose names begin with these words: ids, what they do, their arguments. Empty when there is
/// none.
std::string requestReference(std::string_view name = {});

/// What the modem can be told.
std::string modemReference();

/// The indications with their arguments, and the messages that the modem answers.
std::string modemNamesReference();

}  // namespace tools
