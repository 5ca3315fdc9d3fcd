// The engineering reports as a field engineer looks at them: grouped, aligned, for a window of any width.
#pragma once

#include <string>
#include <vector>

#include "tools/records/decode.h"

namespace tools {

/// A report's answer; why there is none, if so.
struct EngineeringReport {
  DecodedRecord answer;
  std::string trouble;
};

/// The rows of both screens, what matters most first, of up to `columns` characters; fewer, but without
/// columns, when they are not `aligned`.
std::vector<std::string> engineeringRows(const EngineeringReport& call_processing,
                                         const EngineeringReport& evdo, size_t columns, bool aligned);

}  // namespace tools
