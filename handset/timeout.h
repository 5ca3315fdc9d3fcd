// How long the helpers of the simulated handset wait before they give up.
#pragma once

#include <chrono>

namespace handset {

using Millis = std::chrono::milliseconds;

/// Longer than anything that works takes, so that what does not work fails instead of hanging.
inline constexpr Millis kTimeout{10000};

}  // namespace handset
