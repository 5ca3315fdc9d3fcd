#include "core/request_tables.h"

#include <cstddef>
#include <iterator>
#include <utility>

#include "core/ground/hook_ids.h"
#include "core/ground/table.h"
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

static_assert(std::size(cdmaHookFallbackTable) == 15);
static_assert(keysAreUnique(cdmaHookFallbackTable, &HookTableRow::msgId));
static_assert(std::size(genericHookTable) == 7);
static_assert(keysAreUnique(genericHookTable, &HookTableRow::msgId));

template <HookHandler&>
constexpr bool kIsFixedRead = false;
template <>
constexpr bool kIsFixedRead<handleNvReadRequest> = true;

template <size_t... Row>
constexpr bool fixedReadsAreAnswered(std::index_sequence<Row...>) {
  return ((!kIsFixedRead<cdmaHookFallbackTable[Row].handler> ||
           hasRow(nvResponseHandlerTable, &NvResponseRow::msgId, cdmaHookFallbackTable[Row].msgId)) &&
          ...);
}
static_assert(fixedReadsAreAnswered(std::make_index_sequence<std::size(cdmaHookFallbackTable)>{}));

}  // namespace

const HookTableRow* findCdmaFallback(uint32_t msg_id) {
  return findRow(cdmaHookFallbackTable, &HookTableRow::msgId, msg_id);
}

const HookTableRow* findGenericHook(uint32_t msg_id) {
  return findRow(genericHookTable, &HookTableRow::msgId, msg_id);
}

}  // namespace kesext
