// What the command line fixes for the life of the process.
#pragma once

#include <cstdint>

/// Which of the handset's modems this process serves. Exported, so that the handset's libraries can read it.
extern "C" [[gnu::visibility("default")]] int32_t kes_ext_instance_id;

namespace kesext {

/// The pipes to the parent, -1 while unknown. Written by the main thread before any other thread exists.
struct ProcessState {
  int32_t request_pipe = -1;
  int32_t response_pipe = -1;
  int32_t unsolicited_pipe = -1;
};

extern ProcessState process_state;

}  // namespace kesext
