// The shell, at a terminal and in a script.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "handset/folder.h"
#include "handset/modem.h"
#include "support/terminal.h"
#include "support/tool_test.h"

namespace kesext_test {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::Not;

constexpr const char* kPrompt = "hook> ";
constexpr const char* kCtrlC = "\x03";
constexpr const char* kCtrlD = "\x04";
constexpr const char* kArrowUp = "\x1b[A";
constexpr uint16_t kCarrierValue = 0x0012;

std::string ReadFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

class Shell : public ToolTest {
 protected:
  /// Nothing of the history of whoever runs this.
  Shell() {
    std::filesystem::create_directory(kept_);
    std::filesystem::permissions(kept_, std::filesystem::perms::all);
    setenv("XDG_STATE_HOME", kept_.c_str(), 1);
  }
  ~Shell() override {
    unsetenv("XDG_STATE_HOME");
    std::filesystem::remove_all(kept_);
  }

  const std::filesystem::path kept_ = temporary_ + ".kept";
};

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
    terminal.type(c.typed);
    EXPECT_TRUE(terminal.shows(c.done)) << c.typed;
    EXPECT_TRUE(terminal.shows(c.shown)) << c.typed;
    terminal.type(kCtrlC);
    EXPECT_TRUE(terminal.shows(c.dropped)) << c.typed;
    EXPECT_TRUE(terminal.shows(kPrompt)) << c.typed;
    terminal.type("help quit\r");
    EXPECT_TRUE(terminal.shows("ends the process and the shell")) << c.typed;
    EXPECT_TRUE(terminal.shows(kPrompt)) << c.typed;
    terminal.type(kCtrlC);
    EXPECT_TRUE(terminal.shows(kPrompt)) << c.typed;
    terminal.type(kCtrlC);
    EXPECT_EQ(terminal.waitForEnd(), 128 + SIGINT) << c.typed;
    EXPECT_EQ(kill(process, 0), -1);
    EXPECT_EQ(errno, ESRCH);
    EXPECT_TRUE(terminal.hasItsModesBack()) << c.typed;
    EXPECT_TRUE(std::filesystem::is_empty(temporary_)) << c.typed;
  }
}

TEST_F(Shell, AnAnswerThatWasGivenUpIsNotTakenForTheNext) {
  Terminal terminal({"shell"});
  Begin(terminal);
  terminal.type("modem delay bsr-timer-read 1000\rbsr-timer get\r");
  EXPECT_TRUE(terminal.shows("request  CDMA request 0x020000BC"));
  terminal.type(kCtrlC);
  EXPECT_TRUE(terminal.shows("given up"));
  EXPECT_TRUE(terminal.shows(kPrompt));
  terminal.type("band10 get\r");
  EXPECT_TRUE(terminal.shows("timer        300"));
  EXPECT_TRUE(terminal.shows("that was the answer to bsr-timer get, after all\r\n"));
  EXPECT_TRUE(terminal.shows("answer   CDMA answer 0x020000B0"));
  terminal.type("quit\r");
  EXPECT_EQ(terminal.waitForEnd(), 0);
}

TEST_F(Shell, TheHistoryOutlivesTheSessionAndItsEnd) {
  const std::filesystem::path history = kept_ / "hookctl" / "history";
  std::filesystem::create_directory(kept_ / "hookctl");
  {
    std::ofstream file(history);
    file << "_HiStOrY_V2_\n";
    for (int i = 0; i < 1200; ++i)
      file << "rde\\040read\\040" << i << '\n';
  }
  {
    Terminal terminal({"shell"});
    Begin(terminal);
    terminal.type("bsr-timer get\r");
    EXPECT_TRUE(terminal.shows(kPrompt));
    terminal.type(kCtrlC);
    EXPECT_TRUE(terminal.shows(kPrompt));
    terminal.type(kCtrlC);
    EXPECT_EQ(terminal.waitForEnd(), 128 + SIGINT);
  }
  Terminal terminal({"shell"});
  Begin(terminal);
  terminal.type(kArrowUp);
  EXPECT_TRUE(terminal.shows("bsr-timer get"));
  terminal.type(kArrowUp);
  EXPECT_TRUE(terminal.shows("rde read 1199"));
  terminal.type("\x15");
  terminal.type(kCtrlD);
  EXPECT_EQ(terminal.waitForEnd(), 0);
  const std::string kept = ReadFile(history);
  EXPECT_EQ(std::count(kept.begin(), kept.end(), '\n'), 1 + 1000);
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
                                    "wait 9.5\n"
                                    "log on\n"
                                    "bsr-timer get\n"
                                    "log off\n"
                                    "log\n"
                                    "modem fial\n"
                                    "properties\n"
                                    "wait 0.05\n"
                                    "wait 0.5s\n"
                                    "help plmn");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.err,
            "line 2: there is no request and no command 'bsr-tmer'; did you mean bsr-timer get, bsr-timer "
            "set?; help tells what there is\n"
            "line 8: log takes on, off or since\n"
            "line 9: the modem cannot be told 'fial'; did you mean fail?; it can be told set rde, set band, "
            "set bsr-timer, set tot-order, answer, fail, refuse, delay, silent, restore, publish, reset, "
            "indicate, stop, start\n"
            "line 11: no message came within 0.05 s\n"
            "line 12: SECONDS takes seconds from 0 to 3600, such as 0.5, not '0.5s'\n");
  EXPECT_THAT(result.out, MatchesRegex("hook> # the timer\nhook> bsr-tmer get\n"
                                       "hook> modem indicate carrier-value 7\n.*"
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
  const std::string process = temporary_ + "/process";
  const std::string requests = temporary_ + "/requests";
  ASSERT_EQ(mkfifo(requests.c_str(), 0666), 0);
  std::ofstream(process) << "#!/bin/bash\n" KESEXT_BINARY " \"$@\" 3<>" << requests
                         << " &\ncat <&3 >/dev/null\nkill -9 $!\n";
  std::filesystem::permissions(process, std::filesystem::perms::all);
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
  std::filesystem::remove(process);
  std::filesystem::remove(requests);
}

TEST_F(Shell, ASessionIsRecordedAsAScenarioThatTellsWhatAnotherBuildDoesOtherwise) {
  const std::string file = kept_ / "session.json";
  const ToolResult session = RunTool({"shell", "--record", file},
                                     "# The timer is set\n"
                                     "bsr-timer set 30\n"
                                     "help requests\n"
                                     "  bsr-timer get \n"
                                     "modem fail rde-read 90\n"
                                     "modem delay rde-read 5\n"
                                     "log since\n"
                                     "rde read 10017\n"
                                     "modem restore rde-read\n"
                                     "restart\n"
                                     "modem indicate coverage record=3333\n"
                                     "modem indicate tuner event=8201030405\n"
                                     "wait 0\n"
                                     "rde raed 1\n"
                                     "plmn 310 120\n"
                                     "raw 00050077 00000000\n");
  EXPECT_EQ(session.status, 1);
  EXPECT_EQ(ReadFile(file), ReadFile(KESEXT_GOLDEN "/recorded_session.json"));
  const ToolResult same = RunTool({"play", file});
  EXPECT_EQ(same.status, 0) << same.out << same.err;

  // One byte of the network's name, and of no other answer, changes on its way from the process.
  const std::string executable = kept_ / "process";
  std::ofstream(executable) << "#!/bin/bash\nexec " KESEXT_BINARY
                               " \"$@\" 4> >(LC_ALL=C exec stdbuf -o0 tr s z >&4)\n";
  std::filesystem::permissions(executable, std::filesystem::perms::all);
  const ToolResult other = RunTool({"--executable", executable, "play", file});
  EXPECT_EQ(other.status, 1) << other.err;
  EXPECT_THAT(
      other.out,
      HasSubstr("  WRONG       request plmn 310 120\n    name: expected \"Testnet\", not \"Teztnet\"\n"));
  EXPECT_THAT(other.out, HasSubstr("11 of 12 steps as expected"));
}

TEST_F(Shell, ARecordedSessionNeedsNothingBesideItsFileToBePlayed) {
  const std::string file = kept_ / "session.json";
  const ToolResult session = RunTool({"shell", "--instance", "1", "--record", file},
                                     "modem indicate carrier-value 3\nlog since\nnam read\n"
                                     "rde write 3 text:caf\xE9\n");
  EXPECT_EQ(session.err,
            "line 4: a line that is recorded has to be UTF-8; other bytes are given as digits\n");
  EXPECT_THAT(session.out, AllOf(HasSubstr("Unsol resp 0x12 is handled"), Not(HasSubstr("65535"))));
  EXPECT_THAT(ReadFile(file), AllOf(HasSubstr("  \"instance\": 1,\n"), HasSubstr("\"imsiT\": \"\",\n"),
                                    Not(HasSubstr("\"bytes\""))));
  const ToolResult same = RunTool({"play", file});
  EXPECT_EQ(same.status, 0) << same.out << same.err;
}

TEST_F(Shell, ARecordedSessionIsKeptWhateverEndsIt) {
  const std::string file = kept_ / "session.json";
  {
    Terminal terminal({"shell", "--record", file});
    const pid_t process = Begin(terminal);
    terminal.type("modem delay bsr-timer-read 500\rbsr-timer get\r");
    EXPECT_TRUE(terminal.shows("request  "));
    terminal.type(kCtrlC);
    EXPECT_TRUE(terminal.shows("given up"));
    EXPECT_TRUE(terminal.shows(kPrompt));
    kill(process, SIGKILL);
    EXPECT_TRUE(terminal.shows("restart starts it anew"));
    terminal.type("modem restore bsr-timer-read\rrestart\rbsr-timer set 2\rwait 3600\r");
    EXPECT_TRUE(terminal.shows("what follows is not recorded"));
    EXPECT_TRUE(terminal.shows("answer  "));
    EXPECT_TRUE(terminal.shows("wait 3600\r\n"));
    terminal.type(kCtrlC);
    EXPECT_TRUE(terminal.shows(kPrompt));
    terminal.type(kCtrlC);
    EXPECT_EQ(terminal.waitForEnd(), 128 + SIGINT);
  }
  EXPECT_THAT(ReadFile(file), HasSubstr("    },\n"
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
  const ToolResult nowhere = RunTool({"shell", "--record", "/nowhere/session.json"});
  EXPECT_EQ(nowhere.status, 2);
  EXPECT_THAT(nowhere.err,
              HasSubstr("cannot be recorded in /nowhere/session.json: No such file or directory"));
  const std::string pipe = kept_ / "pipe";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  EXPECT_THAT(RunTool({"shell", "--record", pipe}).err, HasSubstr("/pipe, which is no file"));
  EXPECT_TRUE(std::filesystem::is_fifo(pipe));
}

}  // namespace
}  // namespace kesext_test
