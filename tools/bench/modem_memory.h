// What the modem was told and what was written, kept in a handset folder: modem.txt holds the lines that
// `hookctl modem` would have to be told to bring a fresh modem there.
#pragma once

#include "handset/folder.h"
#include "handset/modem.h"

namespace tools {

/// Tells the modem what the folder has kept, and from here on keeps there what it is told and what is
/// written. A line that cannot be told is complained of and left out. The folder has to outlive the modem.
void keepModem(const handset::Folder& folder, handset::Modem& modem);

}  // namespace tools
