// The requests that read and write RDE elements. Each writes exactly one answer, unless said otherwise.
#pragma once

#include <cstdint>

#include "core/ground/hook_message.h"
#include "nv/rde_messages.h"

namespace kesext {

/// Reads the element `rde_index` and answers as the request's id asks for.
int handleNvReadRequest(const HookRequest* request, uint32_t rde_index, uint32_t reserved);

/// Writes the request's payload into the element `rde_index`.
int handleNvWriteRequest(const HookRequest* request, uint32_t rde_index, uint32_t reserved);

/// Reads the element that the payload names.
int handleGenNvReadRequest(const HookRequest* request, uint32_t argument, uint32_t reserved);

/// Writes the element that the payload names; more than kRdeDataMax bytes are not answered.
int handleGenNvWriteRequest(const HookRequest* request, uint32_t argument, uint32_t reserved);

/// Answers a fixed read with the first `data_size` bytes of the element. A null pointer is not answered.
void handleNvResponse(const HookRequest* request, const RdeReadResponse* response, uint32_t data_size);

/// Answers whether the request's code of `data_size` bytes is the element's. A null pointer is not answered.
void handleSpcResponse(const HookRequest* request, const RdeReadResponse* response, uint32_t data_size);

}  // namespace kesext
