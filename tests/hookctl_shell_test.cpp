// The shell, at a terminal and in a script.
#include <gmock/gmock.h>

#include <cerrno>
#include <csignal>
#include <filesystem>

#include "handset/folder.h"
#include "handset/modem.h"
#include "support/terminal.h"
#include "support/tool_test.h"

namespace kesext_test {
namespace {

using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::Not;
using Shell = ToolTest;

constexpr const char* kPrompt = "hook> ";
constexpr const char* kCtrlC = "\x03";
constexpr const char* kCtrlD = "\x04";
constexpr const char* kArrowUp = "\x1b[A";
constexpr uint16_t kCarrierValue = 0x0012;

/// Waits for the first prompt; the process's id.
pid_t Begin(Terminal& terminal) {
  EXPECT_TRUE(terminal.shows("process "));
  EXPECT_TRUE(terminal.shows(" serves requests in "));
  const pid_t process = std::stoi(terminal.passed());
  EXPECT_TRUE(terminal.shows(kPrompt));
  return process;
}

TEST_F(Shell, ALineIsEditedCompletedAndBroughtBack) {
  Terminal terminal({"shell"});
  Begin(terminal);
  terminal.type("bsr-t\tg\t\r");
  EXPECT_TRUE(terminal.shows("timer        300"));
  EXPECT_TRUE(terminal.shows(kPrompt));
  terminal.type(kArrowUp);
  EXPECT_TRUE(terminal.shows("bsr-timer get"));
  terminal.type("\r");
  EXPECT_TRUE(terminal.shows("timer        300"));
  terminal.type("bsr-timer \t");
  EXPECT_TRUE(terminal.shows("get  set"));
  terminal.type("\x15");
  terminal.type(kCtrlD);
  EXPECT_EQ(terminal.waitForEnd(), 0);
  EXPECT_TRUE(terminal.hasItsModesBack());
}

TEST_F(Shell, AMessageIsShownAboveTheLineThatIsBeingTyped) {
  const handset::Folder folder;
  handset::Modem modem(folder.root());
  modem.start();
  Terminal terminal({"shell", "--root", folder.root()});
  Begin(terminal);
  // Only the editor completes: the terminal may still echo by itself what is typed at once.
  terminal.type("coverag\t");
  EXPECT_TRUE(terminal.shows("Ge"));
  // Longer than a row of the terminal.
  terminal.type(" 7 " + std::string(79, 'a') + "b");
  EXPECT_TRUE(terminal.shows("ab"));
  modem.indicate(kCarrierValue, handset::le16(7));
  EXPECT_TRUE(terminal.shows("\x1b[1A\r\x1b[J    message  unsolicited 0x020001B0: carrier value"));
  EXPECT_TRUE(terminal.shows("value        7"));
  EXPECT_TRUE(terminal.shows("hook> coverage 7 aaa"));
  EXPECT_TRUE(terminal.shows("ab"));
  terminal.type("c\r");
  EXPECT_TRUE(terminal.shows("a selector  \x1b[2m(91 bytes)"));
  EXPECT_TRUE(terminal.shows("status       0 (success)"));
  terminal.type("modem stop\r");
  EXPECT_TRUE(terminal.shows("is another tool's: tell it there"));
  terminal.type("quit\r");
  EXPECT_EQ(terminal.waitForEnd(), 0);
}

TEST_F(Shell, CtrlCEndsItWhateverItIsAt) {
  struct Case {
    const char* typed;
    const char* shown;
  };
  const Case cases[] = {
      {"bsr-timer g", "bsr-timer g"},
      {"modem silent bsr-timer-read\rbsr-timer get\r", "request  CDMA request 0x020000BC"},
      {"wait 3600\r", "wait 3600\r\n"},
  };
  for (const Case& c : cases) {
    Terminal terminal({"shell"});
    const pid_t process = Begin(terminal);
    terminal.type(c.typed);
    EXPECT_TRUE(terminal.shows(c.shown));
    terminal.type(kCtrlC);
    EXPECT_EQ(terminal.waitForEnd(), 128 + SIGINT) << c.typed;
    EXPECT_EQ(kill(process, 0), -1);
    EXPECT_EQ(errno, ESRCH);
    EXPECT_TRUE(terminal.hasItsModesBack()) << c.typed;
    EXPECT_TRUE(std::filesystem::is_empty(temporary_)) << c.typed;
  }
}

TEST_F(Shell, AProcessThatDiesIsToldOfAtOnceAndCanBeRestarted) {
  Terminal terminal({"shell"});
  kill(Begin(terminal), SIGKILL);
  EXPECT_TRUE(
      terminal.shows("nothing serves requests any more: the process was ended by signal 9 (Killed). It last "
                     "logged:\r\n"));
  EXPECT_TRUE(terminal.shows("Child process waiting for data\r\nrestart starts it anew\r\nhook> "));
  terminal.type("bsr-timer get\r");
  EXPECT_TRUE(terminal.shows("no process serves requests; restart starts one"));
  terminal.type("restart\rbsr-timer get\r");
  EXPECT_TRUE(terminal.shows(" serves requests\r\n"));
  EXPECT_TRUE(terminal.shows("timer        300"));
  terminal.type("restart\r");
  EXPECT_TRUE(terminal.shows("the process has ended with status 0"));
  EXPECT_TRUE(terminal.shows(kPrompt));
  terminal.type("quit\r");
  EXPECT_EQ(terminal.waitForEnd(), 0);
}

TEST_F(Shell, AScriptRunsWithoutAPromptAndItsWrongLinesAreCounted) {
  const ToolResult result = RunTool({"shell"},
                                    "# the timer\n"
                                    "bsr-tmer get\n"
                                    "modem indicate carrier-value 7\n"
                                    "wait\n"
                                    "log on\n"
                                    "bsr-timer get\n"
                                    "log off\n"
                                    "log\n"
                                    "modem fial\n"
                                    "properties\n"
                                    "help plmn");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.err,
            "line 2: there is no request and no command 'bsr-tmer'; did you mean bsr-timer get, bsr-timer "
            "set?; help tells what there is\n"
            "line 8: log takes on, off or since\n"
            "line 9: the modem cannot be told 'fial'; did you mean fail?; it can be told set rde, set band, "
            "set bsr-timer, set tot-order, answer, fail, refuse, delay, silent, restore, publish, reset, "
            "indicate, stop, start\n");
  EXPECT_THAT(result.out, MatchesRegex("    message .*carrier value .*value        7\n.*"
                                       "    request  CDMA request 0x020000BC: [^\n]*\n"
                                       ".*    E RIL-KESEXT: Read 18 bytes from pipe\n"
                                       ".*    answer .*timer        300\n.*"
                                       "    ril.baseband.config.ver_num  Unknown\n.*"
                                       "  0x0A0006   plmn               reads the name of a network\n"
                                       " +mcc \\(0 to 65535\\) mnc \\(0 to 65535\\)\n"));
  EXPECT_THAT(result.out, Not(HasSubstr(kPrompt)));
  const ToolResult timed = RunTool({"shell", "--times"}, "bsr-timer set 5\nlog since\n");
  EXPECT_EQ(timed.status, 0);
  EXPECT_THAT(timed.out, MatchesRegex(" +0\\.[0-9]{3}  request .*\n +0\\.[0-9]{3}  answer .*"
                                      "\n +0\\.[0-9]{3}  E RIL-KESEXT: Read 22 bytes from pipe\n.*"));
}

}  // namespace
}  // namespace kesext_test
