// The one client of the modem's vendor extension service.
#pragma once

#include <cstdint>

#include "platform/qmi_client.h"

namespace kesext {

/// Waits until the modem publishes the service and connects to it; every indication is then handed to `route`
/// on the framework's indication thread. 0 when connected, or -1. Called once, at start-up.
int32_t qmi_kesext_hook_client_init(qmi_client_ind_cb route);

}  // namespace kesext
