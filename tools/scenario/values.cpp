#include "tools/scenario/values.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "tools/text/usage_error.h"
#include "tools/text/words.h"

namespace tools {

namespace {

using handset::Bytes;

[[noreturn]] void refuse(std::string_view wanted, const Json& value) {
  throw UsageError(fmt::format("takes {}, not {}", wanted, value.dump()));
}

}  // namespace

const std::string& textOf(const Json& value) {
  if (!value.is_string()) refuse("text", value);
  return value.get_ref<const std::string&>();
}

int64_t numberOf(const Json& value, int64_t least, int64_t most) {
  return parseNumber("it", value.is_string() ? value.get<std::string>() : value.dump(), least, most);
}

Bytes bytesIn(const Json& value) {
  return parseBytes("it", textOf(value));
}

void needObject(const Json& value) {
  if (!value.is_object()) refuse("{\"KEY\": VALUE, ...}", value);
}

void checkKeys(const Json& object, std::span<const std::string_view> known) {
  needObject(object);
  for (const auto& [key, value] : object.items()) {
    if (std::find(known.begin(), known.end(), key) != known.end()) continue;
    throw UsageError(fmt::format("there is no '{}' here{}; there can be {}", key, didYouMean(key, known),
                                 fmt::join(known, ", ")));
  }
}

}  // namespace tools
