#include <fmt/format.h>

#include "core/ground/hook_ids.h"
#include "core/ground/hook_message.h"
#include "handset/hook_records.h"
#include "tools/scenario/tour_sections.h"

namespace tools {

using namespace handset;  // the vocabulary of records
using namespace kesext;   // the ids and the result codes

void tourCarrierSettings(TourStage& stage) {
  stage.section("The carrier's settings");
  stage.ask("Write the band class 10 status", "band10 set 1 spc=000000",
            codedResponse(HOOK_BAND_10_WRITE, HOOK_STATUS_SUCCESS));
  stage.ask("Read it back", "band10 get spc=000000",
            cdmaResponse(HOOK_BAND_10_READ, HOOK_STATUS_SUCCESS, le32(1)));
  stage.ask("Read the band class 14 status", "band14 get spc=000000",
            cdmaResponse(HOOK_BAND_14_READ, HOOK_STATUS_SUCCESS, le32(0)));
  stage.ask("Write the BSR timer", "bsr-timer set 30 spc=000000",
            codedResponse(HOOK_BSR_TIMER_WRITE, HOOK_STATUS_SUCCESS));
  stage.ask("Read it back", "bsr-timer get spc=000000",
            codedResponse(HOOK_BSR_TIMER_READ, HOOK_STATUS_SUCCESS, le32(30)));
  stage.ask("Update the TOT order", "tot-order set 0x04030201,0x08070605 spc=000000",
            codedResponse(HOOK_TOT_ORDER_UPDATE, HOOK_STATUS_SUCCESS));
  stage.ask("Read it back", "tot-order get spc=000000",
            codedResponse(HOOK_TOT_ORDER_READ, HOOK_STATUS_SUCCESS,
                          concat(le16(2), hex("01 02 03 04  05 06 07 08"), Bytes(52))));
  stage.ask("Write the DDTM preference", "ddtm set 1 spc=000000",
            codedResponse(HOOK_DDTM_WRITE, HOOK_STATUS_SUCCESS));
  stage.ask("Read it back", "ddtm get spc=000000",
            codedResponse(HOOK_DDTM_READ, HOOK_STATUS_SUCCESS, le32(1)));
  stage.ask("Write the LTE option", "lte-option set 030104 spc=000000",
            codedResponse(HOOK_LTE_OPTION_WRITE, HOOK_STATUS_SUCCESS));
  stage.ask("Read the LTE option, which is the start of the element 10017", "lte-option get spc=000000",
            codedResponse(HOOK_LTE_OPTION_READ, HOOK_STATUS_SUCCESS,
                          concat(hex("03 01 04"), bytesOf(" twenty-one bytes."))));
  stage.ask("A roaming list segment of 16384 bytes",
            fmt::format("prl send {} spc=000000", toHex(Bytes(16384, 0xA5), "")),
            codedResponse(HOOK_ROAMING_LIST_SEGMENT, HOOK_STATUS_SUCCESS));
  stage.ask("Switch the active profile", "profile set 2 spc=000000",
            codedResponse(HOOK_ACTIVE_PROFILE, HOOK_STATUS_SUCCESS));
  stage.ask("Factory reset", "factory-reset spc=000000",
            codedResponse(HOOK_FACTORY_RESET, HOOK_STATUS_SUCCESS));
  stage.ask("An obsolete request", "obsolete c7 spc=000000",
            codedResponse(HOOK_OBSOLETE_C7, HOOK_STATUS_NOT_SUPPORTED));
}

void tourLte(TourStage& stage) {
  stage.section("LTE and eHRPD");
  constexpr size_t kApnSize = 103;
  constexpr size_t kListSize = 1017;
  Bytes apns = concat(hex("01"), bytesOf("internet.example"));
  apns.resize(1 + kApnSize);
  apns = concat(apns, le32(1), hex("01 00 00 0A"));
  apns.resize(kListSize);
  stage.ask("The active eHRPD APN list", "apn-list spc=000000",
            codedResponse(HOOK_EHRPD_APN_LIST, HOOK_STATUS_SUCCESS, apns));

  const Bytes before_tx_power = hex("02000000 3601 7800 2C1B0A00 03 03 29680000 D9210000 C2 A1FF F7");
  stage.ask("LTE data in service", "lte-data spc=000000",
            codedResponse(HOOK_LTE_DATA, HOOK_STATUS_SUCCESS, concat(before_tx_power, hex("DDFFFFFF"))));
  stage.tell("answer transmit-and-receive-information '01000000 5D000000'");
  stage.ask("LTE data without a radio", "lte-data spc=000000",
            codedResponse(HOOK_LTE_DATA, HOOK_STATUS_SUCCESS, concat(before_tx_power, Bytes(4))));
  stage.tell("restore transmit-and-receive-information");
}

}  // namespace tools
