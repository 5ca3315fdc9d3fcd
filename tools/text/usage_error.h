// What a person asked for cannot be done as it was said.
#pragma once

#include <stdexcept>
#include <string>

namespace tools {

/// The message tells what is wrong and what would be right.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

}  // namespace tools
