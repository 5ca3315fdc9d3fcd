// The tour: requests to the real process beside the simulated modem, each with its expectation.
#pragma once

#include "tools/bench/console.h"
#include "tools/bench/station.h"

namespace tools {

/// Runs all of it at a station with a fresh folder. True when every answer was as it should be. Throws
/// ProcessTrouble when it could not go on.
bool runTour(Station& station, const Console& console);

}  // namespace tools
