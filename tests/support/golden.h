// Log lines as files.
#pragma once

#include <gmock/gmock.h>

#include <fstream>
#include <string>
#include <vector>

namespace kesext_test {

/// Holds lines against those of tests/golden/NAME.log.
inline void ExpectGolden(const std::vector<std::string>& lines, const std::string& name) {
  std::ifstream file(KESEXT_GOLDEN "/" + name + ".log");
  std::vector<std::string> expected;
  for (std::string line; std::getline(file, line);)
    expected.push_back(line);
  EXPECT_THAT(lines, ::testing::ElementsAreArray(expected));
}

}  // namespace kesext_test
