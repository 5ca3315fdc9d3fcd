#include "tools/scenario/tour.h"

#include <fmt/format.h>

#include "tools/scenario/tour_sections.h"

namespace tools {

namespace {

/// What the modem holds before the process starts.
void prepareModem(TourStage& stage) {
  stage.section("What the modem holds");
  stage.tell("set rde 53 0100000000010000");
  stage.tell("set rde 8029 text:MPSS.AB.1.2-00123-M8974");
  stage.tell("set rde 8028 'text:flex 7'");
}

constexpr void (*kSections[])(TourStage&) = {tourProperties,
                                             tourNvItems,
                                             tourCodes,
                                             tourCarrierSettings,
                                             tourLte,
                                             tourNam,
                                             tourEngineeringScreens,
                                             tourGenericServices,
                                             tourUnserved,
                                             tourNotifications,
                                             tourRfSave,
                                             tourModemLogs,
                                             tourEnd,
                                             tourCrash};

}  // namespace

bool runTour(Station& station, const Console& console) {
  TourStage stage(station, console);
  prepareModem(stage);
  station.start();
  for (const auto& section : kSections)
    section(stage);
  console.section(fmt::format("{} of {} as expected", stage.steps() - stage.wrong(), stage.steps()));
  return stage.wrong() == 0;
}

}  // namespace tools
