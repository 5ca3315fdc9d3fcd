#include "tools/scenario/values.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "tools/records/encode.h"
#include "tools/records/field_value.h"
#include "tools/text/usage_error.h"
#include "tools/text/words.h"

namespace tools {

namespace {

using handset::Bytes;
using handset::ByteView;

constexpr FieldSpec kMessageType{"msgType", 1, FieldKind::number};

[[noreturn]] void refuse(std::string_view wanted, const Json& value) {
  throw UsageError(fmt::format("takes {}, not {}", wanted, value.dump()));
}

/// A field's value as a person would type it on the command line.
std::string writtenValue(const FieldSpec& shape, const Json& value) {
  if (value.is_string()) return value.get<std::string>();
  if (value.is_number_integer()) return value.dump();
  if (!value.is_array() || shape.kind != FieldKind::words)
    refuse(fmt::format("{}: a text or a number", shape.name), value);
  return fmt::format("{}", fmt::join(readEach(value, [](const Json& word) { return word.dump(); }), ","));
}

const FieldSpec& fieldOf(const std::string& owner, Fields fields, const std::string& name) {
  const std::vector<std::string_view> names = argumentNames(fields);
  for (const FieldSpec& field : fields)
    if (field.name == name && field.kind != FieldKind::zeros) return field;
  throw UsageError(fmt::format("{} has no field '{}'{}; it has {}", owner, name, didYouMean(name, names),
                               fmt::join(names, ", ")));
}

/// The payload's field of this name; a header's field of the same name stands before it.
const DecodedField* findLast(const DecodedRecord& decoded, std::string_view name) {
  const auto found = std::find_if(decoded.fields.rbegin(), decoded.fields.rend(),
                                  [name](const DecodedField& field) { return field.name == name; });
  return found != decoded.fields.rend() ? &*found : nullptr;
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

std::vector<ExpectedField> readFields(const std::string& owner, Family family, Fields payload,
                                      const Json& value) {
  needObject(value);
  if (payload.empty()) payload = kPlainPayload;
  std::vector<FieldSpec> fields(payload.begin(), payload.end());
  fields.push_back(family == Family::cdma ? kSpcField : kMessageType);
  std::vector<ExpectedField> expected;
  for (const auto& [name, field_value] : value.items()) {
    const FieldSpec& shape = fieldOf(owner, fields, name);
    const std::string written = writtenValue(shape, field_value);
    expected.push_back({shape, written, encodeField(shape, written)});
  }
  return expected;
}

std::vector<std::string> compareFields(const std::vector<ExpectedField>& expected,
                                       const DecodedRecord& decoded, ByteView record) {
  std::vector<std::string> wrong;
  for (const ExpectedField& field : expected) {
    const DecodedField* found = findLast(decoded, field.shape.name);
    const ByteView bytes = found != nullptr ? record.subspan(found->offset, found->size) : ByteView{};
    if (std::equal(bytes.begin(), bytes.end(), field.bytes.begin(), field.bytes.end())) continue;
    if (found == nullptr)
      wrong.push_back(fmt::format("{}: expected {}, and there is none", field.shape.name, field.written));
    else if (field.shape.kind == FieldKind::bytes)
      wrong.push_back(fmt::format("{} {}", field.shape.name, difference(bytes, field.bytes)));
    else
      wrong.push_back(fmt::format("{}: expected {}, not {}", field.shape.name, field.written, found->value));
  }
  return wrong;
}

}  // namespace tools
