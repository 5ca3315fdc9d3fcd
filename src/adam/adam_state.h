// What modem log collection keeps between indications.
#pragma once

#include <ctime>

#include "adam/reassembly.h"

namespace kesext {

struct AdamState {
  Reassembly reassembly;
  bool directory_ready = false;  // the log directory was made or found
  time_t last_handoff = 0;       // to the drop-box; until then the first finished package, 0 before it
};

/// Only the indication thread uses it.
extern AdamState adam_state;

}  // namespace kesext
