#include "tools/bench/record_json.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <utility>

#include "tools/bench/link_trace.h"

namespace tools {

namespace {

using Json = nlohmann::ordered_json;

/// Numbers are read off their text, which knows the byte order.
Json typedValue(const DecodedField& field, handset::ByteView bytes) {
  if (isNumber(field.kind)) return std::strtoll(field.value.c_str(), nullptr, 0);
  if (field.kind == FieldKind::utf8) return std::string(bytes.begin(), bytes.end());
  if (isText(field.kind) || field.kind == FieldKind::code)
    return std::string(bytes.begin(), std::find(bytes.begin(), bytes.end(), 0));
  if (field.kind != FieldKind::words) return handset::toHex(bytes, "");
  Json words = Json::array();
  for (size_t at = 0; at + kWordSize <= bytes.size(); at += kWordSize)
    words.push_back(handset::getLe<uint32_t>(bytes, at));
  return words;
}

}  // namespace

Json toJson(const DecodedRecord& decoded, handset::ByteView bytes, const Moment& moment, bool times) {
  Json record{{"title", decoded.title}};
  Json fields = Json::array();
  for (const DecodedField& field : decoded.fields) {
    const handset::ByteView part = bytes.subspan(field.offset, field.size);
    const Json value = typedValue(field, part);
    if (field.name == "msgId") {
      record["id"] = value;
      record["name"] = decoded.name.empty() ? Json() : Json(decoded.name);
    }
    fields.push_back({{"name", field.name},
                      {"value", value},
                      {"text", field.value},
                      {"offset", field.offset},
                      {"size", field.size},
                      {"hex", handset::toHex(part, "")}});
  }
  if (decoded.status) {
    record["status"] = *decoded.status;
    record["status_name"] = statusName(*decoded.status);
  }
  record["hex"] = handset::toHex(bytes, "");
  record["fields"] = std::move(fields);
  if (decoded.problem) {
    record["problem"] = decoded.problem->text;
    record["problem_offset"] = decoded.problem->offset;
  }
  addMoment(record, moment, times);
  return record;
}

nlohmann::ordered_json toJson(const handset::Crossing& crossing) {
  nlohmann::ordered_json json{{crossing.indication ? "indication" : "message", crossingName(crossing)},
                              {"service", handset::serviceName(crossing.service)},
                              {"id", crossing.id}};
  const auto add = [&json](const char* name, const DecodedRecord& decoded, handset::ByteView bytes) {
    json[name] = toJson(decoded, bytes);
    json[name].erase("title");
  };
  add(crossing.indication ? "body" : "request", decodeBody(crossing), crossing.body);
  if (crossing.indication) return json;
  json["outcome"] = outcomeText(crossing);
  if (!crossing.reply) return json;
  json["code"] = crossing.reply->code;
  if (crossing.reply->code == 0) add("response", decodeResponse(crossing), crossing.reply->body);
  addMoment(json, {crossing.done, crossing.asked}, false);
  return json;
}

void addMoment(nlohmann::ordered_json& record, const Moment& moment, bool times) {
  if (times && moment.time) record["time"] = secondsSinceStart(*moment.time);
  if (moment.time && moment.since) record["took_ms"] = tookMs(*moment.since, *moment.time);
}

void addHappening(nlohmann::ordered_json& all, const Happening& happening, bool times) {
  const auto add = [&](const char* list, nlohmann::ordered_json json) {
    addMoment(json, {.time = happening.time}, times);
    all[list].push_back(std::move(json));
  };
  if (const auto* line = std::get_if<std::string>(&happening.what)) add("log", {{"text", *line}});
  if (const auto* crossing = std::get_if<handset::Crossing>(&happening.what)) add("trace", toJson(*crossing));
  if (const auto* message = std::get_if<handset::Bytes>(&happening.what))
    add("messages", toJson(decodeUnsolicited(*message), *message));
}

void printJson(const nlohmann::ordered_json& value, bool one_line) {
  fmt::print("{}\n", value.dump(one_line ? -1 : 2, ' ', false, nlohmann::json::error_handler_t::replace));
}

}  // namespace tools
