#include "tools/record_json.h"

#include <fmt/format.h>

#include <utility>

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
