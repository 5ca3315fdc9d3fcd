// Decoded records for scripts.
#pragma once

#include <nlohmann/json.hpp>
#include <string_view>

#include "handset/bytes.h"
#include "tools/decode.h"

namespace tools {

/// {"title": ..., "hex": ..., "fields": [{"name", "value", "offset", "size", "hex"}, ...]}; "problem" and
/// "problem_offset" as well where the record does not parse.
nlohmann::ordered_json toJson(const DecodedRecord& decoded, handset::ByteView bytes);

/// Prints a value as text of two blanks' depth, with whatever is not UTF-8 replaced.
void printJson(const nlohmann::ordered_json& value);

/// Prints a value on one line, for a value of many.
void printJsonLine(const nlohmann::ordered_json& value);

}  // namespace tools
