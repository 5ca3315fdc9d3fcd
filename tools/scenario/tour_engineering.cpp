#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "core/ground/hook_ids.h"
#include "core/ground/hook_message.h"
#include "handset/hook_records.h"
#include "nam/engineering_records.h"
#include "tools/records/engineering_screen.h"
#include "tools/scenario/tour_sections.h"

namespace tools {

using namespace handset;  // the vocabulary of records
using namespace kesext;   // the ids and the result codes

namespace {

/// Lets the modem answer with the text of a record.
template <typename Record>
void tellEngineeringText(TourStage& stage, const Record& record) {
  const Bytes text = bytesOf(toHex(recordBytes(record), ""));
  const Bytes body = concat(le32(0), le32(0), le32(static_cast<uint32_t>(text.size())), text);
  stage.tell(fmt::format("answer engineering-information {}", toHex(body, "")));
}

void tourCallProcessing(TourStage& stage) {
  CpStatusRecord cp{};
  cp.fer = 12;
  cp.activePilotCount = 2;
  cp.neighborPilotCount = 3;
  cp.bestActivePilot = 168;
  cp.bestActiveStrength = 14;
  cp.sid = 4183;
  cp.nid = 65535;
  cp.channel = 476;
  cp.serviceOption = 3;
  cp.PRevInUse = 6;
  cp.band = 1;
  cp.txPower = -17;
  cp.rssi = 83;
  cp.bid = 2201;
  cp.bsLat = 469'000;
  cp.bsLon = 1'687'000;
  const uint16_t active[] = {168, 172};
  const uint16_t neighbors[] = {12, 24, 36};
  for (size_t i = 0; i < std::size(active); ++i)
    cp.activeSetPn[i] = active[i];
  for (size_t i = 0; i < std::size(neighbors); ++i)
    cp.neighborSetPn[i] = neighbors[i];
  CpStatusReport cp_report{.fer = 12,
                           .bestActivePilot = 168,
                           .bestActiveStrength = 14,
                           .sid = 4183,
                           .nid = 65535,
                           .channel = 476,
                           .serviceOption = 3,
                           .txPower = -17,
                           .band = 1,
                           .activePilotCount = 2,
                           .neighborPilotCount = 3,
                           .rssi = 83,
                           .pRevInUseAbove5 = 1,
                           .PRevInUse = 6,
                           .bid = 2201,
                           .bsLat = 469'000,
                           .bsLon = 1'687'000};
  for (size_t i = 0; i < std::size(active); ++i)
    cp_report.activeSetPn[i] = active[i];
  for (size_t i = 0; i < std::size(neighbors); ++i)
    cp_report.neighborSetPn[i] = neighbors[i];
  tellEngineeringText(stage, cp);
  stage.ask("Call processing", "engineering cp spc=000000",
            cdmaResponse(HOOK_CALL_PROCESSING_DATA, HOOK_STATUS_SUCCESS, recordBytes(cp_report)));
  stage.show(callProcessingScreen(stage.lastPayload()));
}

void tourEvdo(TourStage& stage) {
  EvdoStatusRecord evdo{};
  evdo.hdrChanNum = 100;
  evdo.uatiColorCode = 21;
  evdo.txUati = 0x00C0FFEE;
  evdo.pilotPn = 168;
  evdo.hdrRssi = 79;
  evdo.measPkts = 1000;
  evdo.errPkts = 3;
  evdo.sessionState = 2;
  evdo.atState = 1;
  evdo.macIndex = 64;
  evdo.pilotEnergy = -200;
  evdo.drcCover = 1;
  evdo.sinr = 11;
  evdo.sectorIds[0] = 0x20;
  evdo.sectorIds[1] = 0x01;
  EvdoStatusReport evdo_report{.hdrChanNum = 100,
                               .uatiColorCode = 21,
                               .txUati = 0x00C0FFEE,
                               .pilotPn = 168,
                               .hdrRssi = 79,
                               .measPkts = 1000,
                               .errPkts = 3,
                               .sessionState = 2,
                               .atState = 1,
                               .macIndex = 64,
                               .sectorIds = {0x20, 0x01},
                               .pilotEnergy = -200,
                               .drcCover = 1,
                               .sinr = 11};
  tellEngineeringText(stage, evdo);
  stage.ask("EVDO", "engineering evdo spc=000000",
            cdmaResponse(HOOK_EVDO_DATA, HOOK_STATUS_SUCCESS, recordBytes(evdo_report)));
  stage.show(evdoScreen(stage.lastPayload()));
}

}  // namespace

void tourEngineeringScreens(TourStage& stage) {
  stage.section("Field test: the engineering screens");
  tourCallProcessing(stage);
  tourEvdo(stage);
  stage.tell("restore engineering-information");
}

}  // namespace tools
