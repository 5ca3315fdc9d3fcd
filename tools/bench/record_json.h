// Decoded records for scripts.
#pragma once

#include <nlohmann/json.hpp>
#include <string_view>

#include "handset/bytes.h"
#include "tools/bench/console.h"
#include "tools/bench/happening.h"
#include "tools/records/decode.h"

namespace tools {

/// {"title", "id", "name", "status", "status_name", "hex", "fields": [{"name", "value", "text", "offset",
/// "size", "hex"}, ...]}, as far as the record has them; "problem" and "problem_offset" as well where it does
/// not parse. A value is a number, a text, a list of numbers, or bytes as hexadecimal digits; "text" is what
/// people are shown. In the end what addMoment adds.
nlohmann::ordered_json toJson(const DecodedRecord& decoded, handset::ByteView bytes,
                              const Moment& moment = {}, bool times = false);

/// {"message" or "indication", "service", "id", "request" or "body", "outcome", "code", "response",
/// "took_ms"}.
nlohmann::ordered_json toJson(const handset::Crossing& crossing);

/// Adds "took_ms" where it is known, and the "time" in seconds since the start if that is wanted.
void addMoment(nlohmann::ordered_json& record, const Moment& moment, bool times);

/// Adds a happening to the list of its kind: {"text"} to "log", a record to "messages", an
/// exchange or an indication to "trace".
void addHappening(nlohmann::ordered_json& all, const Happening& happening, bool times);

/// Prints a value, in one line when it is one of many, with whatever is not UTF-8 replaced.
void printJson(const nlohmann::ordered_json& value, bool one_line = false);

}  // namespace tools
