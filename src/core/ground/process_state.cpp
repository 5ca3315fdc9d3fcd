#include "core/ground/process_state.h"

int32_t kes_ext_instance_id = 0;

namespace kesext {

ProcessState process_state;

}  // namespace kesext
