// Packets of modem log packages: into the package's file, or on to the parent.
#pragma once

#include "adam/utility_records.h"

namespace kesext {

/// Handles one packet: one indication of the type that carries them.
void adamIndHndlr(const utils_ind_msg_v01& record);

/// Forwards a package of performance indicators to the parent.
void adam_handle_kpi_data(const adam_packet& packet);

}  // namespace kesext
