// The tour: that it notices what is wrong, and that it can be done again by hand.
#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "support/tool_test.h"

namespace kesext_test {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using Tour = ToolTest;

TEST_F(Tour, AnAnswerThatDiffersIsShownFromItsFirstWrongByte) {
  // One byte of what nv26 reads, and of no other answer of this part, changes on its way from the process.
  const std::string executable = temporary_ + "/process";
  std::ofstream(executable) << "#!/bin/bash\nexec " KESEXT_BINARY
                               " \"$@\" 4> >(LC_ALL=C exec stdbuf -o0 tr '\\052' '\\053' >&4)\n";
  std::filesystem::permissions(executable, std::filesystem::perms::all);
  const std::string part = std::string(KESEXT_SCENARIOS) + "/tour/02_fixed_elements.json";
  const ToolResult result = RunTool({"--executable", executable, "play", "--show", part});
  std::filesystem::remove(executable);
  EXPECT_EQ(result.status, 1) << result.err;
  EXPECT_THAT(result.out,
              AllOf(HasSubstr("  3  WRONG       Read it back\n    the answer differs at byte 18 of 24: "
                              "expected 2A 00 00 00 00 00, not 2B 00 00 00 00 00 (24 bytes "
                              "expected)\n    hook> nv26 read\n    request  CDMA request "),
                    HasSubstr("\n4 of 5 steps as expected\n")));
}

TEST_F(Tour, ItsLinesCanBeTypedInTheShellRecordedAndPlayedAgain) {
  const ToolResult tour = RunTool({"tour"});
  EXPECT_EQ(tour.status, 0) << tour.out;
  constexpr std::string_view kTourPrompt = "    hook> ";
  std::istringstream lines(tour.out);
  std::string typed;
  size_t count = 0;
  for (std::string line; std::getline(lines, line);) {
    if (!line.starts_with(kTourPrompt)) continue;
    typed += line.substr(kTourPrompt.size()) + '\n';
    ++count;
  }
  EXPECT_GT(count, 75U);
  const std::string recorded = temporary_ + "/recorded.json";
  const ToolResult shell = RunTool({"shell", "--record", recorded}, typed);
  EXPECT_EQ(shell.status, 0);
  EXPECT_THAT(shell.err, IsEmpty());
  const ToolResult again = RunTool({"play", recorded});
  EXPECT_EQ(again.status, 0) << again.out << again.err;
  std::filesystem::remove(recorded);
}

}  // namespace
}  // namespace kesext_test
