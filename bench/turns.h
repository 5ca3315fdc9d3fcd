// What the benchmarks share: a child that takes turns with another, and the middle of what was measured.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "handset/folder.h"
#include "handset/parent.h"

namespace bench {

/// A child with its standard error thrown away, as no reader of it should be measured.
inline handset::ParentOptions quiet(const handset::Folder& folder, std::vector<std::string> command) {
  command.insert(command.begin(), {"-c", R"(exec "$0" "$@" 2>/dev/null)"});
  handset::ParentOptions options{.executable = "/bin/sh", .handset_root = folder.root()};
  options.arguments = std::move(command);
  return options;
}

/// Reorders the values.
inline double medianOf(std::vector<double>& values) {
  const auto middle = values.begin() + static_cast<ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

}  // namespace bench
