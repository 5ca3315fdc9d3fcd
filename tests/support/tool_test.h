// Running hookctl as a person or a script does.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace kesext_test {

struct ToolResult {
  int status = -1;  // minus the signal that ended it
  std::string out;
  std::string err;
};

/// Runs `hookctl ARGUMENTS` to its end, with this text as its input.
ToolResult RunTool(const std::vector<std::string>& arguments, std::string_view input = {});

/// The folders that stations leave below TMPDIR while they run; none should be there when all have ended.
class ToolTest : public ::testing::Test {
 protected:
  /// TMPDIR of everything that this test starts, empty at first and in the end.
  ToolTest();
  ~ToolTest() override;

  std::string temporary_;
};

}  // namespace kesext_test
