// What Tab makes of a line.
#include <gmock/gmock.h>

#include "tools/shell/completion.h"

namespace kesext_test {
namespace {

using ::testing::ElementsAreArray;

TEST(Completion, EveryWordOfALineIsCompletedFromTheTables) {
  constexpr tools::Syntax kCommands[] = {
      {"force", "REQUEST"}, {"modem", "COMMAND"}, {"log", "on|off|since"}, {"help", "[TOPIC]"}, {"quit", ""}};
  struct Case {
    const char* line;
    const char* insertion;
    std::vector<std::string> candidates;
  };
  const Case cases[] = {
      {"qu", "it ", {"quit"}},
      {"bsr", "-timer ", {"bsr-timer"}},
      {"l", "", {"log", "lte-data", "lte-option"}},
      {"lt", "e-", {"lte-data", "lte-option"}},
      {"bsr-timer ", "", {"get", "set"}},
      {"bsr-timer s", "et ", {"set"}},
      {"plmn ", "m", {"mcc=", "mnc="}},
      {"plmn mcc=1 ", "mnc=", {"mnc="}},
      {"bsr-timer set 30 s", "pc=", {"spc="}},
      {"\"rde\" 'read' off", "set=", {"offset="}},
      {"modem fa", "il ", {"fail"}},
      {"modem set b", "", {"band", "bsr-timer"}},
      {"modem fail rde", "-", {"rde-read", "rde-write"}},
      {"modem fail rde-read ", "", {}},
      {"modem publish n", "as ", {"nas"}},
      {"modem indicate lo", "g ", {"log"}},
      {"modem indicate tuner ev", "ent=", {"event="}},
      {"log o", "", {"off", "on"}},
      {"help nam w", "rite ", {"write"}},
      {"quit ", "", {}},
      {"fo", "rce ", {"force"}},
      {"force nam w", "rite ", {"write"}},
      {"quit #", "", {}},
      {"nothing ", "", {}},
      {"akey write \"1", "", {}},
      {"\"bsr", "", {}},
  };
  for (const Case& c : cases) {
    const tools::Completion completion = tools::complete(kCommands, c.line);
    EXPECT_EQ(completion.insertion, c.insertion) << c.line;
    EXPECT_THAT(completion.candidates, ElementsAreArray(c.candidates)) << c.line;
  }
}

}  // namespace
}  // namespace kesext_test
