// Time in the simulated handset, and how long its helpers wait before they give up.
#pragma once

#include <chrono>

namespace handset {

using Millis = std::chrono::milliseconds;
/// A moment of this machine's time, which never goes back.
using Instant = std::chrono::steady_clock::time_point;

/// Longer than anything that works takes, so that what does not work fails instead of hanging.
inline constexpr Millis kTimeout{10000};

}  // namespace handset
