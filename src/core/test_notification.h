// The modem's test indication, answered with a numbered text.
#pragma once

#include <cstdint>

#include "platform/qmi_client.h"

namespace kesext {

/// Handler of the test indication, whose contents are not read: sends the next notification to the parent.
int sendUnsolNotify(qmi_client_type client, uint32_t indication_id, const uint8_t* buffer,
                    uint32_t buffer_length, void* callback_data);

}  // namespace kesext
