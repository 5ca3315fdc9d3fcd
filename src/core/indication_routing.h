// Routing of the vendor service's indications. Everything here runs on the framework's indication thread.
#pragma once

#include <cstdint>

#include "platform/qmi_client.h"

namespace kesext {

/// A handler of one indication id, with the arguments of the framework's callback; its result is not looked
/// at.
using IndicationHandler = int(qmi_client_type client, uint32_t indication_id, const uint8_t* buffer,
                              uint32_t buffer_length, void* callback_data);

/// Hands an indication to the carrier's handler, or else to the handler of its id.
void handleUnsolIndication(qmi_client_type client, uint32_t indication_id, const uint8_t* buffer,
                           uint32_t buffer_length, void* callback_data);

}  // namespace kesext
