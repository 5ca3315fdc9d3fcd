// Log lines, and cases of many lines, as files.
#pragma once

#include <gmock/gmock.h>

#include <fstream>
#include <string>
#include <utility>
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

/// The cases of tests/golden/NAME.txt: what stands behind "== ", and the lines below it.
inline std::vector<std::pair<std::string, std::string>> GoldenCases(const std::string& name) {
  std::ifstream file(KESEXT_GOLDEN "/" + name + ".txt");
  std::vector<std::pair<std::string, std::string>> cases;
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with("== "))
      cases.emplace_back(line.substr(3), "");
    else
      cases.back().second += line + '\n';
  }
  EXPECT_FALSE(cases.empty()) << name;
  return cases;
}

}  // namespace kesext_test
