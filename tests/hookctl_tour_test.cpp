// The tour: that it notices what is wrong, and that it can be done again by hand.
#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "support/tool_test.h"

namespace kesext_test {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using Tour = ToolTest;

TEST_F(Tour, AnAnswerThatDiffersIsShownFromItsFirstWrongByte) {
  // One byte of the network's name, and of no other answer, changes on its way from the process.
  const std::string executable = temporary_ + "/process";
  std::ofstream(executable) << "#!/bin/bash\nexec " KESEXT_BINARY
                               " \"$@\" 4> >(LC_ALL=C exec stdbuf -o0 tr '\\316' '\\317' >&4)\n";
  std::filesystem::permissions(executable, std::filesystem::perms::all);
  const ToolResult result = RunTool({"--executable", executable, "tour", "--colour", "never"});
  std::filesystem::remove(executable);
  EXPECT_EQ(result.status, 1) << result.err;
  EXPECT_THAT(
      result.out,
      HasSubstr("hook> plmn 228 1\n    request  generic request 0x0A0006: reads the name of a network"));
  EXPECT_THAT(result.out, HasSubstr("    WRONG differs at byte 16 of 18: expected CE 94, not CF 94 (18 bytes "
                                    "expected)\n"));
  EXPECT_THAT(result.out, HasSubstr("\n74 of 75 as expected\n"));
}

TEST_F(Tour, ItsLinesCanBeTypedInTheShell) {
  const ToolResult tour = RunTool({"tour", "--colour", "never"});
  EXPECT_EQ(tour.status, 0);
  constexpr std::string_view kTourPrompt = "    hook> ";
  std::istringstream lines(tour.out);
  std::string typed;
  size_t count = 0;
  for (std::string line; std::getline(lines, line);) {
    const bool cut = line.ends_with(" characters)");
    if (!line.starts_with(kTourPrompt) || cut) continue;
    typed += line.substr(kTourPrompt.size()) + '\n';
    ++count;
  }
  EXPECT_GT(count, 60U);
  const ToolResult shell = RunTool({"shell"}, typed);
  EXPECT_EQ(shell.status, 0);
  EXPECT_THAT(shell.err, IsEmpty());
}

}  // namespace
}  // namespace kesext_test
