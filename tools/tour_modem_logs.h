// The tour's section of modem logs.
#pragma once

#include "tools/tour_stage.h"

namespace tools {

void tourModemLogs(TourStage& stage);

}  // namespace tools
