#include "support/schema.h"

#include <algorithm>
#include <fstream>

namespace kesext_test {

namespace {

std::string Misfit(const nlohmann::json& schema, const nlohmann::json& shape, const nlohmann::json& value) {
  if (shape.contains("$ref")) {
    const auto place = shape["$ref"].get<std::string>().substr(1);
    return Misfit(schema, schema.at(nlohmann::json::json_pointer(place)), value);
  }
  const auto has = [](const nlohmann::json& list, const nlohmann::json& item) {
    return std::find(list.begin(), list.end(), item) != list.end();
  };
  const std::string type = value.is_number_integer() ? "integer" : value.type_name();
  const nlohmann::json types = shape.value("type", nlohmann::json::array());
  const nlohmann::json allowed = types.is_string() ? nlohmann::json{types} : types;
  if (!allowed.empty() && !has(allowed, type) && !(type == "integer" && has(allowed, "number")))
    return "type of " + value.dump();
  if (shape.contains("enum") && !has(shape["enum"], value)) return value.dump();
  std::string wrong;
  if (value.is_object()) {
    for (const auto& name : shape["required"])
      if (!value.contains(name.get<std::string>())) wrong += "no " + name.dump() + "; ";
    for (const auto& [name, member] : value.items())
      wrong += shape["properties"].contains(name) ? Misfit(schema, shape["properties"][name], member)
                                                  : name + " is not known; ";
  }
  if (value.is_array())
    for (const auto& item : value)
      wrong += Misfit(schema, shape.at("items"), item);
  return wrong;
}

}  // namespace

std::string SchemaMisfit(const std::string& shape, const nlohmann::json& value) {
  std::ifstream file(KESEXT_SCHEMA);
  const nlohmann::json schema = nlohmann::json::parse(file, nullptr, false);
  return Misfit(schema, schema["$defs"][shape], value);
}

}  // namespace kesext_test
