// Where bytes are not what they should be.
#pragma once

#include <string>

#include "handset/bytes.h"

namespace tools {

/// The first bytes that differ, beside what they should be.
std::string difference(handset::ByteView received, handset::ByteView expected);

}  // namespace tools
