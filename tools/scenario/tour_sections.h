// The sections of the tour, in its order; one section takes what the ones before have left in the modem.
#pragma once

#include "tools/scenario/tour_stage.h"

namespace tools {

void tourProperties(TourStage& stage);
void tourNvItems(TourStage& stage);
void tourCodes(TourStage& stage);
void tourCarrierSettings(TourStage& stage);
void tourLte(TourStage& stage);
void tourNam(TourStage& stage);
void tourEngineeringScreens(TourStage& stage);
void tourGenericServices(TourStage& stage);
void tourUnserved(TourStage& stage);
void tourNotifications(TourStage& stage);
void tourRfSave(TourStage& stage);
void tourModemLogs(TourStage& stage);
void tourEnd(TourStage& stage);
void tourCrash(TourStage& stage);

}  // namespace tools
