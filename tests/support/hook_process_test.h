// The fixture for everything that crosses a pipe: the real process between a simulated modem and a parent.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "handset/bytes.h"
#include "handset/folder.h"
#include "handset/modem.h"
#include "handset/parent.h"
#include "support/golden.h"
#include "support/records.h"

namespace kesext_test {

using handset::Bytes;
using handset::concat;
using handset::hex;
using handset::le32;
using handset::Service;

/// Vendor messages by name.
inline constexpr uint16_t kRdeReadId = 0x0008;
inline constexpr uint16_t kRdeWriteId = 0x0009;

/// The bytes, cut or filled up with zeros.
Bytes sized(Bytes bytes, size_t size);

/// `count` bytes that differ from their neighbours.
Bytes pattern(size_t count, uint8_t first = 1);

class HookProcessTest : public ::testing::Test {
 protected:
  HookProcessTest();
  ~HookProcessTest() override;

  /// Starts the process beside the modem and waits until it serves requests.
  void Start(int instance_id = 0);
  /// Starts the process with a command line of its own, without waiting for anything.
  void Launch(std::vector<std::string> arguments = {"3", "4", "5", "0"});
  /// Starts it from a script of the shell, as "$0" with the arguments of instance 0 in "$@".
  void LaunchFromShell(const std::string& script);

  /// Sends a request and takes its answer; empty when there was none.
  Bytes Ask(const Bytes& request);
  /// What the process logged for the request that was asked last, from its reading to the next wait, as
  /// printed.
  std::vector<std::string> LogsOfLastRequest();
  /// The handler's part of that: without the lines of the dispatchers in front and behind, and those of the
  /// carrier's response builder.
  std::vector<std::string> HandlerLogs();
  /// Asks, and adds to the record the answer, then what the modem was sent and the handler's lines; in place
  /// of both, if given, what has one of these texts of all that was sent and logged.
  void RecordAnswer(const Bytes& request, const std::vector<std::string>& only = {});
  /// Adds to the record what the modem was sent since its requests were cleared, or what of it has a text.
  void RecordSent(const std::vector<std::string>& only = {});
  /// Lets the modem send indications, and waits until they are handled. Gives what was logged for them; what
  /// went to the parent is in `forwarded_`.
  std::vector<std::string> Indicate(uint16_t id, const std::vector<Bytes>& indications);
  /// Adds to the record what went to the parent for an indication, and what was logged.
  void RecordIndication(uint16_t id, const Bytes& indication);
  /// Whether a line with this text appeared since the fixture started, waiting for it if need be.
  bool Logs(std::string_view text);
  /// The next unsolicited message; empty when there was none.
  Bytes NextUnsolicited();
  /// How many descriptors the process has open.
  [[nodiscard]] size_t OpenDescriptors() const;
  /// Closes the request pipe and gives the exit status.
  int End();

  handset::Folder folder_;
  handset::Modem modem_;
  std::unique_ptr<handset::Parent> parent_;
  size_t asked_at_ = 0;
  std::vector<std::string> record_;
  std::vector<Bytes> forwarded_;
};

/// The process serves requests when a case begins.
class ServingTest : public HookProcessTest {
 protected:
  void SetUp() override { Start(); }
};

/// `text` as the process logs it at error priority.
std::string E(std::string_view text);
/// The same at debug priority.
std::string D(std::string_view text);

}  // namespace kesext_test
