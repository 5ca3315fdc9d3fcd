#include "tools/record_json.h"

#include <fmt/format.h>

#include <utility>

#include "tools/link_trace.h"

namespace tools {

nlohmann::ordered_json toJson(const DecodedRecord& decoded, handset::ByteView bytes) {
  nlohmann::ordered_json fields = nlohmann::ordered_json::array();
  for (const DecodedField& field : decoded.fields)
    fields.push_back({{"name", field.name},
                      {"value", field.value},
                      {"offset", field.offset},
                      {"size", field.size},
                      {"hex", handset::toHex(bytes.subspan(field.offset, field.size), "")}});
  nlohmann::ordered_json record{
      {"title", decoded.title}, {"hex", handset::toHex(bytes, "")}, {"fields", fields}};
  if (decoded.problem) {
    record["problem"] = decoded.problem->text;
    record["problem_offset"] = decoded.problem->offset;
  }
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

void printJson(const nlohmann::ordered_json& value) {
  constexpr int kIndent = 2;
  fmt::print("{}\n", value.dump(kIndent, ' ', false, nlohmann::json::error_handler_t::replace));
}

void printJsonLine(const nlohmann::ordered_json& value) {
  fmt::print("{}\n", value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
}

}  // namespace tools
