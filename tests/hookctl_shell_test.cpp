// The shell, at a terminal and in a script.
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gmock/gmock.h>
#include <sys/stat.h>

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

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::Not;

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

TEST_F(Shell, TheWrongLinesOfAScriptAreCountedAndTheOthersDone) {
  std::string script = "# the timer\n";
  std::string said;
  for (size_t number = 2; const auto& [line, wrong] : GoldenCases("wrong_shell_lines")) {
    script += line + "\n";
    said += fmt::format("line {}: {}", number++, wrong);
  }
  const ToolResult result = RunTool({"shell"}, script +
                                                   "modem indicate carrier-value 7\nwait 9.5\nlog on\n"
                                                   "bsr-timer get\nlog off\nproperties\nhelp plmn");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.err, said);
  EXPECT_THAT(result.out, MatchesRegex("hook> # the timer\n.*hook> modem indicate carrier-value 7\n.*"
                                       "    message .*carrier value .*value        7\n.*"
                                       "hook> bsr-timer get\n"
                                       "    request  CDMA request 0x020000BC: [^\n]*\n"
                                       ".*    E RIL-KESEXT: Read 18 bytes from pipe\n"
                                       ".*    answer .*timer        300\n.*"
                                       "    ril.baseband.config.ver_num  Unknown\n.*"
                                       "  0x0A0006   plmn               reads the name of a network\n"
                                       " +mcc \\(0 to 65535\\) mnc \\(0 to 65535\\)\n"));
  const ToolResult timed = RunTool({"shell", "--times"}, "bsr-timer set 5\nlog since\n");
  EXPECT_EQ(timed.status, 0);
  EXPECT_THAT(timed.out,
              MatchesRegex("hook> bsr-timer set 5\n +0\\.[0-9]{3}  request .*\n +0\\.[0-9]{3}  answer .*"
                           "\n +0\\.[0-9]{3}  E RIL-KESEXT: Read 22 bytes from pipe\n.*"));
}

TEST_F(Shell, AScriptEndsBehindTheMessagesOfItsIndications) {
  // A process that is gone as soon as its requests end, whatever it still has to do; storing a package takes
  // it a while.
  const std::string requests = own_ + "/requests";
  ASSERT_EQ(mkfifo(requests.c_str(), 0666), 0);
  const std::string process = Write("process", "#!/bin/bash\n" KESEXT_BINARY " \"$@\" 3<>" + requests +
                                                   " &\ncat <&3 >/dev/null\nkill -9 $!\n");
  constexpr int kIndications = 50;
  std::string typed = "log on\ntrace on\nmodem indicate log 1 A5*100000\n";
  for (int i = 0; i < kIndications; ++i)
    typed += "modem indicate carrier-value 7\n";
  for (const char* last : {"", "quit\n"}) {
    const ToolResult result = RunTool({"--executable", process, "shell"}, typed + last);
    EXPECT_EQ(result.status, 0);
    size_t messages = 0;
    for (size_t at = 0; (at = result.out.find("value        7\n", at)) != std::string::npos; ++at)
      ++messages;
    EXPECT_EQ(messages, kIndications) << last;
    for (const char* unasked : {"65535", "0xffff", "0xFFFF"})
      EXPECT_EQ(result.out.find(unasked), std::string::npos) << unasked;
  }
}

TEST_F(Shell, ASessionIsRecordedAsAScenarioThatTellsWhatAnotherBuildDoesOtherwise) {
  const std::string file = own_ + "/session.json";
  const ToolResult session =
      RunTool({"shell", "--record", file}, FileText(KESEXT_GOLDEN "/recorded_session.txt"));
  EXPECT_EQ(session.status, 1);
  EXPECT_EQ(FileText(file), FileText(KESEXT_GOLDEN "/recorded_session.json"));
  const ToolResult same = RunTool({"play", file});
  EXPECT_EQ(same.status, 0) << same.out << same.err;

  // One byte of the network's name, and of no other answer, changes on its way from the process.
  const std::string executable = Write(
      "process", "#!/bin/bash\nexec " KESEXT_BINARY " \"$@\" 4> >(LC_ALL=C exec stdbuf -o0 tr s z >&4)\n");
  const ToolResult other = RunTool({"--executable", executable, "play", file});
  EXPECT_EQ(other.status, 1) << other.err;
  EXPECT_THAT(
      other.out,
      HasSubstr("  WRONG       request plmn 310 120\n    name: expected \"Testnet\", not \"Teztnet\"\n"));
  EXPECT_THAT(other.out, HasSubstr("11 of 12 steps as expected"));
}

TEST_F(Shell, ARecordedSessionNeedsNothingBesideItsFileToBePlayed) {
  const std::string file = own_ + "/session.json";
  const ToolResult session = RunTool({"shell", "--instance", "1", "--record", file},
                                     "modem indicate carrier-value 3\nlog since\nnam read\n"
                                     "rde write 3 text:caf\xE9\n");
  EXPECT_EQ(session.err,
            "line 4: a line that is recorded has to be UTF-8; other bytes are given as digits\n");
  EXPECT_THAT(session.out, AllOf(HasSubstr("Unsol resp 0x12 is handled"), Not(HasSubstr("65535"))));
  EXPECT_THAT(FileText(file), AllOf(HasSubstr("  \"instance\": 1,\n"), HasSubstr("\"imsiT\": \"\",\n"),
                                    Not(HasSubstr("\"bytes\""))));
  const ToolResult same = RunTool({"play", file});
  EXPECT_EQ(same.status, 0) << same.out << same.err;
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

  const handset::Folder folder;
  handset::Modem modem(folder.root());
  modem.start();
  const ToolResult shared = RunTool({"shell", "--root", folder.root(), "--record", file});
  EXPECT_EQ(shared.status, 2);
  EXPECT_THAT(shared.err, HasSubstr("is another tool's: a session with it cannot be recorded"));
  const std::string pipe = own_ + "/pipe";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  EXPECT_THAT(RunTool({"shell", "--record", pipe}).err, HasSubstr("/pipe, which is no file"));
  EXPECT_TRUE(std::filesystem::is_fifo(pipe));
}

}  // namespace
}  // namespace kesext_test
