// A NAM record to program a handset with, for the tour and the tests.
#pragma once

#include "nam/nam_info.h"

namespace handset {

/// Well formed in every field, with the code 000000.
kesext::NamInfo exampleNam();

}  // namespace handset
