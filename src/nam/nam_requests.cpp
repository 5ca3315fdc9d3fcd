#include "nam/nam_requests.h"

#include "core/ground/byte_access.h"
#include "core/ground/log.h"
#include "nam/nam_items.h"

namespace kesext {

namespace {

constexpr size_t kSidNidWords = 2 * kSidNidPairs;

struct SidNidReport {
  uint32_t words[kSidNidWords];  // SID, NID, SID, NID, ...
};
static_assert(sizeof(SidNidReport) == 160);

struct ProtocolRevisionReport {
  uint8_t revision;
  uint8_t zero[3];
};
static_assert(sizeof(ProtocolRevisionReport) == 4);

/// Where the `index`-th of the item's values stands.
constexpr size_t sidNidOffset(size_t index) {
  return 1 + 2 * index;
}
static_assert(sidNidOffset(kSidNidWords) == kSidNidItemLength);

}  // namespace

void kesext_hook_sprint_get_sid_nid_pairs(const HookRequest&, uint32_t, CarrierResponse& answer) {
  LOGE("kesext_hook_sprint_get_sid_nid_pairs:  GET SID/NID PAIRS  %d ", 0);
  NamItemBuffer buffer;
  SidNidReport report{};
  const uint32_t status = kesext_hook_sprint_get_nam_item(kSidNidItem, &buffer);
  if (status == 0)
    for (size_t i = 0; i < kSidNidWords; ++i)
      report.words[i] = loadLe16(buffer.bytes + sidNidOffset(i));
  answer.setStatus(status == 0);
  answer.put(report);
}

void kesext_hook_sprint_set_sid_nid_pairs(const HookRequest& request, uint32_t, CarrierResponse& answer) {
  LOGE("kesext_hook_sprint_set_sid_nid_pairs:  SET SID/NID PAIRS  %d ", 0);
  NamItemBuffer buffer{};
  buffer.bytes[0] = kNam;
  for (size_t i = 0; i < kSidNidWords; ++i)
    storeLe16(buffer.bytes + sidNidOffset(i), static_cast<uint16_t>(request.payloadWord(i)));
  answer.setStatus(kesext_hook_sprint_set_nam_item(kSidNidItem, kSidNidItemLength, buffer) == 0);
}

void kesext_hook_sprint_get_mob_p_pre(const HookRequest&, uint32_t, CarrierResponse& answer) {
  LOGE("%s", "Enter kesext_hook_sprint_get_mob_p_pre() \n");
  NamItemBuffer buffer;
  ProtocolRevisionReport report{};
  const uint32_t status = kesext_hook_sprint_get_nam_item(kProtocolRevisionItem, &buffer);
  if (status == 0) {
    report.revision = buffer.bytes[0];
    LOGE("get mob_cai_rev %lu ", static_cast<unsigned long>(report.revision));
  }
  answer.setStatus(status == 0);
  answer.put(report);
}

}  // namespace kesext
