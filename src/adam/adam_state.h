// What modem log collection keeps between indications.
#pragma once

#include <ctime>

#include "adam/reassembly.h"

namespace kesext {

struct AdamState {
  Reassembly reassembly;
  bool directory_ready = false;  // the log directory exists
  time_t last_handoff = 0;       // to the drop-box; 0 until the first finished package
};

/// Only the indication thread uses it.
extern AdamState adam_state;

}  // namespace kesext
