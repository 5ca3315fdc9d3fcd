// Writing to the parent. The response pipe belongs to the dispatch loop's thread, the unsolicited pipe to the
// modem's indication thread; one message is one write, so no lock guards either.
#pragma once

#include <cstdint>

#include "core/ground/hook_ids.h"
#include "core/ground/hook_message.h"

namespace kesext {

/// Writes one message on the response pipe. 1, or 0 when the write failed, which has then been logged.
int writeToParent(const uint8_t* message, uint32_t length);

/// The same on the unsolicited pipe.
int writeUnsolToParent(const uint8_t* message, uint32_t length);

/// Answers a CDMA request (null: id 0) with a 20-byte record that holds nothing but a status. Needs no
/// memory.
void sendStatusResponse(const HookRequest* request, uint32_t status);

/// Answers a generic request with `length` bytes of payload; without memory, which is logged, with a failure.
void sendGenericReply(const HookRequest& request, const uint8_t* payload, uint32_t length);

/// Answers a generic request with a status as its one byte of payload. Needs no memory.
void sendGenericStatus(const HookRequest& request, uint8_t status);

/// Answers an unusable or unserved request: its first four bytes, then a length of -1. Needs no memory.
void sendGenericErrorResponse(const uint8_t* buffer);

/// Sends an unsolicited message of CDMA form: status 0, `length` bytes of payload, two zero bytes. False when
/// there was no memory.
bool sendCdmaUnsol(uint32_t msg_id, const void* payload, uint32_t length);

/// Sends an unsolicited message of generic form: `length` bytes of payload, twelve zero bytes. False when
/// there was no memory.
bool sendGenericUnsol(const GenericUnsolId& id, const void* payload, uint32_t length);

}  // namespace kesext
