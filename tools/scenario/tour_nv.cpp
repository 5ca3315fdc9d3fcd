#include <fmt/format.h>

#include "core/ground/hook_ids.h"
#include "core/ground/hook_message.h"
#include "handset/hook_records.h"
#include "tools/scenario/tour_sections.h"

namespace tools {

using namespace handset;  // the vocabulary of records
using namespace kesext;   // the ids and the result codes

void tourNvItems(TourStage& stage) {
  stage.section("Non-volatile items: fixed elements");
  stage.ask("Write the element 0x26", "nv26 write 2A000000",
            cdmaResponse(HOOK_NV_26_WRITE, HOOK_STATUS_SUCCESS));
  stage.ask("Read it back", "nv26 read",
            cdmaResponse(HOOK_NV_26_READ, HOOK_STATUS_SUCCESS, hex("2A 00 00 00")));
  stage.ask("Write more than an element holds", fmt::format("nv27 write {}", toHex(Bytes(513, 0x11), "")),
            cdmaResponse(HOOK_NV_27_WRITE, HOOK_STATUS_FAILURE));

  stage.section("Non-volatile items: any element");
  const Bytes data = bytesOf("any twenty-one bytes.");
  stage.ask("Write an element", "rde write 10017 'text:any twenty-one bytes.'",
            cdmaResponse(HOOK_RDE_WRITE, HOOK_STATUS_SUCCESS));
  stage.ask("Read it back", "rde read 10017",
            cdmaResponse(HOOK_RDE_READ, HOOK_STATUS_SUCCESS,
                         concat(le32(10017), le32(0), le32(0), le32(21), data, Bytes(4))));
  stage.ask("Read an element that the modem does not have", "rde read 4711",
            cdmaResponse(HOOK_RDE_READ, HOOK_STATUS_FAILURE));
}

}  // namespace tools
