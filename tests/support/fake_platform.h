// What the unit tests put in place of the log, the modem and the clock, and into the way of file calls.
#pragma once

#include <cstdint>
#include <ctime>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace kesext_test {

/// Lines logged since the last clear, as "E text" or "D text".
extern std::vector<std::string> fake_log;

/// One request that the code under test sent.
struct FakeSend {
  uint32_t msg_id = 0;
  std::vector<uint8_t> request;
  uint32_t response_length = 0;
};
extern std::vector<FakeSend> fake_sends;

/// Answers requests: fills the response and returns the send's result.
extern std::function<int32_t(const FakeSend& sent, uint8_t* response)> fake_modem;

/// Whether allocations of messages fail.
extern bool fake_out_of_memory;

/// The present time in seconds; the machine's own without a value.
extern std::optional<time_t> fake_time;

/// Gives for each stat, symlink, rename and readdir, before it is done, the error number that it fails with,
/// or 0.
extern std::function<int(const std::string& call)> fake_call_error;

/// What the next waits for a descriptor give before they really wait; a failure is an interruption.
extern std::vector<int> fake_polls;

/// Back to an empty log, no sends, a modem that answers zeros, the machine's time and its calls.
void resetFakes();

}  // namespace kesext_test
