// Log lines, and cases of many lines, as files.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

namespace kesext_test {

/// The lines of tests/golden/NAME.log.
inline std::vector<std::string> GoldenLines(const std::string& name) {
  std::ifstream file(KESEXT_GOLDEN "/" + name + ".log");
  std::vector<std::string> lines;
  for (std::string line; std::getline(file, line);)
    lines.push_back(line);
  EXPECT_FALSE(lines.empty()) << name;
  return lines;
}

/// Holds lines against them; with KESEXT_RECORD in the environment they are recorded anew instead.
inline void ExpectGolden(const std::vector<std::string>& lines, const std::string& name) {
  if (std::getenv("KESEXT_RECORD") != nullptr) {
    std::ofstream file(KESEXT_GOLDEN "/" + name + ".log");
    for (const std::string& line : lines)
      file << line << '\n';
    return;
  }
  const std::vector<std::string> golden = GoldenLines(name);
  const size_t both = std::min(lines.size(), golden.size());
  for (size_t i = 0; i < both; ++i)
    ASSERT_EQ(lines[i], golden[i]) << KESEXT_GOLDEN "/" << name << ".log:" << i + 1;
  EXPECT_EQ(lines.size(), golden.size()) << name;
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
