#include "core/request_tables.h"

#include <cstddef>
#include <iterator>

#include "generic/antenna_tuning.h"
#include "generic/data_plmn.h"
#include "generic/pfp.h"
#include "generic/plmn_name.h"
#include "generic/signal_coverage.h"
#include "generic/silent_reboot.h"
#include "generic/utility_requests.h"
#include "nv/nv_requests.h"

namespace kesext {

namespace {

constexpr uint32_t kNoElement = 0xFFFFFFFF;

constexpr HookTableRow cdmaHookFallbackTable[] = {
    {0x02000016, kNoElement, handleGenNvReadRequest},
    {0x02000015, kNoElement, handleGenNvWriteRequest},
    {0x02000007, 0x1C, handleNvReadRequest},
    {0x02000008, 0x1C, handleNvWriteRequest},
    {0x0200000A, 0x20, handleNvReadRequest},  // answered by handleSpcResponse
    {0x0200001C, 0, handleMyPfpRequest},
    {0x0200001E, 0, handleUtilsRequest},
    {0x02000017, 0x26, handleNvReadRequest},
    {0x02000018, 0x26, handleNvWriteRequest},
    {0x02000019, 0x27, handleNvReadRequest},
    {0x0200001A, 0x27, handleNvWriteRequest},
    {0x0200000D, 0x2713, handleNvReadRequest},
    {0x0200000E, 0x2713, handleNvWriteRequest},
    {0x0200000F, 0x25, handleNvReadRequest},
    {0x02000010, 0x25, handleNvWriteRequest},
};

constexpr HookTableRow genericHookTable[] = {
    {0x050019, 0, handleSilentRebootRequest},      {0x05001E, 0, handleSysInfoFilter},
    {0x060001, 0, handleDataPlmnRequest},          {0x050020, 0, handleSigCovRequest},
    {0x050029, 0, handleSigCovSelectorRequest},    {0x0A0006, 0, handlePlmnNameRequest},
    {0x05002A, 0, kesext_hook_set_antenna_tuning},
};

template <size_t N>
constexpr bool idsAreUnique(const HookTableRow (&table)[N]) {
  for (size_t i = 0; i < N; ++i)
    for (size_t j = i + 1; j < N; ++j)
      if (table[i].msgId == table[j].msgId) return false;
  return true;
}
static_assert(std::size(cdmaHookFallbackTable) == 15 && idsAreUnique(cdmaHookFallbackTable));
static_assert(std::size(genericHookTable) == 7 && idsAreUnique(genericHookTable));

template <size_t N>
const HookTableRow* find(const HookTableRow (&table)[N], uint32_t msg_id) {
  for (const HookTableRow& row : table)
    if (row.msgId == msg_id) return row.handler != nullptr ? &row : nullptr;
  return nullptr;
}

}  // namespace

const HookTableRow* findCdmaFallback(uint32_t msg_id) {
  return find(cdmaHookFallbackTable, msg_id);
}

const HookTableRow* findGenericHook(uint32_t msg_id) {
  return find(genericHookTable, msg_id);
}

}  // namespace kesext
