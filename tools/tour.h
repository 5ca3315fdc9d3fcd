// The tour: requests to the real process beside the simulated modem, each with its expectation.
#pragma once

#include <string>

#include "tools/console.h"

namespace tools {

/// Runs all of it against the executable, in a handset folder of its own. True when every answer was as it
/// should be.
bool runTour(const std::string& executable, const Console& console);

}  // namespace tools
