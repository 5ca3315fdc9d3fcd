#include <fmt/format.h>

#include "core/ground/hook_ids.h"
#include "core/ground/hook_message.h"
#include "handset/hook_records.h"
#include "tools/scenario/tour_sections.h"

namespace tools {

using namespace handset;  // the vocabulary of records
using namespace kesext;   // the ids and the result codes

namespace {

/// Ids that nothing serves.
constexpr uint32_t kUnservedCdmaId = 0x02000099;
constexpr uint32_t kUnservedGenericId = 0x050077;
constexpr uint32_t kUnservedTypeAndId = 0x03050019;  // a message type that there is none of, and an id

/// The modem's answer with "Zürich Δ" in the GSM alphabet as the network's short name.
Bytes networkName() {
  constexpr size_t kNameIsValidAt = 8;
  constexpr size_t kShortNameAt = 48;
  Bytes before(kShortNameAt);
  before[kNameIsValidAt] = 1;
  const Bytes name = hex("5A 7E 72 69 63 68 20 10");
  return concat(before, le32(static_cast<uint32_t>(name.size())), name);
}

}  // namespace

void tourGenericServices(TourStage& stage) {
  stage.section("Generic services");
  stage.tell(fmt::format("answer plmn-name {}", toHex(networkName(), "")));
  stage.ask("The name of a network", "plmn 228 1", genericReply(HOOK_PLMN_NAME, bytesOf("Zürich Δ")));
  stage.tell("restore plmn-name");
  stage.ask("An antenna command", "antenna 010203", genericReply(HOOK_ANTENNA_TUNING, hex("01 02 03")));
  stage.ask("A utility request", "utility type=1 req_data=text:ping",
            cdmaResponse(HOOK_UTILITY, HOOK_STATUS_SUCCESS, bytesOf("ping")));
  stage.ask("The system-information filter", "sysinfo-filter 1",
            genericReply(HOOK_SYS_INFO_FILTER, hex("00")));
  stage.ask("PFP", "pfp", cdmaResponse(HOOK_PFP, HOOK_STATUS_SUCCESS));
  stage.tell("answer utility '00000000 02000000 0001'");
  stage.ask("Silent reboot", "silent-reboot", genericReply(HOOK_SILENT_REBOOT, hex("00 01")));
  stage.tell("restore utility");
  stage.ask("Signal coverage", "coverage-text abc", genericReply(HOOK_SIGNAL_COVERAGE, hex("00")));
  stage.ask("Signal coverage with a selector", "coverage selector=7 text=A",
            genericReply(HOOK_SIGNAL_COVERAGE_SELECTOR, hex("00")));
  const Bytes plmn(568, 0x42);
  stage.tell(fmt::format("answer data-plmn {}", toHex(plmn, "")));
  stage.ask("The data PLMN", "data-plmn", plmn);
  stage.tell("restore data-plmn");
  stage.tell("fail utility 90");
  stage.ask("The filter, and the modem fails", "sysinfo-filter 1",
            genericReply(HOOK_SYS_INFO_FILTER, hex("05")));
  stage.tell("restore utility");
}

void tourUnserved(TourStage& stage) {
  stage.section("What nothing serves");
  stage.ask("An unknown CDMA id", "raw 99000002 00000000 00000000 000000000000",
            cdmaResponse(kUnservedCdmaId, HOOK_STATUS_NOT_SUPPORTED));
  stage.ask("An unknown generic id", "raw 00050077 00000000", genericErrorReply(kUnservedGenericId));
  stage.ask("A request that cannot be used", "raw 0305001900", genericErrorReply(kUnservedTypeAndId));
}

}  // namespace tools
