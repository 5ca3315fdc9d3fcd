// Saving the modem's RF data: the region of memory that it shares is copied to a flash partition on its
// request.
#pragma once

#include <cstdint>

#include "platform/qmi_client.h"

namespace kesext {

/// Tells the modem that it may ask for saves. Called once, at start-up, by the first instance.
void dhob_send_ready();

/// Starts a save on a thread of its own; only in the first instance. 0 at once.
int dhob_ind_handler(qmi_client_type client, uint32_t indication_id, const uint8_t* buffer,
                     uint32_t buffer_length, void* callback_data);

/// One save, which always ends in an answer to the modem. While one runs, others are refused.
void dhob_write();

}  // namespace kesext
