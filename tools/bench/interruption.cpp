#include "tools/bench/interruption.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <thread>

#include "platform/host/unique_fd.h"

namespace tools {

namespace {

constexpr int kStatusOfSignals = 128;

/// What an order to the cleaner begins with; the rest is what it is about.
constexpr char kKill = 'k';      // a process number
constexpr char kRemove = 'r';    // a path; none: not any more
constexpr char kTerminal = 't';  // the modes as they are in memory; none: not any more
constexpr size_t kOrderMax = PATH_MAX + 1;

// Never destroyed: the watching thread may still use it while the tool ends.
std::recursive_mutex& interruption_mutex = *new std::recursive_mutex;
std::atomic<int> first_ctrl_c = -1;  // an eventfd
int cleaner_orders = -1;             // a socket
pid_t cleaner_pid = -1;

/// What the tool leaves, in the process that cleans up behind it.
class Leavings {
 public:
  explicit Leavings(pid_t job) : job_(job) {}

  void take(char order, const std::string& about) {
    if (order == kKill) process_ = host::UniqueFd(pidfdOf(std::atoi(about.c_str())));
    if (order == kRemove) path_ = about;
    if (order == kTerminal) modes_ = about;
  }

  void cleanUp() {
    restoreTerminal();
    if (process_) {
      syscall(SYS_pidfd_send_signal, process_.get(), SIGKILL, nullptr, 0);
      pollfd ended{process_.get(), POLLIN, 0};
      poll(&ended, 1, kKilledTimeoutMs);
    }
    removePath();
  }

 private:
  static constexpr int kKilledTimeoutMs = 2000;

  static int pidfdOf(pid_t process) { return static_cast<int>(syscall(SYS_pidfd_open, process, 0)); }

  /// Below whatever is being typed. Another job's terminal is left alone.
  void restoreTerminal() const {
    termios modes{};
    if (modes_.size() != sizeof(modes) || tcgetpgrp(STDIN_FILENO) != job_) return;
    std::memcpy(&modes, modes_.data(), sizeof(modes));
    tcsetattr(STDIN_FILENO, TCSANOW, &modes);
    [[maybe_unused]] const ssize_t written = write(STDOUT_FILENO, "\n", 1);
  }

  /// Whatever else still writes there meanwhile.
  void removePath() const {
    constexpr int kTries = 100;
    std::error_code error;
    for (int i = 0; i < kTries && std::filesystem::exists(path_, error); ++i)
      std::filesystem::remove_all(path_, error);
  }

  pid_t job_;  // the tool's process group
  host::UniqueFd process_;
  std::string path_;
  std::string modes_;
};

/// Takes orders until the tool has ended, and acts upon them. Out of reach of what is meant for the tool.
[[noreturn]] void runCleaner(int orders, pid_t job) {
  setpgid(0, 0);
  prctl(PR_SET_NAME, "bench-cleaner");
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP, SIGTTOU, SIGPIPE})
    (void)std::signal(signal, SIG_IGN);
  Leavings leavings(job);
  std::array<char, kOrderMax> order{};
  ssize_t size = 0;
  while ((size = recv(orders, order.data(), order.size(), 0)) > 0)
    leavings.take(order.front(), std::string(order.data() + 1, static_cast<size_t>(size) - 1));
  leavings.cleanUp();
  _exit(0);
}

void startCleaner() {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0)
    throw std::system_error(errno, std::generic_category(), "socketpair");
  const pid_t job = getpgrp();
  cleaner_pid = fork();
  if (cleaner_pid == 0) {
    close(ends[0]);
    runCleaner(ends[1], job);
  }
  if (cleaner_pid < 0) throw std::system_error(errno, std::generic_category(), "fork");
  close(ends[1]);
  cleaner_orders = ends[0];
}

/// Lets the cleaner act, and waits for its end and for that of the process that it killed.
void finishCleaning() {
  shutdown(cleaner_orders, SHUT_RDWR);
  waitpid(cleaner_pid, nullptr, 0);
  while (waitpid(-1, nullptr, WNOHANG) > 0) {
  }
}

void tellCleaner(char order, std::string_view about) {
  const std::string packet = order + std::string(about);
  send(cleaner_orders, packet.data(), packet.size(), MSG_NOSIGNAL);
}

/// Whether the tool goes on: whoever has taken the first Ctrl-C is told of it.
bool isTaken(int signal) {
  if (signal != SIGINT || first_ctrl_c < 0) return false;
  pollfd told{first_ctrl_c, POLLIN, 0};
  return poll(&told, 1, 0) == 0 && eventfd_write(first_ctrl_c, 1) == 0;
}

}  // namespace

void watchForInterruption() {
  startCleaner();
  (void)std::atexit(finishCleaning);
  static sigset_t signals;
  sigemptyset(&signals);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT})
    sigaddset(&signals, signal);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  std::thread([] {
    int signal = 0;
    do
      sigwait(&signals, &signal);
    while (isTaken(signal));
    const std::scoped_lock lock(interruption_mutex);
    finishCleaning();
    _exit(kStatusOfSignals + signal);
  }).detach();
}

int takeFirstCtrlC() {
  if (first_ctrl_c < 0) first_ctrl_c = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  return first_ctrl_c;
}

void killInTheEnd(pid_t process) {
  tellCleaner(kKill, std::to_string(process));
}

void removeInTheEnd(const std::string& path) {
  tellCleaner(kRemove, path.empty() ? "" : std::filesystem::absolute(path).string());
}

TerminalModes::TerminalModes() {
  termios modes{};
  tcgetattr(STDIN_FILENO, &modes);
  tellCleaner(kTerminal, {reinterpret_cast<const char*>(&modes), sizeof(modes)});
}

TerminalModes::~TerminalModes() {
  tellCleaner(kTerminal, {});
}

std::unique_lock<std::recursive_mutex> holdOffInterruption() {
  return std::unique_lock(interruption_mutex);
}

}  // namespace tools
