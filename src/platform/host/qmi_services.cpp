#include "platform/qmi_services.h"

#include "platform/host/service_object.h"

namespace {

struct InterfaceVersion {
  int32_t major;
  int32_t minor;
  int32_t library;

  bool operator==(const InterfaceVersion&) const = default;
};

constexpr InterfaceVersion kVendorVersion{1, 1, 4};
constexpr InterfaceVersion kNasVersion{1, 133, 6};
constexpr InterfaceVersion kDmsVersion{1, 40, 6};

constexpr qmi_idl_service_object kVendorObject{host::Service::vendor};
constexpr qmi_idl_service_object kNasObject{host::Service::nas};
constexpr qmi_idl_service_object kDmsObject{host::Service::dms};

}  // namespace

qmi_idl_service_object_type kesext_vs_get_service_object_internal_v01(int32_t idl_maj_version,
                                                                      int32_t idl_min_version,
                                                                      int32_t library_version) {
  const InterfaceVersion asked{idl_maj_version, idl_min_version, library_version};
  return asked == kVendorVersion ? &kVendorObject : nullptr;
}

qmi_idl_service_object_type nas_get_service_object_internal_v01(int32_t idl_maj_version,
                                                                int32_t idl_min_version,
                                                                int32_t library_version) {
  const InterfaceVersion asked{idl_maj_version, idl_min_version, library_version};
  return asked == kNasVersion ? &kNasObject : nullptr;
}

qmi_idl_service_object_type dms_get_service_object_internal_v01(int32_t idl_maj_version,
                                                                int32_t idl_min_version,
                                                                int32_t library_version) {
  const InterfaceVersion asked{idl_maj_version, idl_min_version, library_version};
  return asked == kDmsVersion ? &kDmsObject : nullptr;
}
