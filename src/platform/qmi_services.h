// The service objects of the modem's services: the vendor extension's from libqmikesext, the standard
// ones from libqmiservices.
#pragma once

#include <cstdint>

#include "platform/qmi_client.h"

extern "C" {

/// Each gives the object of the named interface version, or null when the library has another one.
qmi_idl_service_object_type kesext_vs_get_service_object_internal_v01(int32_t idl_maj_version,
                                                                      int32_t idl_min_version,
                                                                      int32_t library_version);
qmi_idl_service_object_type nas_get_service_object_internal_v01(int32_t idl_maj_version,
                                                                int32_t idl_min_version,
                                                                int32_t library_version);
qmi_idl_service_object_type dms_get_service_object_internal_v01(int32_t idl_maj_version,
                                                                int32_t idl_min_version,
                                                                int32_t library_version);
}
