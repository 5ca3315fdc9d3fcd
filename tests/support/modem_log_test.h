// The fixture for modem logs: the modem indicates, and the directory shows what became of it.
#pragma once

#include "handset/modem_logs.h"
#include "support/hook_process_test.h"

namespace kesext_test {

using handset::kLogHeader;
using handset::logPackage;
using handset::LogPacket;
using handset::logPacketIndication;
using handset::utilityIndication;

using Lines = std::vector<std::string>;

class ModemLogTest : public HookProcessTest {
 protected:
  /// Lets the modem send utility indications, and waits until they are handled. Gives what was logged for
  /// them, without priority, tag and the routing's lines.
  Lines Indicate(const std::vector<Bytes>& indications);
  /// The bytes of the file that index link 1 leads to; empty without one.
  [[nodiscard]] Bytes CurrentLog() const;
};

}  // namespace kesext_test
