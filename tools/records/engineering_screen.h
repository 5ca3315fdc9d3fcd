// The engineering reports as a field engineer looks at them: labelled, grouped, aligned.
#pragma once

#include <string>

#include "handset/bytes.h"

namespace tools {

/// The screen of a report's payload; a line that says so when the payload is not of a report's size.
std::string callProcessingScreen(handset::ByteView payload);
std::string evdoScreen(handset::ByteView payload);

}  // namespace tools
