#include "support/tool_test.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <utility>

namespace kesext_test {

namespace {

namespace fs = std::filesystem;
using host::UniqueFd;

struct Pipe {
  Pipe() {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) == 0) {
      read = UniqueFd(ends[0]);
      write = UniqueFd(ends[1]);
    }
  }
  UniqueFd read;
  UniqueFd write;
};

std::string readAll(const UniqueFd& fd) {
  std::string text;
  std::array<char, 4096> chunk;
  ssize_t count = 0;
  while ((count = read(fd.get(), chunk.data(), chunk.size())) > 0)
    text.append(chunk.data(), static_cast<size_t>(count));
  return text;
}

/// A temporary folder. The process is another user and has to get below it.
std::string makeFolder() {
  std::string pattern = fs::temp_directory_path() / "tool-XXXXXX";
  fs::permissions(mkdtemp(pattern.data()), fs::perms::all);
  return pattern;
}

}  // namespace

pid_t SpawnTool(const std::vector<std::string>& arguments, posix_spawn_file_actions_t& actions, short flags) {
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  posix_spawnattr_setflags(&attributes, flags);
  std::vector<char*> argv{const_cast<char*>(KESEXT_HOOKCTL)};
  for (const std::string& argument : arguments)
    argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  pid_t pid = -1;
  const int error = posix_spawn(&pid, KESEXT_HOOKCTL, &actions, &attributes, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  posix_spawnattr_destroy(&attributes);
  return error == 0 ? pid : -1;
}

RunningTool::RunningTool(const std::vector<std::string>& arguments) {
  Pipe in;
  Pipe out;
  Pipe err;
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, in.read.get(), STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, out.write.get(), STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, err.write.get(), STDERR_FILENO);
  pid_ = SpawnTool(arguments, actions);
  in_ = std::move(in.write);
  out_ = std::move(out.read);
  err.write.reset();
  errors_ = std::thread([this, read = std::move(err.read)] { result_.err = readAll(read); });
}

RunningTool::~RunningTool() {
  if (errors_.joinable()) finish();
}

void RunningTool::type(std::string_view input) {
  // A tool that does not read on to the end is no reason to go.
  sigset_t broken_pipe;
  sigemptyset(&broken_pipe);
  sigaddset(&broken_pipe, SIGPIPE);
  pthread_sigmask(SIG_BLOCK, &broken_pipe, nullptr);
  ssize_t count = 0;
  while (!input.empty() && (count = write(in_.get(), input.data(), input.size())) > 0)
    input.remove_prefix(static_cast<size_t>(count));
}

bool RunningTool::readMore() {
  std::array<char, 4096> chunk;
  const ssize_t count = read(out_.get(), chunk.data(), chunk.size());
  if (count > 0) result_.out.append(chunk.data(), static_cast<size_t>(count));
  return count > 0;
}

bool RunningTool::waitForOutput(std::string_view text) {
  while (result_.out.find(text) == std::string::npos)
    if (!readMore()) return false;
  return true;
}

void RunningTool::signal(int number) const {
  if (started()) kill(pid_, number);
}

ToolResult RunningTool::finish(std::string_view input) {
  std::thread feeding([this, input] {
    type(input);
    in_.reset();
  });
  while (readMore()) {
  }
  feeding.join();
  errors_.join();
  int status = 0;
  if (started() && waitpid(pid_, &status, 0) == pid_)
    result_.status = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  return result_;
}

ToolResult RunTool(const std::vector<std::string>& arguments, std::string_view input) {
  return RunningTool(arguments).finish(input);
}

std::string FileText(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<nlohmann::ordered_json> JsonLines(const std::string& output) {
  std::vector<nlohmann::ordered_json> values;
  std::istringstream lines(output);
  for (std::string line; std::getline(lines, line);)
    values.push_back(nlohmann::ordered_json::parse(line, nullptr, false));
  return values;
}

ToolTest::ToolTest() : temporary_(makeFolder()), own_(makeFolder()), root_(own_ + "/handset") {
  setenv("TMPDIR", temporary_.c_str(), 1);
  setenv("XDG_STATE_HOME", own_.c_str(), 1);
}

ToolTest::~ToolTest() {
  EXPECT_TRUE(fs::is_empty(temporary_)) << "a folder was left behind";
  unsetenv("TMPDIR");
  unsetenv("XDG_STATE_HOME");
  fs::remove_all(temporary_);
  fs::remove_all(own_);
}

std::string ToolTest::Write(const std::string& name, std::string_view text) const {
  const fs::path path = fs::path(own_) / name;
  fs::create_directories(path.parent_path());
  std::ofstream(path) << text;
  fs::permissions(path, fs::perms::all);
  return path;
}

}  // namespace kesext_test
