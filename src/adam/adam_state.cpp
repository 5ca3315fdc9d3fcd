#include "adam/adam_state.h"

namespace kesext {

AdamState adam_state;

}  // namespace kesext
