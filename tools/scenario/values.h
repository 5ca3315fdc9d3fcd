// Values of a scenario's file, with errors that a person can put right.
#pragma once

#include <nlohmann/json.hpp>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "handset/bytes.h"
#include "tools/records/decode.h"
#include "tools/records/record_table.h"

namespace tools {

using Json = nlohmann::ordered_json;

/// Each throws UsageError when the value is not such a one.
const std::string& textOf(const Json& value);
int64_t numberOf(const Json& value, int64_t least, int64_t most);
handset::Bytes bytesIn(const Json& value);
void needObject(const Json& value);

/// The value's elements, if it is a list, or the value alone.
std::vector<const Json*> eachOf(const Json& value);

/// Throws UsageError, with the nearest key, when the object has one that is not known.
void checkKeys(const Json& object, std::span<const std::string_view> known);

/// A field that a record has to have.
struct ExpectedField {
  const FieldSpec* shape;
  std::string written;
  handset::Bytes bytes;
};

/// {"NAME": VALUE, ...}: values are written as in a request, numbers also as such and several as a list.
/// `owner` is what has these fields.
std::vector<ExpectedField> readFields(const std::string& owner, Fields fields, const Json& value);

/// What differs, a text for each field.
std::vector<std::string> compareFields(const std::vector<ExpectedField>& expected,
                                       const DecodedRecord& decoded, handset::ByteView record);

}  // namespace tools
