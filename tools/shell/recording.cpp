#include "tools/shell/recording.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>

#include "tools/bench/interruption.h"
#include "tools/bench/question.h"
#include "tools/records/decode.h"
#include "tools/records/encode.h"
#include "tools/records/field_value.h"
#include "tools/text/usage_error.h"
#include "tools/text/words.h"

namespace tools {

namespace {

using handset::Bytes;
using handset::ByteView;
using Json = nlohmann::ordered_json;

constexpr size_t kColumns = 110;

std::string dump(const Json& value) {
  return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

/// As a person lays it out: in one line what fits there, otherwise a line for each member.
std::string layOut(const Json& value, size_t depth) {
  if (!value.is_structured()) return dump(value);
  std::vector<std::string> members;
  for (const auto& [key, member] : value.items())
    members.push_back((value.is_object() ? dump(key) + ": " : "") + layOut(member, depth + 1));
  const auto [begin, end] = value.is_object() ? std::pair('{', '}') : std::pair('[', ']');
  std::string line = fmt::format("{}{}{}", begin, fmt::join(members, ", "), end);
  const std::string indent(2 * depth, ' ');
  if (depth > 1 && indent.size() + line.size() <= kColumns && line.find('\n') == std::string::npos)
    return line;
  return fmt::format("{}\n{}  {}\n{}{}", begin, indent, fmt::join(members, fmt::format(",\n{}  ", indent)),
                     indent, end);
}

/// The value as a person would write it; nothing for one that cannot be written so.
std::optional<Json> writtenField(FieldSpec shape, ByteView bytes) {
  shape.digits = {};  // what comes may be anything
  // Of the rest of a record, zeros count as well.
  const bool open = shape.kind == FieldKind::bytes && shape.size == kRest;
  const std::string typed = open ? writeBytes(bytes) : typedValue(shape.kind, bytes);
  try {
    if (!std::ranges::equal(encodeField(shape, typed), bytes)) return std::nullopt;
    (void)Json(typed).dump();
  } catch (const std::exception&) {  // UsageError, or no UTF-8
    return std::nullopt;
  }
  switch (shape.kind) {
    case FieldKind::number:
    case FieldKind::signedNumber:
    case FieldKind::element:
      return Json::parse(typed);
    case FieldKind::words:
      return Json::parse('[' + typed + ']');
    default:
      return typed;
  }
}

/// All fields by name that these are made of; nothing when they do not say all of the record.
std::optional<Json> fieldsOf(Fields fields, const DecodedRecord& decoded, ByteView record) {
  if (decoded.problem) return std::nullopt;
  if (fields.empty()) fields = kPlainPayload;
  Json said = Json::object();
  for (const DecodedField& field : decoded.fields) {
    const auto shape = std::ranges::find(fields, field.name, &FieldSpec::name);
    if (shape == fields.end() && field.kind == FieldKind::bytes) return std::nullopt;
    if (shape == fields.end() || field.kind == FieldKind::zeros || field.kind == FieldKind::status) continue;
    const std::optional<Json> written = writtenField(*shape, record.subspan(field.offset, field.size));
    if (!written) return std::nullopt;
    said[field.name] = *written;
  }
  return said;
}

/// Expects these fields, or the bytes where they cannot say it.
void expectRecord(Json& expect, Fields fields, const DecodedRecord& decoded, ByteView record) {
  const std::optional<Json> said = fieldsOf(fields, decoded, record);
  if (!said)
    expect["bytes"] = writeBytes(record);
  else if (!said->empty())
    expect["fields"] = *said;
}

/// One alone needs no list.
Json listed(Json all) {
  return all.size() == 1 ? all.front() : all;
}

Json writtenQuestions(const std::vector<handset::Received>& asked) {
  Json all = Json::array();
  for (const handset::Received& one : asked)
    all.push_back(writeQuestion(one));
  return listed(all);
}

}  // namespace

Recording::Recording(std::string path, int instance) : path_(std::move(path)), instance_(instance) {
  std::error_code ignored;
  const std::filesystem::file_status there = std::filesystem::status(path_, ignored);
  // Writing puts another file in its place, which must not happen to a device.
  if (std::filesystem::exists(there) && !std::filesystem::is_regular_file(there))
    throw UsageError(fmt::format("the session cannot be recorded in {}, which is no file", path_));
}

void Recording::needText(std::string_view line) {
  try {
    (void)Json(line).dump();
  } catch (const Json::type_error&) {
    throw UsageError("a line that is recorded has to be UTF-8; other bytes are given as digits");
  }
}

void Recording::addProcess(std::string_view what, std::optional<int> exit,
                           const std::vector<handset::Received>& asked) {
  Json expect;
  if (exit && *exit != 0) expect["exit"] = *exit;
  if (!asked.empty()) expect["asked"] = writtenQuestions(asked);
  add("process", what, expect);
}

void Recording::addModem(std::string_view words) {
  constexpr const char* kModem = "modem";
  Json& last = steps_.back();
  if (!last.contains(kModem) || !title_.empty()) return add(kModem, words, {});
  Json& lines = last[kModem];
  if (!lines.is_array()) lines = Json::array({lines});
  lines.push_back(words);
  write();
}

void Recording::addIndication(std::string_view words, const std::vector<Bytes>& messages,
                              const std::vector<handset::Received>& asked) {
  Json all = Json::array();
  for (const Bytes& message : messages) {
    const DecodedRecord decoded = decodeUnsolicited(message);
    const auto rows = unsolicitedTable();
    const auto row = std::ranges::find(rows, decoded.name, &UnsolicitedRow::name);
    if (row == rows.end()) throw UsageError("a message of an unknown id came, which no scenario can expect");
    expectRecord(all.emplace_back(Json{{"name", row->name}}), row->payload, decoded, message);
  }
  Json expect{{"message", listed(all)}};
  if (!asked.empty()) expect["asked"] = writtenQuestions(asked);
  add("indicate", words, expect);
}

void Recording::addRequest(std::string_view words, ByteView request, const std::optional<Bytes>& answer,
                           const std::vector<handset::Received>& asked) {
  if (!answer) return add("request", words, {});
  const DecodedRecord decoded = decodeAnswer(request, *answer);
  const RequestRow* row = findRequest(request);
  Json expect;
  if (decoded.status) {
    const std::string_view name = statusName(*decoded.status);
    expect["status"] = name == "unknown" ? Json(*decoded.status) : Json(name);
  }
  expectRecord(expect, row != nullptr ? row->answer : Fields{}, decoded, *answer);
  expect["asked"] = writtenQuestions(asked);
  add("request", words, expect);
}

void Recording::add(const char* action, std::string_view words, Json expect) {
  Json step;
  if (!title_.empty()) step["title"] = std::exchange(title_, {});
  step[action] = words;
  if (!expect.is_null()) step["expect"] = std::move(expect);
  steps_.push_back(std::move(step));
  write();
}

void Recording::write() const {
  const auto held = holdOffInterruption();
  const std::string part = path_ + ".part";
  std::ofstream file(part);
  Json scenario{{"title", "A session in the shell"}};
  if (instance_ != 0) scenario["instance"] = instance_;
  scenario["steps"] = steps_;
  file << layOut(scenario, 0) << '\n';
  file.close();
  if (file && std::rename(part.c_str(), path_.c_str()) == 0) return;
  const std::string why = std::strerror(errno);
  std::remove(part.c_str());
  throw UsageError(fmt::format("the session cannot be recorded in {}: {}", path_, why));
}

}  // namespace tools
