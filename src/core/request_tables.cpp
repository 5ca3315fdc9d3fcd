#include "core/request_tables.h"

#include <cstddef>
#include <iterator>

#include "core/ground/hook_ids.h"
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
    {HOOK_RDE_READ, kNoElement, handleGenNvReadRequest},
    {HOOK_RDE_WRITE, kNoElement, handleGenNvWriteRequest},
    {HOOK_PROTOCOL_REVISION, 0x1C, handleNvReadRequest},
    {HOOK_NV_1C_WRITE, 0x1C, handleNvWriteRequest},
    {HOOK_SPC_VALIDATE, 0x20, handleNvReadRequest},  // answered by handleSpcResponse
    {HOOK_PFP, 0, handleMyPfpRequest},
    {HOOK_UTILITY, 0, handleUtilsRequest},
    {HOOK_NV_26_READ, 0x26, handleNvReadRequest},
    {HOOK_NV_26_WRITE, 0x26, handleNvWriteRequest},
    {HOOK_NV_27_READ, 0x27, handleNvReadRequest},
    {HOOK_NV_27_WRITE, 0x27, handleNvWriteRequest},
    {HOOK_NV_2713_READ, 0x2713, handleNvReadRequest},
    {HOOK_NV_2713_WRITE, 0x2713, handleNvWriteRequest},
    {HOOK_NV_25_READ, 0x25, handleNvReadRequest},
    {HOOK_NV_25_WRITE, 0x25, handleNvWriteRequest},
};

constexpr HookTableRow genericHookTable[] = {
    {HOOK_SILENT_REBOOT, 0, handleSilentRebootRequest},
    {HOOK_SYS_INFO_FILTER, 0, handleSysInfoFilter},
    {HOOK_DATA_PLMN, 0, handleDataPlmnRequest},
    {HOOK_SIGNAL_COVERAGE, 0, handleSigCovRequest},
    {HOOK_SIGNAL_COVERAGE_SELECTOR, 0, handleSigCovSelectorRequest},
    {HOOK_PLMN_NAME, 0, handlePlmnNameRequest},
    {HOOK_ANTENNA_TUNING, 0, kesext_hook_set_antenna_tuning},
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
