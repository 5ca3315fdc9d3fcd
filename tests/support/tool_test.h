// Running hookctl as a person or a script does.
#pragma once

#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/types.h>

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "platform/host/unique_fd.h"

namespace kesext_test {

struct ToolResult {
  int status = -1;  // minus the signal that ended it
  std::string out;
  std::string err;
};

/// Starts hookctl, with flags of posix_spawnattr_setflags, and uses up the actions. −1 when that fails.
pid_t SpawnTool(const std::vector<std::string>& arguments, posix_spawn_file_actions_t& actions,
                short flags = 0);

/// hookctl while it runs.
class RunningTool {
 public:
  explicit RunningTool(const std::vector<std::string>& arguments);
  RunningTool(const RunningTool&) = delete;
  RunningTool& operator=(const RunningTool&) = delete;
  ~RunningTool();

  [[nodiscard]] bool started() const { return pid_ > 0; }
  void type(std::string_view input);
  /// Reads the output until this text has come. False when it ends first.
  bool waitForOutput(std::string_view text);
  void signal(int number) const;
  /// Types the rest of its input, and waits for its end and for that of whatever it started: those share its
  /// output.
  ToolResult finish(std::string_view input = {});

 private:
  bool readMore();

  pid_t pid_ = -1;
  host::UniqueFd in_;
  host::UniqueFd out_;
  ToolResult result_;
  std::thread errors_;
};

/// Runs `hookctl ARGUMENTS` to its end, with this text as its input.
ToolResult RunTool(const std::vector<std::string>& arguments, std::string_view input = {});

/// What a file has in it; nothing where there is none.
std::string FileText(const std::string& path);

/// The lines of an output as JSON values.
std::vector<nlohmann::ordered_json> JsonLines(const std::string& output);

/// Tools leave the folders of their stations below TMPDIR while they run; none should be there when all have
/// ended.
class ToolTest : public ::testing::Test {
 protected:
  ToolTest();
  ~ToolTest() override;

  /// Makes a file in the test's own folder, which may be executed, and gives its path.
  [[nodiscard]] std::string Write(const std::string& name, std::string_view text) const;

  /// TMPDIR of everything that the test starts, empty at first and in the end.
  const std::string temporary_;
  /// A folder of the test's own, which is removed in the end; the shell has its history in it.
  const std::string own_;
  /// In that, no folder yet.
  const std::string root_;
};

}  // namespace kesext_test
