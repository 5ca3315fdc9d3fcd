// After a crash of the kernel or the modem, the modem is told to verify the SIM PIN by itself.
#pragma once

#include <cstdint>

namespace kesext {

/// Decides from what the kernel publishes whether there was a crash, and sends the notice if so. 0, or -1
/// when sending failed. Called once, at start-up, on the main thread.
int32_t notify_auto_verify_sim_pin();

}  // namespace kesext
