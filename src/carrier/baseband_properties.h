// The system properties that describe the modem's configuration, published once at start-up.
#pragma once

namespace kesext {

/// Publishes the LTE band configuration, "0" when it cannot be read.
void kes_qmi_read_lte_bc_config();

/// Publishes the number and the text of the modem's configuration version: "Unknown" for a number, and no
/// text, that cannot be had.
void kes_qmi_read_baseband_config_version();

}  // namespace kesext
