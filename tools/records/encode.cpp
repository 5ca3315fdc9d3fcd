#include "tools/records/encode.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cctype>
#include <limits>
#include <map>

#include "core/ground/hook_message.h"
#include "handset/hook_records.h"
#include "tools/text/usage_error.h"

namespace tools {

namespace {

using handset::Bytes;
using Given = std::map<std::string_view, std::string_view>;

/// What a number of this size can be.
std::pair<int64_t, int64_t> rangeOf(const FieldSpec& field) {
  const auto bits = static_cast<unsigned>(8 * std::min(field.size, kWordSize));
  const int64_t highest = (int64_t{1} << bits) - 1;
  if (field.kind == FieldKind::signedNumber) return {-(highest / 2) - 1, highest / 2};
  return {0, highest};
}

std::string allowed(const FieldSpec& field) {
  const bool open = field.size == kRest;
  if (const auto [least, most] = field.digits; most > 0)
    return fmt::format("{}{} digits", least < most ? "up to " : "", most);
  if (isNumber(field.kind)) {
    const auto [least, most] = rangeOf(field);
    return fmt::format("{} to {}", least, most);
  }
  if (isText(field.kind)) return open ? "text" : fmt::format("text of up to {} characters", field.size);
  if (field.kind == FieldKind::code) return "6 characters, or none";
  if (field.kind == FieldKind::bytes) return open ? "bytes" : fmt::format("up to {} bytes", field.size);
  return open ? "numbers with commas" : fmt::format("up to {} numbers with commas", field.size / kWordSize);
}

Bytes littleEndian(int64_t value, size_t size) {
  Bytes bytes(size);
  for (size_t i = 0; i < size; ++i)
    bytes[i] = static_cast<uint8_t>(static_cast<uint64_t>(value) >> (8 * i));
  return bytes;
}

Bytes parseWords(std::string_view what, std::string_view text) {
  Bytes bytes;
  while (!text.empty()) {
    const size_t comma = std::min(text.find(','), text.size());
    const int64_t word = parseNumber(what, text.substr(0, comma), 0, std::numeric_limits<uint32_t>::max());
    bytes = handset::concat(bytes, littleEndian(word, kWordSize));
    text.remove_prefix(std::min(comma + 1, text.size()));
  }
  return bytes;
}

Bytes valueBytes(const FieldSpec& field, std::string_view value) {
  if (isNumber(field.kind)) {
    const auto [least, most] = rangeOf(field);
    return littleEndian(parseNumber(field.name, value, least, most), field.size);
  }
  if (field.kind == FieldKind::words) return parseWords(field.name, value);
  if (field.kind == FieldKind::bytes || field.kind == FieldKind::zeros) return parseBytes(field.name, value);
  if (field.kind == FieldKind::code && value == "none") return Bytes(field.size);
  return handset::concat(handset::bytesOf(value), Bytes(field.kind == FieldKind::zeroEndedText ? 1 : 0));
}

/// Whether a value with this sign in it can be the field's.
bool mayHoldEquals(const FieldSpec& field, std::string_view value) {
  return field.kind == FieldKind::bytes ? value.starts_with("text:") || value.starts_with('@')
                                        : isText(field.kind) && field.digits.most == 0;
}

bool sameName(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](unsigned char x, unsigned char y) { return std::tolower(x) == std::tolower(y); });
}

/// The field that an argument is for, and its value.
std::pair<const FieldSpec*, std::string_view> assign(Fields fields, std::string_view argument,
                                                     const Given& given) {
  const size_t equals = argument.find('=');
  if (equals != std::string_view::npos)
    for (const FieldSpec& field : fields)
      if (sameName(field.name, argument.substr(0, equals))) return {&field, argument.substr(equals + 1)};
  for (const FieldSpec& field : fields) {
    if (field.when_absent != WhenAbsent::refused || given.contains(field.name)) continue;
    // What stands before the sign is otherwise a name, and wrong.
    if (equals != std::string_view::npos && !mayHoldEquals(field, argument)) break;
    return {&field, argument};
  }
  return {nullptr, argument};
}

std::string takes(Fields fields) {
  return fmt::format("{}", fmt::join(argumentHelp(fields), " "));
}

[[noreturn]] void refuseArgument(std::string_view command, Fields fields, std::string_view argument) {
  const std::string near = didYouMean(argument.substr(0, argument.find('=')), argumentNames(fields));
  if (!near.empty()) throw UsageError(fmt::format("{} does not take '{}'{}", command, argument, near));
  throw UsageError(fmt::format("{} does not take '{}'; it takes {}", command, argument,
                               fields.empty() ? "no arguments" : takes(fields)));
}

Given readArguments(std::string_view command, Fields fields, Words arguments) {
  Given given;
  for (const std::string_view argument : arguments) {
    const auto [field, value] = assign(fields, argument, given);
    if (field == nullptr) refuseArgument(command, fields, argument);
    if (!given.emplace(field->name, value).second)
      throw UsageError(fmt::format("{} is given twice", field->name));
  }
  return given;
}

/// How much a field's bytes count in a length before them: words or bytes.
size_t countOf(const FieldSpec& field, std::string_view value) {
  const size_t size = valueBytes(field, value).size();
  return field.kind == FieldKind::words ? size / kWordSize : size;
}

Bytes encodeGiven(std::string_view command, Fields fields, const Given& given) {
  const auto is_given = [&given](const FieldSpec& field) { return given.contains(field.name); };
  const auto needed = [](const FieldSpec& field) { return field.when_absent != WhenAbsent::leftOut; };
  if (std::none_of(fields.begin(), fields.end(), is_given) &&
      std::any_of(fields.begin(), fields.end(), needed))
    throw UsageError(fmt::format("{} needs {}", command, takes(fields)));
  Bytes payload;
  std::vector<std::pair<const FieldSpec*, size_t>> lengths;  // still to be filled in, and where
  for (const FieldSpec& field : fields) {
    const auto value = given.find(field.name);
    if (value == given.end()) {
      if (field.when_absent == WhenAbsent::refused)
        throw UsageError(fmt::format("{} needs {} ({})", command, field.name, allowed(field)));
      if (field.when_absent == WhenAbsent::lengthOfRest) lengths.emplace_back(&field, payload.size());
      if (field.when_absent != WhenAbsent::leftOut) payload.resize(payload.size() + field.size);
      continue;
    }
    const Bytes bytes = encodeField(field, value->second);
    payload.insert(payload.end(), bytes.begin(), bytes.end());
    for (const auto& [length, at] : lengths) {
      const Bytes count = littleEndian(static_cast<int64_t>(countOf(field, value->second)), length->size);
      std::copy(count.begin(), count.end(), payload.begin() + static_cast<ptrdiff_t>(at));
    }
    if (field.size == kRest || field.kind == FieldKind::bytes) lengths.clear();
  }
  return payload;
}

/// What a request is given as: its payload, and for a CDMA request the code.
std::vector<FieldSpec> allFields(const RequestRow& row) {
  std::vector<FieldSpec> fields(row.request.begin(), row.request.end());
  if (row.family == Family::cdma) fields.push_back(kSpcField);
  return fields;
}

/// The payload's fields without what is asked of digits.
std::vector<FieldSpec> forced(const RequestRow& row) {
  std::vector<FieldSpec> fields(row.request.begin(), row.request.end());
  for (FieldSpec& field : fields) {
    const bool may_be_zeros = field.digits.most > 0 && field.size != kRest;
    if (may_be_zeros) field.when_absent = WhenAbsent::zeros;
    field.digits = {};
  }
  return fields;
}

handset::Bytes encodeRequest(const RequestRow& row, Words arguments, bool force) {
  const Given given = readArguments(row.command, allFields(row), arguments);
  const Bytes payload = encodeGiven(row.command, force ? forced(row) : row.request, given);
  Bytes record = row.family == Family::generic ? handset::genericRequest(row.id, payload)
                                               : handset::cdmaRequest(row.id, payload);
  if (record.size() > kesext::kRequestBufferSize)
    throw UsageError(fmt::format("{} would be {} bytes long; a request has at most {}", row.command,
                                 record.size(), kesext::kRequestBufferSize));
  if (const auto code = given.find(kSpcField.name); code != given.end()) {
    const Bytes bytes = encodeField(kSpcField, code->second);
    std::copy(bytes.begin(), bytes.end(), record.begin() + offsetof(kesext::OemHookHeader, spc));
  }
  return record;
}

}  // namespace

const RequestRow& takeRequestName(Words& words) {
  const std::string one = words.empty() ? "" : words[0];
  const std::string two = words.size() > 1 ? one + ' ' + words[1] : one;
  for (const auto& [name, taken] : {std::pair(two, 2), std::pair(one, 1)})
    for (const RequestRow& row : requestTable()) {
      if (row.command != name) continue;
      words = words.subspan(std::min<size_t>(taken, words.size()));
      return row;
    }
  // The second word may be an argument.
  const std::string near = didYouMean(two, requestNames());
  throw UsageError(near.empty()
                       ? fmt::format("there is no request '{}'{}", one, didYouMean(one, requestNames()))
                       : fmt::format("there is no request '{}'{}", two, near));
}

Bytes encodeField(const FieldSpec& field, std::string_view value) {
  Bytes bytes = valueBytes(field, value);
  const bool fits = field.kind == FieldKind::code ? bytes.size() == field.size : bytes.size() <= field.size;
  const auto [least, most] = field.digits;
  const bool other = value.find_first_not_of("0123456789") != std::string_view::npos;
  const bool digits_fit = most == 0 || (value.size() >= least && value.size() <= most && !other);
  if (!fits || !digits_fit)
    throw UsageError(fmt::format("{} takes {}, not '{}'{}", field.name, allowed(field), value,
                                 fits ? "; 'force' before the request sends it as it is" : ""));
  if (field.size != kRest) bytes.resize(field.size);
  return bytes;
}

Bytes encodeFields(std::string_view command, Fields fields, Words arguments) {
  return encodeGiven(command, fields, readArguments(command, fields, arguments));
}

Bytes encodeWords(Words words) {
  const bool force = !words.empty() && words.front() == kForce;
  if (force) words = words.subspan(1);
  if (words.empty()) throw UsageError("a request is NAME [ARGUMENT ...] or raw HEX");
  if (words.front() != "raw") {
    const RequestRow& row = takeRequestName(words);
    return encodeRequest(row, words, force);
  }
  Bytes record;
  for (const std::string& word : words.subspan(1))
    record = handset::concat(record, parseBytes("raw", word));
  if (record.empty() || record.size() > kesext::kRequestBufferSize)
    throw UsageError(fmt::format("raw takes 1 to {} bytes", kesext::kRequestBufferSize));
  return record;
}

std::vector<std::string> argumentHelp(Fields fields) {
  std::vector<std::string> help;
  for (const FieldSpec& field : fields)
    if (field.kind != FieldKind::zeros)
      help.push_back(
          fmt::format(fmt::runtime(field.when_absent == WhenAbsent::refused ? "{} ({})" : "[{}={}]"),
                      field.name, allowed(field)));
  return help;
}

std::vector<std::string> argumentHelp(const RequestRow& row) {
  return argumentHelp(allFields(row));
}

std::vector<std::string_view> argumentNames(Fields fields) {
  std::vector<std::string_view> names;
  for (const FieldSpec& field : fields)
    if (field.kind != FieldKind::zeros) names.push_back(field.name);
  return names;
}

std::vector<std::string_view> requestNames() {
  std::vector<std::string_view> names;
  for (const RequestRow& row : requestTable())
    names.push_back(row.command);
  return names;
}

}  // namespace tools
