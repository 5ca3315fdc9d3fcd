// The clients of the modem's standard services: NAS (network access) and DMS (device management). They take
// no indications.
#pragma once

#include <cstdint>

#include "platform/qmi_client.h"

namespace kesext {

enum CarrierClientType : int32_t { kNasClient = 1, kDmsClient = 2 };

/// Connects both clients. 0, or the last failure's code. Called once, at start-up.
int32_t qmi_kesext_sprint_client_init();

/// Connects the client of one service. 0, -1 for a null service object or an unknown type, or the framework's
/// code.
int32_t qmi_kesext_sprint_client_init_with_type(qmi_idl_service_object_type service, int32_t type);

}  // namespace kesext
