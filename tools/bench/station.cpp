#include "tools/bench/station.h"

#include <fmt/format.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

#include "handset/message_table.h"
#include "tools/bench/modem_memory.h"
#include "tools/text/usage_error.h"

namespace tools {

namespace {

using handset::Bytes;
using handset::ByteView;
using handset::Instant;

constexpr size_t kLastLines = 8;
/// A process that closes its pipes is given this long to end.
constexpr handset::Millis kGrace{500};
/// Longer than the process waits for a silent modem, and for the next of its messages.
constexpr handset::Millis kAnswerTimeout{60'000};
/// An indication that the process knows nothing of, and only logs.
constexpr uint16_t kUnknownIndication = 0xFFFF;

/// Whatever else still writes there meanwhile.
void removeWhole(const std::string& folder) {
  constexpr int kTries = 100;
  std::error_code error;
  for (int i = 0; i < kTries; ++i) {
    std::filesystem::remove_all(folder, error);
    if (!std::filesystem::exists(folder, error)) return;
  }
}

void openFolder(std::optional<handset::Folder>& folder, const std::string& root) {
  try {
    folder.emplace(root);
  } catch (const std::filesystem::filesystem_error& error) {
    throw UsageError(fmt::format("{} cannot be a handset folder: {}", root, error.code().message()));
  }
}

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
          remove_folder_.emplace([root = folder_->root()] { removeWhole(root); });
        } else {
          openFolder(folder_, options_.root);
        }
        return folder_->root();
      }()) {
  const auto held = holdOffInterruption();
  if (!options_.root.empty()) keepModem(*folder_, modem_);
  try {
    modem_.start();
  } catch (const std::system_error& error) {
    if (error.code() != std::errc::address_in_use) throw;
    modem_is_shared_ = options_.share_modem;
    if (!modem_is_shared_)
      throw UsageError(fmt::format(
          "a modem runs in {} already: end it or take another folder (send, shell and watch can use "
          "it, unless send is to tell it something)",
          options_.root));
    return;
  }
  remove_socket_.emplace([socket = folder_->path("/modem.sock")] { unlink(socket.c_str()); });
}

Station::~Station() {
  process_.reset();
  kill_process_.reset();
  const auto held = holdOffInterruption();
  modem_.stop();
  remove_socket_.reset();
  folder_.reset();
  remove_folder_.reset();
}

handset::Parent& Station::process() {
  if (!process_) throw ProcessTrouble("no process has been started");
  return *process_;
}

void Station::start() {
  {
    const auto held = holdOffInterruption();
    kill_process_.reset();
    try {
      process_.emplace(handset::ParentOptions{.executable = options_.executable,
                                              .handset_root = folder_->root(),
                                              .instance_id = options_.instance_id});
    } catch (const std::system_error& error) {
      throw ProcessTrouble(fmt::format("the process cannot be started: {}", error.what()));
    }
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

Answer Station::ask(ByteView request, const std::function<void()>& still_waiting) {
  const Instant asked = std::chrono::steady_clock::now();
  std::optional<Bytes> answer = process_->ask(request, kUsualWait);
  if (!answer && std::chrono::steady_clock::now() - asked >= kUsualWait) {
    still_waiting();
    answer = process_->nextResponse(kAnswerTimeout);
  }
  if (!answer) throw trouble("no answer came");
  return {std::move(*answer), asked, std::chrono::steady_clock::now()};
}

void Station::needOwnModem(std::string_view instead) const {
  if (modem_is_shared_)
    throw UsageError(fmt::format("the modem in {} is another tool's: {}", folder_->root(), instead));
}

std::string Station::stillWaiting() {
  const std::string text = fmt::format("still waiting, after {} s: ", kUsualWait.count() / 1000);
  const auto message = modem_is_shared_ ? std::nullopt : modem_.waitedFor();
  const auto patience = handset::kProcessPatience.count() / 1000;
  if (!message) return text + fmt::format("the process gives the modem {} s for each message", patience);
  return text + fmt::format("the modem has not answered {}; the process gives it {} s",
                            handset::messageName(message->first, message->second), patience);
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
  ProcessTrouble trouble(text);
  return trouble;
}

}  // namespace tools
