// Values of a scenario's file, with errors that a person can put right.
#pragma once

#include <nlohmann/json.hpp>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "handset/bytes.h"

namespace tools {

using Json = nlohmann::ordered_json;

/// Each throws UsageError when the value is not such a one. A number may be a text as well, for "0x10".
const std::string& textOf(const Json& value);
int64_t numberOf(const Json& value, int64_t least, int64_t most);
handset::Bytes bytesIn(const Json& value);

/// Throws UsageError, with the nearest key, unless this is an object that has only these.
void checkKeys(const Json& object, std::span<const std::string_view> known);
void needObject(const Json& value);

/// What `read` makes of the value's elements, if it is a list, or of the value alone.
template <typename Read>
auto readEach(const Json& value, Read read) {
  std::vector<std::decay_t<decltype(read(value))>> all;
  if (!value.is_array())
    all.push_back(read(value));
  else
    for (const Json& element : value)
      all.push_back(read(element));
  return all;
}

}  // namespace tools
