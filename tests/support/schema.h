// What scripts get from hookctl, held against its schema.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace kesext_test {

/// What is wrong with a value by one of the shapes in docs/hookctl.schema.json, as far as that schema's words
/// go; empty for nothing.
std::string SchemaMisfit(const std::string& shape, const nlohmann::json& value);

}  // namespace kesext_test
