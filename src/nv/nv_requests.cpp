#include "nv/nv_requests.h"

#include <cstring>

#include "core/ground/hex_text.h"
#include "core/ground/log.h"
#include "core/ground/message_buffer.h"
#include "core/ground/parent_pipes.h"
#include "nv/element_payload.h"

namespace kesext {

namespace {

constexpr bool sizesFitRdeData() {
  for (const NvResponseRow& row : nvResponseHandlerTable)
    if (row.data_size > kRdeDataMax) return false;
  return true;
}
static_assert(sizesFitRdeData());

const NvResponseRow* findNvResponse(uint32_t msg_id) {
  return findRow(nvResponseHandlerTable, &NvResponseRow::msgId, msg_id);
}

}  // namespace

int handleNvReadRequest(const HookRequest& request, uint32_t rde_index, uint32_t) {
  RdeReadRequest read{};
  RdeReadResponse response;
  LOGE("NV Read RdeId %d", rde_index);
  read.rde_index = rde_index;
  if (sendVendor(kRdeRead, read, response) != 0) {
    sendStatusResponse(&request, HOOK_STATUS_FAILURE);
    return 0;
  }
  if (const NvResponseRow* row = findNvResponse(request.msgId()))
    row->builder(request, response, row->data_size);
  return 0;
}

void handleNvResponse(const HookRequest& request, const RdeReadResponse& response, uint32_t data_size) {
  const uint32_t msg_id = request.msgId();
  LOGE("handleNvResponse for id %x, dataSize-%d, respSize-%d", msg_id, data_size, response.length);
  const NvResponseRow* row = findNvResponse(msg_id);
  const bool expected = row != nullptr && row->builder == handleNvResponse;
  const HookResponse record =
      HookResponse::cdma({.msgId = msg_id,
                          .msgLen = static_cast<int32_t>(data_size),
                          .status = expected ? HOOK_STATUS_SUCCESS : HOOK_STATUS_FAILURE});
  if (!record) {
    LOGE("handleNvResponse: out of memory!");
    sendStatusResponse(&request, HOOK_STATUS_FAILURE);
    return;
  }
  if (expected) {
    std::memcpy(record.payload(), response.data, data_size);
    LOGE("handleNvRsp: data is %d for msgId 0x%x", record.payload()[0], msg_id);
  } else {
    LOGE("This should not happen");
  }
  LOGE("handleNvRsp: response hexdump for p_respHdr->msgId 0x%x...", msg_id);
  hexDump(record.data(), record.size());
  writeToParent(record.data(), record.size());
}

void handleSpcResponse(const HookRequest& request, const RdeReadResponse& response, uint32_t data_size) {
  LOGE("handleSpcResponse for id %x, respSize-%d", request.msgId(), response.length);
  const auto code_length = static_cast<uint32_t>(request.msgLen());
  const bool matches = code_length == data_size && response.length == code_length &&
                       std::memcmp(request.payload(), response.data, code_length) == 0;
  sendStatusResponse(&request, matches ? HOOK_STATUS_SUCCESS : HOOK_STATUS_FAILURE);
}

int handleNvWriteRequest(const HookRequest& request, uint32_t rde_index, uint32_t) {
  const auto length = static_cast<uint32_t>(request.msgLen());
  if (!fitsRdeData(length)) {
    LOGE("Data more than buffer size %d", length);
    sendStatusResponse(&request, HOOK_STATUS_FAILURE);
    return 0;
  }
  RdeWriteRequest write{.rde_index = rde_index, .length = length, .data_len = length};
  std::memcpy(write.data, request.payload(), length);
  LOGE("NV write RdeId: %d length %d", rde_index, length);
  RdeWriteResponse response;
  const int32_t sent = sendVendor(kRdeWrite, write, response);
  if (sent != 0 || response.result != 0) {
    LOGE("NV write Err RdeId=%d, Err=%d, resp_type=%d", rde_index, sent, response.error);
    sendStatusResponse(&request, HOOK_STATUS_FAILURE);
    return 0;
  }
  sendStatusResponse(&request, HOOK_STATUS_SUCCESS);
  return 0;
}

int handleGenNvReadRequest(const HookRequest& request, uint32_t, uint32_t) {
  const ElementPayload payload = elementPayload(request);
  const RdeReadRequest read{.rde_index = payload.rde_index,
                            .record_num = payload.record_num,
                            .offset = payload.offset,
                            .length = payload.length};
  RdeReadResponse response;
  const int32_t sent = sendVendor(kRdeRead, read, response);
  if (sent != 0 || response.result != 0 || !fitsRdeData(response.length)) {
    LOGE("Gen NV Read error %d or %d", sent, response.error);
    sendStatusResponse(&request, HOOK_STATUS_FAILURE);
    return 0;
  }
  LOGE("Gen NV Read %u length %u", response.rde_index, response.length);
  const HookResponse record = HookResponse::cdma(
      {.msgId = request.msgId(),
       .msgLen = static_cast<int32_t>(sizeof(ElementPayload) + response.length + kElementZerosSize),
       .status = HOOK_STATUS_SUCCESS});
  if (!record) {
    LOGE("handleGenNvReadRequest: out of memory!");
    sendStatusResponse(&request, HOOK_STATUS_FAILURE);
    return 0;
  }
  const ElementPayload words{response.rde_index, response.record_num, response.offset, response.length};
  std::memcpy(record.payload(), &words, sizeof words);
  std::memcpy(record.payload() + sizeof words, response.data, response.length);
  writeToParent(record.data(), record.size());
  return 0;
}

int handleGenNvWriteRequest(const HookRequest& request, uint32_t, uint32_t) {
  const ElementPayload payload = elementPayload(request);
  if (!fitsRdeData(payload.length)) {
    LOGE("Data more than buffer size %d", payload.length);
    return 0;
  }
  RdeWriteRequest write{.rde_index = payload.rde_index,
                        .record_num = payload.record_num,
                        .offset = payload.offset,
                        .length = payload.length,
                        .data_len = payload.length};
  std::memcpy(write.data, elementData(request), payload.length);
  LOGE("Gen NV Write RdeId %u, rec num %d, offset %d, len %d. hexdump...", write.rde_index, write.record_num,
       write.offset, write.length);
  hexDump(write.data, write.length);
  RdeWriteResponse response;
  const int32_t sent = sendVendor(kRdeWrite, write, response);
  if (sent != 0 || response.result != 0) {
    LOGE("Gen NV write error %d result %d, for element %u", sent, response.result, write.rde_index);
    sendStatusResponse(&request, HOOK_STATUS_FAILURE);
    return 0;
  }
  LOGE("Gen NV Write success for element %u", write.rde_index);
  sendStatusResponse(&request, HOOK_STATUS_SUCCESS);
  return 0;
}

}  // namespace kesext
