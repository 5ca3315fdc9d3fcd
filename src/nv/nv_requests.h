// The requests that read and write RDE elements. Each writes exactly one answer, unless said otherwise.
// Data that there is no memory for is logged, and answered with a failure.
#pragma once

#include <cstdint>
#include <iterator>

#include "core/ground/hook_ids.h"
#include "core/ground/hook_message.h"
#include "core/ground/table.h"
#include "nv/rde_messages.h"

namespace kesext {

/// Reads the element `rde_index` and answers as the request's id asks for; an id that is not in
/// nvResponseHandlerTable is not answered.
int handleNvReadRequest(const HookRequest& request, uint32_t rde_index, uint32_t reserved);

/// Writes the request's payload into the element `rde_index`.
int handleNvWriteRequest(const HookRequest& request, uint32_t rde_index, uint32_t reserved);

/// Reads the element that the payload names.
int handleGenNvReadRequest(const HookRequest& request, uint32_t argument, uint32_t reserved);

/// Writes the element that the payload names; more than kRdeDataMax bytes are not answered.
int handleGenNvWriteRequest(const HookRequest& request, uint32_t argument, uint32_t reserved);

/// Answers a fixed read with the first `data_size` bytes of the element.
void handleNvResponse(const HookRequest& request, const RdeReadResponse& response, uint32_t data_size);

/// Answers whether the request's code of `data_size` bytes is the element's.
void handleSpcResponse(const HookRequest& request, const RdeReadResponse& response, uint32_t data_size);

/// How a fixed read is answered.
struct NvResponseRow {
  uint32_t msgId;
  uint32_t data_size;  // bytes
  void (*builder)(const HookRequest& request, const RdeReadResponse& response, uint32_t data_size);
};

inline constexpr NvResponseRow nvResponseHandlerTable[] = {
    {HOOK_PROTOCOL_REVISION, 4, handleNvResponse}, {HOOK_NV_26_READ, 4, handleNvResponse},
    {HOOK_NV_27_READ, 4, handleNvResponse},        {HOOK_SPC_VALIDATE, 6, handleSpcResponse},
    {HOOK_NV_2713_READ, 4, handleNvResponse},      {HOOK_NV_25_READ, 4, handleNvResponse},
};
static_assert(std::size(nvResponseHandlerTable) == 6);
static_assert(keysAreUnique(nvResponseHandlerTable, &NvResponseRow::msgId));

}  // namespace kesext
