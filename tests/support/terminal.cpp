#include "support/terminal.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>

#include "handset/timeout.h"
#include "support/tool_test.h"

namespace kesext_test {

namespace {

constexpr int kTimeoutMs = handset::kTimeout.count();

bool waitToRead(const host::UniqueFd& fd) {
  pollfd watched{fd.get(), POLLIN, 0};
  return poll(&watched, 1, kTimeoutMs) > 0;
}

}  // namespace

Terminal::Terminal(const std::vector<std::string>& arguments)
    : screen_(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
  grantpt(screen_.get());
  unlockpt(screen_.get());
  const std::string line = ptsname(screen_.get());
  own_line_ = host::UniqueFd(open(line.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
  resize(80, 24);
  tcgetattr(own_line_.get(), &modes_);
  setenv("TERM", "xterm", 1);

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  // In a session of its own, the first terminal that is opened becomes the one that Ctrl-C comes from.
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, line.c_str(), O_RDWR, 0);
  posix_spawn_file_actions_adddup2(&actions, STDIN_FILENO, STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, STDIN_FILENO, STDERR_FILENO);
  pid_ = SpawnTool(arguments, actions, POSIX_SPAWN_SETSID);
  tool_ = host::UniqueFd(static_cast<int>(syscall(SYS_pidfd_open, pid_, 0)));
}

Terminal::~Terminal() {
  if (pid_ < 0) return;
  kill(pid_, SIGKILL);
  waitpid(pid_, nullptr, 0);
}

void Terminal::resize(unsigned short columns, unsigned short rows) {
  const winsize size{.ws_row = rows, .ws_col = columns, .ws_xpixel = 0, .ws_ypixel = 0};
  ioctl(own_line_.get(), TIOCSWINSZ, &size);
}

void Terminal::type(std::string_view keys) {
  (void)!write(screen_.get(), keys.data(), keys.size());
}

bool Terminal::readMore() {
  std::array<char, 4096> chunk;
  if (!waitToRead(screen_)) return false;
  const ssize_t count = read(screen_.get(), chunk.data(), chunk.size());
  if (count > 0) seen_.append(chunk.data(), static_cast<size_t>(count));
  return count > 0;
}

bool Terminal::shows(std::string_view text) {
  size_t at = 0;
  while ((at = seen_.find(text)) == std::string::npos)
    if (!readMore()) return false;
  passed_ = seen_.substr(0, at);
  seen_.erase(0, at + text.size());
  return true;
}

bool Terminal::answers(std::string_view keys, std::initializer_list<std::string_view> texts) {
  type(keys);
  for (const std::string_view text : texts)
    if (!shows(text)) {
      ADD_FAILURE() << "not shown: " << text;
      return false;
    }
  return true;
}

int Terminal::endsWith(std::string_view keys) {
  type(keys);
  int status = 0;
  if (!waitToRead(tool_) || waitpid(pid_, &status, 0) != pid_) return -1;
  pid_ = -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

bool Terminal::hasItsModesBack() const {
  termios now{};
  return tcgetattr(own_line_.get(), &now) == 0 && now.c_iflag == modes_.c_iflag &&
         now.c_oflag == modes_.c_oflag && now.c_cflag == modes_.c_cflag && now.c_lflag == modes_.c_lflag;
}

}  // namespace kesext_test
