#include "tools/bench/station.h"

#include <fmt/format.h>
#include <poll.h>
#include <sys/fsuid.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

#include "handset/message_table.h"
#include "platform/host/frame.h"
#include "tools/bench/console.h"
#include "tools/bench/interruption.h"
#include "tools/bench/modem_memory.h"
#include "tools/text/usage_error.h"

namespace tools {

namespace {

using handset::Bytes;
using handset::ByteView;
using handset::Instant;
using Clock = std::chrono::steady_clock;

constexpr size_t kLastLines = 8;
/// A process that closes its pipes is given this long to end.
constexpr handset::Millis kGrace{500};
/// The longest that the process may take is a start: what it gives the services, and the modem for 5
/// messages; a request has up to 23 of those, when it programs the NAM. Then there is what a slow machine
/// takes.
constexpr std::chrono::seconds kVendorWait{500};
constexpr std::chrono::seconds kCarrierWait{25};
constexpr handset::Millis kPatience =
    kVendorWait + 2 * kCarrierWait + 5 * handset::kProcessPatience + std::chrono::minutes(1);
static_assert(kPatience > 23 * handset::kProcessPatience);

/// The last log line of a process that is not served by a service, and what that means.
struct ServiceWait {
  std::string_view line;
  std::string_view missing;
  std::chrono::seconds patience;
};
constexpr ServiceWait kServiceWaits[] = {
    {": sprint_client_init: wait for server to come up.", "nas or dms", kCarrierWait},
    {": qmi_kesext_hook_client_init: wait for server to come up.", "vendor", kVendorWait}};

/// Throws UsageError when the process, which becomes another user where it can, could not enter a folder on
/// the way.
void needReach(const std::filesystem::path& folder, std::string_view instead) {
  constexpr uid_t kRadioUser = 1001;
  if (geteuid() != 0) return;
  // The kernel judges for this thread as it will for the process.
  setfsuid(kRadioUser);
  std::filesystem::path refused;
  std::filesystem::path way;
  for (const std::filesystem::path& part : std::filesystem::absolute(folder)) {
    way /= part;
    struct stat ignored {};
    if (refused.empty() && stat((way / ".").c_str(), &ignored) != 0 && errno == EACCES) refused = way;
  }
  setfsuid(0);
  if (!refused.empty())
    throw UsageError(fmt::format("the process runs as user {}, who may not enter {}: chmod o+x {}, or {}",
                                 kRadioUser, refused.string(), refused.string(), instead));
}

handset::Folder openFolder(const std::string& root) {
  if (root.empty()) {
    std::error_code error;
    const std::filesystem::path temporary = std::filesystem::temp_directory_path(error);
    if (error) throw UsageError("there is no folder for temporary files: set TMPDIR to one");
    needReach(temporary, "set TMPDIR to another folder");
    return {};
  }
  needReach(root, "take another --root");
  try {
    return handset::Folder(root);
  } catch (const std::filesystem::filesystem_error& error) {
    throw UsageError(fmt::format("{} cannot be a handset folder: {}", root, error.code().message()));
  }
}

}  // namespace

std::string describeEnd(int status) {
  if (status >= 0) return fmt::format("the process has ended with status {}", status);
  return fmt::format("the process was ended by signal {} ({})", -status, strsignal(-status));
}

Station::Station(const StationOptions& options) : Station(options, holdOffInterruption()) {}

Station::Station(const StationOptions& options, const std::unique_lock<std::recursive_mutex>& /*held*/)
    : options_(options), folder_(openFolder(options.root)), modem_(folder_.root()) {
  const bool temporary = options_.root.empty();
  if (temporary) removeInTheEnd(folder_.root());
  if (!temporary) keepModem(folder_, modem_);
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
  if (!temporary) removeInTheEnd(folder_.path(host::kModemSocketPath));
}

Station::~Station() {
  process_.reset();
  const auto held = holdOffInterruption();
  // Once this modem has gone, the socket may be another's.
  if (!options_.root.empty()) removeInTheEnd("");
  modem_.stop();
}

handset::Parent& Station::process() {
  if (!process_) throw ProcessTrouble("no process has been started");
  return *process_;
}

void Station::start() {
  {
    const auto held = holdOffInterruption();
    try {
      process_.emplace(handset::ParentOptions{.executable = options_.executable,
                                              .handset_root = folder_.root(),
                                              .instance_id = options_.instance_id});
    } catch (const std::system_error& error) {
      throw ProcessTrouble(fmt::format("the process cannot be started: {}", error.what()));
    }
    killInTheEnd(process_->pid());
  }
  constexpr std::string_view kServing = "Child process waiting for data";
  const Instant began = Clock::now();
  bool serves = process_->waitForLog(kServing, kUsualWait);
  if (!serves && Clock::now() - began >= kUsualWait) {
    complain("hookctl: " + stillWaiting());
    serves = process_->waitForLog(kServing, kPatience);
  }
  if (!serves) throw trouble("the process did not come to serve requests");
}

std::optional<int> Station::end() {
  process_->closeRequests();
  if (const std::optional<int> status = waitForEnd(kUsualWait)) return status;
  // It goes through with a request that nobody waits for any more.
  complain("hookctl: " + stillWaiting());
  return waitForEnd(kPatience);
}

std::optional<int> Station::waitForEnd(handset::Millis timeout) {
  const std::optional<int> status = process_->wait(timeout);
  // One that an interruption has just killed is no trouble: that does not let go before the tool ends.
  const auto held = holdOffInterruption();
  return status;
}

bool Station::waitForAnswer(handset::Millis timeout, Happenings* messages) {
  const Instant until = Clock::now() + timeout;
  pollfd watched[] = {{process_->responsesFd(), POLLIN, 0},
                      {messages != nullptr ? process_->unsolicitedFd() : -1, POLLIN, 0}};
  while (watched[0].revents == 0) {
    const auto left = std::chrono::ceil<handset::Millis>(until - Clock::now());
    if (left <= handset::Millis::zero()) return false;
    if (poll(watched, std::size(watched), static_cast<int>(left.count())) <= 0 || watched[1].revents == 0)
      continue;
    while (std::optional<Bytes> message = process_->nextUnsolicited(handset::Millis::zero()))
      messages->push_back({Clock::now(), std::move(*message)});
    if ((watched[1].revents & POLLHUP) != 0) watched[1].fd = -1;
  }
  return true;
}

Answer Station::ask(ByteView request, Happenings* messages) {
  const Instant asked = Clock::now();
  std::optional<Bytes> answer;
  if (process_->send(request, kUsualWait)) {
    if (!waitForAnswer(kUsualWait, messages)) {
      complain("hookctl: " + stillWaiting());
      waitForAnswer(kPatience, messages);
    }
    answer = process_->nextResponse(handset::Millis::zero());
  }
  if (!answer) throw trouble("no answer came");
  return {std::move(*answer), asked, Clock::now()};
}

void Station::needOwnModem(std::string_view instead) const {
  if (modem_is_shared_)
    throw UsageError(fmt::format("the modem in {} is another tool's: {}", folder_.root(), instead));
}

std::string Station::stillWaiting() {
  const std::string text = fmt::format("still waiting, after {} s: ", kUsualWait.count() / 1000);
  const auto message = modem_is_shared_ ? std::nullopt : modem_.waitedFor();
  const auto patience = handset::kProcessPatience.count() / 1000;
  const std::vector<std::string> lines = process_->logs();
  for (const ServiceWait& wait : kServiceWaits)
    if (!message && !lines.empty() && lines.back().ends_with(wait.line))
      return text + fmt::format("the modem does not publish {}; the process gives it {} s", wait.missing,
                                wait.patience.count());
  if (!message) return text + fmt::format("the process gives the modem {} s for each message", patience);
  return text + fmt::format("the modem has not answered {}; the process gives it {} s",
                            handset::messageName(message->first, message->second), patience);
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
