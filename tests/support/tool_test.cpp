#include "support/tool_test.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <thread>
#include <utility>

#include "handset/fd.h"

namespace kesext_test {

namespace {

using handset::Fd;

struct Pipe {
  Pipe() {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) == 0) {
      read = Fd(ends[0]);
      write = Fd(ends[1]);
    }
  }
  Fd read;
  Fd write;
};

std::string readAll(const Fd& fd) {
  std::string text;
  std::array<char, 4096> chunk;
  ssize_t count = 0;
  while ((count = read(fd.get(), chunk.data(), chunk.size())) > 0)
    text.append(chunk.data(), static_cast<size_t>(count));
  return text;
}

/// Stops when the reader goes.
void writeAll(Fd fd, std::string_view text) {
  sigset_t broken_pipe;
  sigemptyset(&broken_pipe);
  sigaddset(&broken_pipe, SIGPIPE);
  pthread_sigmask(SIG_BLOCK, &broken_pipe, nullptr);
  ssize_t count = 0;
  while (!text.empty() && (count = write(fd.get(), text.data(), text.size())) > 0)
    text.remove_prefix(static_cast<size_t>(count));
}

}  // namespace

ToolResult RunTool(const std::vector<std::string>& arguments, std::string_view input) {
  Pipe in;
  Pipe out;
  Pipe err;
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, in.read.get(), STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, out.write.get(), STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, err.write.get(), STDERR_FILENO);
  std::vector<char*> argv{const_cast<char*>(KESEXT_HOOKCTL)};
  for (const std::string& argument : arguments)
    argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  pid_t pid = -1;
  const int error = posix_spawn(&pid, KESEXT_HOOKCTL, &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  ToolResult result;
  if (error != 0) return result;
  in.read.reset();
  out.write.reset();
  err.write.reset();
  std::thread errors([&] { result.err = readAll(err.read); });
  std::thread feeding([&] { writeAll(std::move(in.write), input); });
  result.out = readAll(out.read);
  errors.join();
  feeding.join();
  int status = 0;
  waitpid(pid, &status, 0);
  result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  return result;
}

ToolTest::ToolTest() {
  std::string pattern = std::filesystem::temp_directory_path() / "tool-XXXXXX";
  temporary_ = mkdtemp(pattern.data());
  // The process is another user and has to get below it.
  std::filesystem::permissions(temporary_, std::filesystem::perms::all);
  setenv("TMPDIR", temporary_.c_str(), 1);
}

ToolTest::~ToolTest() {
  EXPECT_TRUE(std::filesystem::is_empty(temporary_)) << "a folder was left behind";
  unsetenv("TMPDIR");
  std::filesystem::remove_all(temporary_);
}

}  // namespace kesext_test
