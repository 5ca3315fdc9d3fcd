// Results of the modem link. Any other value is the modem's own code.
#pragma once

#include "platform/qmi_client.h"

namespace host {

inline constexpr qmi_client_error_type kDone = 0;
/// A bad argument, or an error of this machine.
inline constexpr qmi_client_error_type kLocalError = -1;
/// No such service, or the link to the modem is gone.
inline constexpr qmi_client_error_type kNoService = -2;
inline constexpr qmi_client_error_type kTimedOut = -3;
/// The response or indication did not decode.
inline constexpr qmi_client_error_type kNotDecoded = -4;

}  // namespace host
