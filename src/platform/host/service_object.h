// What stands behind the service objects here: a service's number on the modem link.
#pragma once

#include "platform/host/frame.h"
#include "platform/qmi_client.h"

struct qmi_idl_service_object {
  host::Service service;
};
