#include <fmt/format.h>

#include "core/ground/hook_ids.h"
#include "handset/hook_records.h"
#include "tools/scenario/tour_sections.h"

namespace tools {

using namespace handset;  // the vocabulary of records
using namespace kesext;   // the ids

void tourNotifications(TourStage& stage) {
  stage.section("What the modem reports");
  stage.indicate("A test notification", "test",
                 cdmaUnsolicited(UNSOL_TEST_NOTIFICATION, concat(bytesOf("UNSOLNOTIFY9876-12"), Bytes(4))));
  stage.indicate("The carrier's value", "carrier-value 258",
                 cdmaUnsolicited(UNSOL_CARRIER_VALUE, hex("02 01 00 00")));
  const Bytes block(103, 0x5A);
  stage.indicate("An LTE error", fmt::format("lte-error 1 7 2 block={}", toHex(block, "")),
                 cdmaUnsolicited(UNSOL_LTE_ERROR, concat(hex("01 00 00 00  07  02 00 00 00"), block)));
  stage.indicate("A tuner event", "tuner 810103040506",
                 genericUnsolicited(0, UNSOL_TUNER_EVENT.msgId, hex("81 01 03 04 05 06")));
  const Bytes coverage(32, 0x33);
  stage.indicate("Signal coverage", fmt::format("coverage {}", toHex(coverage, "")),
                 genericUnsolicited(1, UNSOL_SIGNAL_COVERAGE.msgId, coverage));
  stage.indicate("The data PLMN changed", "data-plmn", genericUnsolicited(0, UNSOL_DATA_PLMN.msgId, {}));
  stage.indicate("PFP", "pfp rat=5 tbl_idx=9",
                 cdmaUnsolicited(UNSOL_PFP, concat(hex("00 00 05 00  09 00 00 00"), Bytes(224))));
}

}  // namespace tools
