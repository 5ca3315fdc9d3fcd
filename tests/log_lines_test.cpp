// The rows of the table of log lines beside the sources of the process.
#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <regex>
#include <set>

#include "support/tool_test.h"
#include "tools/log/line_table.h"

namespace kesext_test {
namespace {

struct LoggedText {
  std::string text;
  bool certain;  // otherwise the name that it begins with is any that the source speaks of
};

/// What a source may log, with one number in the place of the first and another in those of all others.
std::vector<LoggedText> LoggedTexts(const std::string& code, const std::string& first,
                                    const std::string& others) {
  static const std::regex kCall(R"re(LOG[ED]\(\s*((?:GET_NAM_VALUE )?(?:"(?:[^"\\]|\\.)*"\s*)+))re");
  static const std::regex kName(R"(Enter kes\w+\(\)|\b(kes|adam)\w+)");
  static const std::pair<std::regex, std::string> kRewritten[] = {
      {std::regex("GET_NAM_VALUE "), "\"kesext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE \""},
      {std::regex(R"re(^"|"\s*"|"\s*$|\\n)re"), ""},
      {std::regex("%#"), "0x%"},
      {std::regex(R"((.)%[.0-9]*s)"), "$1text"}};
  static const std::regex kNumber("%(02|l)?[duxXp]");
  std::vector<LoggedText> texts;
  for (std::sregex_iterator call(code.begin(), code.end(), kCall), end; call != end; ++call) {
    std::string text = (*call)[1];
    for (const auto& [pattern, replacement] : kRewritten)
      text = std::regex_replace(text, pattern, replacement);
    text = std::regex_replace(text, kNumber, first, std::regex_constants::format_first_only);
    text = std::regex_replace(text, kNumber, others);
    if (!text.starts_with("%s")) {
      texts.push_back({text, true});
      continue;
    }
    for (std::sregex_iterator name(code.begin(), code.end(), kName); name != end; ++name)
      texts.push_back({name->str() + text.substr(2), false});
  }
  return texts;
}

TEST(LogLines, EveryTextThatTheProcessCanLogHasARowAndEveryRowSuchAText) {
  std::set<const tools::LineRow*> met;
  for (const auto& file :
       std::filesystem::recursive_directory_iterator(std::filesystem::path(KESEXT_GOLDEN) / "../../src")) {
    if (file.path().extension() != ".cpp") continue;
    const std::string code = FileText(file.path());
    for (const auto& [first, others] :
         {std::pair{"7", "7"}, {"0", "7"}, {"0", "0"}, {"1", "1"}, {"93", "93"}}) {
      for (const auto& [text, certain] : LoggedTexts(code, first, others)) {
        tools::Places places;
        const tools::LineRow* row = tools::findLine(text, places);
        EXPECT_TRUE(row != nullptr || !certain) << file.path() << ": " << text;
        met.insert(row);
      }
    }
  }
  for (const auto rows : {tools::processLines(), tools::serviceLines(), tools::modemLines()})
    for (const tools::LineRow& row : rows) {
      EXPECT_TRUE(met.contains(&row)) << row.pattern;
      const auto places = std::count(row.pattern.begin(), row.pattern.end(), '%');
      EXPECT_LE(places, tools::kPlacesMax) << row.pattern;
      for (auto place = places; place <= 9; ++place)
        EXPECT_EQ(row.words.find(fmt::format("{{{}", place)), row.words.npos) << row.pattern;
    }
}

}  // namespace
}  // namespace kesext_test
