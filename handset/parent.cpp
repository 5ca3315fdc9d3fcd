#include "handset/parent.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/eventfd.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <stdexcept>
#include <system_error>

#include "handset/modem_logs.h"

namespace handset {
namespace {

using Clock = std::chrono::steady_clock;

constexpr size_t kReadSize = size_t{64} * 1024;
constexpr Millis kExitTimeout{2000};

// An unsolicited message: its payload's length in bytes stands here, and so much comes on top of it.
constexpr size_t kUnsolicitedLengthAt = 12;
constexpr size_t kUnsolicitedOverhead = 28;
constexpr uint32_t kUnsolicitedLengthMax = 1024 * 1024;

// The child's ends are kept above the numbers that it gets them at, so that none overwrites another.
constexpr int kChildFdMin = 16;

void check(int error, const std::string& what) {
  if (error != 0) throw std::system_error(error, std::generic_category(), what);
}

struct Pipe {
  host::UniqueFd read;
  host::UniqueFd write;
};

Pipe makePipe() {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) check(errno, "pipe2");
  return {host::UniqueFd(ends[0]), host::UniqueFd(ends[1])};
}

host::UniqueFd moveUp(host::UniqueFd fd) {
  host::UniqueFd moved(fcntl(fd.get(), F_DUPFD_CLOEXEC, kChildFdMin));
  if (!moved) check(errno, "F_DUPFD_CLOEXEC");
  return moved;
}

std::vector<std::string> environmentOf(const ParentOptions& options) {
  constexpr std::string_view kRoot = "HANDSET_ROOT=";
  std::vector<std::string> all{std::string(kRoot) + options.handset_root};
  for (char** entry = environ; *entry != nullptr; ++entry)
    if (!std::string_view(*entry).starts_with(kRoot)) all.emplace_back(*entry);
  return all;
}

std::vector<std::string> argumentsOf(const ParentOptions& options) {
  std::vector<std::string> all{options.executable};
  if (options.arguments) {
    all.insert(all.end(), options.arguments->begin(), options.arguments->end());
    return all;
  }
  for (const int number : {kChildRequestsFd, kChildResponsesFd, kChildUnsolicitedFd, options.instance_id}) {
    all.push_back(std::to_string(number));
  }
  return all;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts)
    pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

class SpawnSettings {
 public:
  SpawnSettings() {
    check(posix_spawn_file_actions_init(&actions_), "posix_spawn");
    check(posix_spawnattr_init(&attributes_), "posix_spawn");
    sigset_t set;
    sigemptyset(&set);
    check(posix_spawnattr_setsigmask(&attributes_, &set), "posix_spawn");
    sigaddset(&set, SIGPIPE);
    check(posix_spawnattr_setsigdefault(&attributes_, &set), "posix_spawn");
    check(posix_spawnattr_setpgroup(&attributes_, 0), "posix_spawn");
    check(posix_spawnattr_setflags(&attributes_,
                                   POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP),
          "posix_spawn");
    check(posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0), "posix_spawn");
  }
  SpawnSettings(const SpawnSettings&) = delete;
  SpawnSettings& operator=(const SpawnSettings&) = delete;
  ~SpawnSettings() {
    posix_spawn_file_actions_destroy(&actions_);
    posix_spawnattr_destroy(&attributes_);
  }

  void give(const host::UniqueFd& fd, int number) {
    check(posix_spawn_file_actions_adddup2(&actions_, fd.get(), number), "posix_spawn");
  }
  void closeFrom(int number) {
    check(posix_spawn_file_actions_addclosefrom_np(&actions_, number), "posix_spawn");
  }
  pid_t spawn(std::vector<std::string> arguments, std::vector<std::string> environment) {
    pid_t pid = -1;
    const int error = posix_spawn(&pid, arguments.front().c_str(), &actions_, &attributes_,
                                  pointersTo(arguments).data(), pointersTo(environment).data());
    check(error, arguments.front());
    return pid;
  }

 private:
  posix_spawn_file_actions_t actions_{};
  posix_spawnattr_t attributes_{};
};

/// Whether the descriptor has one of the events, or an error, before the time is up.
bool waitUntil(Clock::time_point deadline, int fd, short events) {
  if (fd < 0) return false;
  for (;;) {
    const auto left = std::chrono::ceil<Millis>(deadline - Clock::now());
    pollfd watched{fd, events, 0};
    const int ready = poll(&watched, 1, static_cast<int>(std::max(left, Millis::zero()).count()));
    if (ready >= 0 || errno != EINTR) return ready > 0;
  }
}

/// Makes the eventfd readable for good once the process has ended, and leaves it to be waited for.
void announceEnd(pid_t process, int ended) {
  siginfo_t ignored{};
  while (waitid(P_PID, static_cast<id_t>(process), &ignored, WEXITED | WNOWAIT) != 0 && errno == EINTR) {
  }
  eventfd_write(ended, 1);
}

/// What one read gives; nothing at the end of the pipe or when the time is up.
std::optional<Bytes> readOnce(int fd, Clock::time_point deadline) {
  if (!waitUntil(deadline, fd, POLLIN)) return std::nullopt;
  Bytes bytes(kReadSize);
  const ssize_t size = read(fd, bytes.data(), bytes.size());
  if (size <= 0) return std::nullopt;
  bytes.resize(static_cast<size_t>(size));
  return bytes;
}

}  // namespace

Parent::Parent(const ParentOptions& options) {
  std::signal(SIGPIPE, SIG_IGN);
  joinLogGroup();
  ended_ = host::UniqueFd(eventfd(0, EFD_CLOEXEC));
  if (!ended_) check(errno, "eventfd");
  Pipe requests = makePipe();
  Pipe responses = makePipe();
  Pipe unsolicited = makePipe();
  Pipe errors = makePipe();
  const host::UniqueFd child_requests = moveUp(std::move(requests.read));
  const host::UniqueFd child_responses = moveUp(std::move(responses.write));
  const host::UniqueFd child_unsolicited = moveUp(std::move(unsolicited.write));
  const host::UniqueFd child_errors = moveUp(std::move(errors.write));

  SpawnSettings settings;
  settings.give(child_errors, STDERR_FILENO);
  settings.give(child_requests, kChildRequestsFd);
  settings.give(child_responses, kChildResponsesFd);
  settings.give(child_unsolicited, kChildUnsolicitedFd);
  settings.closeFrom(kChildUnsolicitedFd + 1);
  log_ = std::make_unique<LineReader>(std::move(errors.read));
  pid_ = settings.spawn(argumentsOf(options), environmentOf(options));
  requests_ = std::move(requests.write);
  responses_ = std::move(responses.read);
  unsolicited_ = std::move(unsolicited.read);
  // A process that stops reading makes send() fail instead of hang.
  fcntl(requests_.get(), F_SETFL, O_NONBLOCK);
  // A descriptor of the process itself would do too, but handsets' kernels are too old to have them. Started
  // last: what throws above has no thread to wait for.
  try {
    end_watch_ = std::thread(announceEnd, pid_, ended_.get());
  } catch (const std::system_error&) {
    ::kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
    throw;
  }
}

Parent::~Parent() {
  closeRequests();
  if (!wait(kExitTimeout)) {
    kill(SIGKILL);
    wait();
  }
  end_watch_.join();
}

bool Parent::send(ByteView request, Millis timeout) {
  if (!waitUntil(Clock::now() + timeout, requests_.get(), POLLOUT)) return false;
  return write(requests_.get(), request.data(), request.size()) == static_cast<ssize_t>(request.size());
}

std::optional<Bytes> Parent::nextResponse(Millis timeout) {
  return readOnce(responses_.get(), Clock::now() + timeout);
}

std::optional<Bytes> Parent::nextUnsolicited(Millis timeout) {
  const auto deadline = Clock::now() + timeout;
  for (;;) {
    if (unsolicited_bytes_.size() >= kUnsolicitedLengthAt + sizeof(uint32_t)) {
      const auto length = getLe<uint32_t>(unsolicited_bytes_, kUnsolicitedLengthAt);
      if (length > kUnsolicitedLengthMax)
        throw std::runtime_error("unsolicited message of impossible length");
      const auto end = static_cast<ptrdiff_t>(length + kUnsolicitedOverhead);
      if (unsolicited_bytes_.size() >= static_cast<size_t>(end)) {
        Bytes message(unsolicited_bytes_.begin(), unsolicited_bytes_.begin() + end);
        unsolicited_bytes_.erase(unsolicited_bytes_.begin(), unsolicited_bytes_.begin() + end);
        return message;
      }
    }
    const std::optional<Bytes> more = readOnce(unsolicited_.get(), deadline);
    if (!more) return std::nullopt;
    unsolicited_bytes_.insert(unsolicited_bytes_.end(), more->begin(), more->end());
  }
}

void Parent::kill(int signal) const {
  if (!exit_status_) ::kill(pid_, signal);
}

std::optional<int> Parent::wait(Millis timeout) {
  if (exit_status_) return exit_status_;
  if (!waitUntil(Clock::now() + timeout, ended_.get(), POLLIN)) return std::nullopt;
  int status = 0;
  if (waitpid(pid_, &status, 0) != pid_) return std::nullopt;
  // What the process logged last may still be in the pipe.
  log_->waitForEnd(kExitTimeout);
  exit_status_ = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  return exit_status_;
}

bool Parent::waitForLog(std::string_view text, Millis timeout) {
  const std::optional<size_t> line = log_->waitFor(text, log_cursor_, timeout);
  if (line) log_cursor_ = *line + 1;
  return line.has_value();
}

bool Parent::waitForLogSince(size_t mark, std::string_view text, Millis timeout) {
  return log_->waitFor(text, mark, timeout).has_value();
}

std::optional<size_t> Parent::waitForLogPart(size_t mark, std::string_view part, Millis timeout) {
  const std::optional<size_t> line = log_->waitForPart(part, mark, timeout);
  return line ? std::optional(*line + 1) : std::nullopt;
}

}  // namespace handset
