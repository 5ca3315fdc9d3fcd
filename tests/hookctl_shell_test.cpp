// The shell at a terminal.
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <filesystem>

#include "handset/folder.h"
#include "handset/modem.h"
#include "support/golden.h"
#include "support/terminal.h"
#include "support/tool_test.h"
#include "tools/shell/completion.h"

namespace kesext_test {
namespace {

using ::testing::HasSubstr;

constexpr const char* kPrompt = "hook> ";
constexpr const char* kCtrlC = "\x03";
constexpr const char* kArrowUp = "\x1b[A";
constexpr uint16_t kCarrierValue = 0x0012;

using Shell = ToolTest;

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
  EXPECT_TRUE(terminal.answers("bsr-t\tg\t\r", {"timer        300", kPrompt}));
  EXPECT_TRUE(terminal.answers(kArrowUp, {"bsr-timer get"}));
  EXPECT_TRUE(terminal.answers("\r", {"timer        300"}));
  EXPECT_TRUE(terminal.answers("bsr-timer \t", {"get  set"}));
  EXPECT_EQ(terminal.endsWith("\x15\x04"), 0);  // Ctrl-U, Ctrl-D
  EXPECT_TRUE(terminal.hasItsModesBack());
}

/// The cursor is where a line has its stroke.
TEST_F(Shell, EveryWordOfALineIsCompletedFromTheTables) {
  constexpr tools::Syntax kCommands[] = {
      {"force", "REQUEST"}, {"modem", "COMMAND"}, {"log", "on|off|since"}, {"help", "[TOPIC]"}, {"quit", ""}};
  for (auto [line, completed] : GoldenCases("completions")) {
    line.pop_back();
    const tools::Completion completion = tools::complete(kCommands, line);
    EXPECT_EQ(fmt::format("{}{}|\n{}\n", line, completion.insertion, fmt::join(completion.candidates, " ")),
              completed);
  }
}

TEST_F(Shell, AMessageIsShownAboveTheLineThatIsBeingTyped) {
  const handset::Folder folder;
  handset::Modem modem(folder.root());
  modem.start();
  Terminal terminal({"shell", "--root", folder.root()});
  Begin(terminal);
  // Only the editor completes: the terminal may still echo by itself what is typed at once.
  EXPECT_TRUE(terminal.answers("coverag\t", {"Ge"}));
  // Longer than a row of the terminal.
  EXPECT_TRUE(terminal.answers(" 7 " + std::string(79, 'a') + "b", {"ab"}));
  modem.indicate(kCarrierValue, handset::le16(7));
  EXPECT_TRUE(terminal.shows("\x1b[1A\r\x1b[J    message  unsolicited 0x020001B0: carrier value"));
  EXPECT_TRUE(terminal.shows("value        7"));
  EXPECT_TRUE(terminal.shows("hook> coverage 7 aaa"));
  EXPECT_TRUE(terminal.shows("ab"));
  EXPECT_TRUE(terminal.answers("c\r", {"a selector  \x1b[2m(91 bytes)", "status       0 (success)"}));
  EXPECT_TRUE(terminal.answers("modem stop\r", {"is another tool's: tell it there"}));
  EXPECT_EQ(terminal.endsWith("quit\r"), 0);
}

TEST_F(Shell, CtrlCDropsTheLineOrTheWaitAndTwiceEndsIt) {
  struct Case {
    const char* typed;
    const char* done;  // before the last line is read: a terminal echoes at once what is typed ahead
    const char* shown;
    const char* dropped;
  };
  const Case cases[] = {
      {"bsr-timer g\t", "", "et ", "bsr-timer get ^C  (Ctrl-C again ends the shell)\r\n"},
      {"modem silent bsr-timer-read\rbsr-timer get\r", "", "Ctrl-C gives it up\r\n",
       "given up, but the next request waits for it; Ctrl-C again ends the shell\r\n"},
      {"wait 0\rwait 3600\r", "within 0 s", "wait 3600\r\n", "given up; Ctrl-C again ends the shell\r\n"},
  };
  for (const Case& c : cases) {
    Terminal terminal({"shell"});
    const pid_t process = Begin(terminal);
    EXPECT_TRUE(terminal.answers(c.typed, {c.done, c.shown})) << c.typed;
    EXPECT_TRUE(terminal.answers(kCtrlC, {c.dropped, kPrompt})) << c.typed;
    EXPECT_TRUE(terminal.answers("help quit\r", {"ends the process and the shell", kPrompt})) << c.typed;
    EXPECT_TRUE(terminal.answers(kCtrlC, {kPrompt})) << c.typed;
    EXPECT_EQ(terminal.endsWith(kCtrlC), 128 + SIGINT) << c.typed;
    EXPECT_EQ(kill(process, 0), -1);
    EXPECT_EQ(errno, ESRCH);
    EXPECT_TRUE(terminal.hasItsModesBack()) << c.typed;
    EXPECT_TRUE(std::filesystem::is_empty(temporary_)) << c.typed;
  }
}

TEST_F(Shell, AnAnswerThatWasGivenUpIsNotTakenForTheNext) {
  Terminal terminal({"shell"});
  Begin(terminal);
  EXPECT_TRUE(terminal.answers("modem delay bsr-timer-read 1000\rbsr-timer get\r",
                               {"request  CDMA request 0x020000BC"}));
  EXPECT_TRUE(terminal.answers(kCtrlC, {"given up", kPrompt}));
  EXPECT_TRUE(terminal.answers("band10 get\r",
                               {"timer        300", "that was the answer to bsr-timer get, after all\r\n",
                                "answer   CDMA answer 0x020000B0"}));
  EXPECT_EQ(terminal.endsWith("quit\r"), 0);
}

TEST_F(Shell, TheHistoryOutlivesTheSessionAndItsEnd) {
  std::string lines = "_HiStOrY_V2_\n";
  for (int i = 0; i < 1200; ++i)
    lines += fmt::format("rde\\040read\\040{}\n", i);
  const std::string history = Write("hookctl/history", lines);
  {
    Terminal terminal({"shell"});
    Begin(terminal);
    EXPECT_TRUE(terminal.answers("bsr-timer get\r", {kPrompt}));
    EXPECT_TRUE(terminal.answers(kCtrlC, {kPrompt}));
    EXPECT_EQ(terminal.endsWith(kCtrlC), 128 + SIGINT);
  }
  Terminal terminal({"shell"});
  Begin(terminal);
  EXPECT_TRUE(terminal.answers(kArrowUp, {"bsr-timer get"}));
  EXPECT_TRUE(terminal.answers(kArrowUp, {"rde read 1199"}));
  EXPECT_EQ(terminal.endsWith("\x15\x04"), 0);  // Ctrl-U, Ctrl-D
  const std::string kept = FileText(history);
  EXPECT_EQ(std::count(kept.begin(), kept.end(), '\n'), 1 + 1000);
}

TEST_F(Shell, AProcessThatDiesIsToldOfAtOnceAndCanBeRestarted) {
  Terminal terminal({"shell"});
  kill(Begin(terminal), SIGKILL);
  EXPECT_TRUE(
      terminal.shows("nothing serves requests any more: the process was ended by signal 9 (Killed). It last "
                     "logged:\r\n"));
  EXPECT_TRUE(terminal.shows("Child process waiting for data\r\nrestart starts it anew\r\nhook> "));
  EXPECT_TRUE(terminal.answers("bsr-timer get\r", {"no process serves requests; restart starts one"}));
  EXPECT_TRUE(terminal.answers("restart\rbsr-timer get\r", {" serves requests\r\n", "timer        300"}));
  EXPECT_TRUE(terminal.answers("restart\r", {"the process has ended with status 0", kPrompt}));
  EXPECT_EQ(terminal.endsWith("quit\r"), 0);
}

TEST_F(Shell, ARecordedSessionIsKeptWhateverEndsIt) {
  const std::string file = own_ + "/session.json";
  {
    Terminal terminal({"shell", "--record", file});
    const pid_t process = Begin(terminal);
    EXPECT_TRUE(terminal.answers("modem delay bsr-timer-read 500\rbsr-timer get\r", {"request  "}));
    EXPECT_TRUE(terminal.answers(kCtrlC, {"given up", kPrompt}));
    kill(process, SIGKILL);
    EXPECT_TRUE(terminal.shows("restart starts it anew"));
    EXPECT_TRUE(terminal.answers("modem restore bsr-timer-read\rrestart\rbsr-timer set 2\rwait 3600\r",
                                 {"what follows is not recorded", "answer  ", "wait 3600\r\n"}));
    EXPECT_TRUE(terminal.answers(kCtrlC, {kPrompt}));
    EXPECT_EQ(terminal.endsWith(kCtrlC), 128 + SIGINT);
  }
  EXPECT_THAT(FileText(file), HasSubstr("    },\n"
                                        "    {\"modem\": \"delay bsr-timer-read 500\"},\n"
                                        "    {\"request\": \"bsr-timer get\"}\n"
                                        "  ]\n"));
  EXPECT_EQ(RunTool({"play", file}).status, 0);
}

}  // namespace
}  // namespace kesext_test
