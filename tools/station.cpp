#include "tools/station.h"

#include <fmt/format.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

#include "tools/usage_error.h"

namespace tools {

namespace {

using handset::Bytes;
using handset::ByteView;

constexpr size_t kLastLines = 8;
/// A process that closes its pipes is given this long to end.
constexpr handset::Millis kGrace{500};
/// Longer than the process waits for a silent modem, and for the next of its messages.
constexpr handset::Millis kAnswerTimeout{60'000};
/// An indication that the process knows nothing of, and only logs.
constexpr uint16_t kUnknownIndication = 0xFFFF;

}  // namespace

std::string describeEnd(int status) {
  if (status >= 0) return fmt::format("the process has ended with status {}", status);
  return fmt::format("the process was ended by signal {} ({})", -status, strsignal(-status));
}

Station::Station(StationOptions options)
    : options_(std::move(options)), modem_([this] {
        const auto held = holdOffInterruption();
        if (options_.root.empty()) {
          folder_.emplace();
          remove_folder_.emplace([root = folder_->root()] {
            std::error_code ignored;
            std::filesystem::remove_all(root, ignored);
          });
        } else {
          folder_.emplace(options_.root);
        }
        return folder_->root();
      }()) {
  try {
    modem_.start();
  } catch (const std::system_error& error) {
    if (error.code() != std::errc::address_in_use) throw;
    modem_is_shared_ = options_.share_modem;
    if (!modem_is_shared_)
      throw UsageError(
          fmt::format("a modem runs in {} already: end it or take another folder (send and watch can use it, "
                      "unless they are to tell it something)",
                      options_.root));
    return;
  }
  remove_socket_.emplace([socket = folder_->path("/modem.sock")] { unlink(socket.c_str()); });
}

void Station::start() {
  {
    const auto held = holdOffInterruption();
    kill_process_.reset();
    process_.emplace(handset::ParentOptions{.executable = options_.executable,
                                            .handset_root = folder_->root(),
                                            .instance_id = options_.instance_id});
    kill_process_.emplace([pid = process_->pid()] {
      kill(pid, SIGKILL);
      waitpid(pid, nullptr, 0);
    });
  }
  if (!process_->waitForLog("Child process waiting for data"))
    throw trouble("the process did not come to serve requests");
}

std::optional<int> Station::end() {
  process_->closeRequests();
  return waitForEnd(handset::kTimeout);
}

std::optional<int> Station::waitForEnd(handset::Millis timeout) {
  const std::optional<int> status = process_->wait(timeout);
  // A process that has ended is not to be killed any more: its number may be another's. One that an
  // interruption has just killed is no trouble: that does not let go before the tool ends.
  const auto held = holdOffInterruption();
  if (status) kill_process_.reset();
  return status;
}

Bytes Station::ask(ByteView request) {
  const std::optional<Bytes> answer = process_->ask(request, kAnswerTimeout);
  if (!answer) throw trouble("no answer came");
  return *answer;
}

Bytes Station::nextUnsolicited() {
  const std::optional<Bytes> message = process_->nextUnsolicited();
  if (!message) throw trouble("no unsolicited message came");
  return *message;
}

bool Station::settle() {
  const size_t mark = process_->logMark();
  if (modem_.indicate(kUnknownIndication, {}) == 0) return false;
  if (!process_->waitForLogSince(mark, fmt::format("Unsupported Indicator message {}", kUnknownIndication)))
    throw trouble("the process did not get through with the indications");
  return true;
}

ProcessTrouble Station::trouble(const std::string& what) {
  const auto held = holdOffInterruption();
  std::string text = what;
  if (const std::optional<int> status = waitForEnd(kGrace)) text += ": " + describeEnd(*status);
  text += ". It last logged:";
  const std::vector<std::string> lines = process_->logs();
  for (size_t i = lines.size() - std::min(kLastLines, lines.size()); i < lines.size(); ++i)
    text += "\n  " + lines[i];
  return ProcessTrouble(text);
}

}  // namespace tools
