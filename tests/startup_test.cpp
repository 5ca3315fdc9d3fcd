// From the command line to the first wait for a request.
#include <gmock/gmock.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>

#include "support/hook_process_test.h"

namespace kesext_test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsSupersetOf;
using ::testing::Not;

class StartupTest : public HookProcessTest {
 protected:
  /// Waits for the process to end by itself and gives its log, without priority and tag.
  std::vector<std::string> LogUntilExit(handset::Millis timeout = handset::kTimeout) {
    EXPECT_EQ(parent_->wait(timeout), 0);
    EXPECT_FALSE(parent_->nextUnsolicited()) << "the pipes are closed";
    // The pipe's end tells that the log is complete.
    parent_->waitForLogSince(0, "never logged");
    std::vector<std::string> texts;
    for (const std::string& line : parent_->logs())
      texts.push_back(line.substr(E("").size()));
    return texts;
  }
};

TEST_F(StartupTest, BringsUpNasThenDmsThenVendorAndServes) {
  Launch(3);
  ASSERT_TRUE(Logs("Child process waiting for data"));
  ExpectGolden(parent_->logs(), "startup_instance_3");
}

TEST_F(StartupTest, RunsAsTheRadioUser) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can become the radio user";
  Start();
  std::ifstream status("/proc/" + std::to_string(parent_->pid()) + "/status");
  std::string line;
  while (std::getline(status, line) && !line.starts_with("Uid:")) {
  }
  EXPECT_EQ(line, "Uid:\t1001\t1001\t1001\t1001");
}

TEST_F(StartupTest, MissingArgumentsAndDescriptorsOfMinusOneEndTheProcess) {
  using Arguments = std::vector<std::string>;
  for (const Arguments& a : {Arguments{"3", "4", "5"}, Arguments{}}) {
    Launch(a);
    EXPECT_THAT(LogUntilExit(),
                ElementsAre("Starting kesext_client", "Need 4 args " + std::to_string(a.size() + 1)));
  }
  for (const Arguments& a : {Arguments{"-1", "4", "5", "0"}, {"3", "-1", "5", "0"}, {"3", "4", "-1", "0"}}) {
    Launch(a);
    EXPECT_THAT(LogUntilExit(), ElementsAre("Starting kesext_client",
                                            "readfd=" + a[0] + ", writefd=" + a[1] +
                                                ", writeunsolfd=" + a[2] + " kes_ext_instance_id=0",
                                            "Invalid fds"));
  }
}

TEST_F(StartupTest, AClosedRequestPipeEndsTheProcessWithStatus0) {
  Start();
  parent_->closeRequests();
  const auto log = LogUntilExit();
  ASSERT_GE(log.size(), 2U);
  EXPECT_EQ(log[log.size() - 2], "Read 0 bytes from pipe");
  EXPECT_EQ(log.back(), "Buffer length is zero..Exiting KESEXT");
}

TEST_F(StartupTest, ALogThatNobodyReadsEndsNothing) {
  handset::ParentOptions options{.executable = "/bin/bash", .handset_root = folder_.root()};
  options.arguments = {"-c", R"(exec "$0" "$@" 2> >(exit))", KESEXT_BINARY, "3", "4", "5", "0"};
  parent_ = std::make_unique<handset::Parent>(std::move(options));
  EXPECT_EQ(parent_->ask(cdmaRequest(0x02000099)), cdmaResponse(0x02000099, 6));
  EXPECT_EQ(End(), 0);
}

TEST_F(StartupTest, SelectAndReadFailuresAreLoggedAndRetriedAtOnce) {
  struct Case {
    const char* request_pipe;
    const char* log;
  };
  // Two closed descriptors, one that cannot be, and one that may only be written.
  const Case cases[] = {{"99", "Select failed with errno = 9."},
                        {"1024", "Select failed with errno = 9."},
                        {"-2", "Select failed with errno = 9."},
                        {"4", "Dispatcher: read failed with errno 9"}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.request_pipe);
    Launch({c.request_pipe, "4", "5", "0"});
    // The response pipe becomes readable for select once the parent has left it.
    ASSERT_TRUE(Logs("Child process waiting for data"));
    parent_->closeResponses();
    for (int i = 0; i < 2; ++i) {
      EXPECT_TRUE(parent_->waitForLog(c.log));
      EXPECT_TRUE(parent_->waitForLog("Read failed"));
      EXPECT_TRUE(parent_->waitForLog("Child process waiting for data"));
    }
    parent_->kill(SIGKILL);
    EXPECT_EQ(parent_->wait(), -SIGKILL);
  }
}

TEST_F(StartupTest, ARequestPipeMayHaveAnyNumber) {
  handset::ParentOptions options{.executable = "/bin/bash", .handset_root = folder_.root()};
  options.arguments = {"-c", R"(ulimit -n 3000; exec "$0" 2500 4 5 0 2500<&3 3<&-)", KESEXT_BINARY};
  parent_ = std::make_unique<handset::Parent>(std::move(options));
  EXPECT_EQ(parent_->ask(cdmaRequest(0x02000099)), cdmaResponse(0x02000099, 6));
  EXPECT_EQ(End(), 0);
}

TEST_F(StartupTest, TheListOfInstancesHasRoomForAllThatWereCounted) {
  modem_.publish(Service::vendor, 1000);
  Start();
  EXPECT_TRUE(
      Logs("qmi_kesext_hook_client_init: qmi_client_get_service_list() returned 0 num_entries = 1000 "
           "num_services = 1000"));
}

TEST_F(StartupTest, AModemThatComesLateIsWaitedFor) {
  modem_.stop();
  Launch();
  ASSERT_TRUE(Logs("sprint_client_init: wait for server to come up."));
  modem_.start();
  EXPECT_TRUE(Logs("Child process waiting for data"));
  EXPECT_TRUE(Logs("sprint_client_init: qmi_client_get_service_list() returned -2 num_services = 0"));
}

TEST_F(StartupTest, AServiceThatIsPublishedLateIsWaitedFor) {
  modem_.publish(Service::vendor, 0);
  Launch();
  ASSERT_TRUE(Logs("qmi_kesext_hook_client_init: wait for server to come up."));
  modem_.publish(Service::vendor, 2);
  EXPECT_TRUE(
      Logs("qmi_kesext_hook_client_init: qmi_client_get_service_list() returned 0 num_entries = 2 "
           "num_services = 2"));
  EXPECT_TRUE(Logs("Child process waiting for data"));
}

TEST_F(StartupTest, BesideAnExternalModemASecondInstanceIsWaitedFor) {
  folder_.setProperty("ro.baseband", "xMdM9x");
  modem_.publish(Service::vendor, 2);
  Start();
  EXPECT_EQ(End(), 0);

  // The one instance signals the notifier, so the attempts follow each other without waiting.
  modem_.publish(Service::vendor, 1);
  Launch();
  const auto log = LogUntilExit();
  EXPECT_EQ(std::count(log.begin(), log.end(), "qmi_kesext_hook_client_init: wait for server to come up."),
            500);
  ASSERT_GE(log.size(), 2U);
  EXPECT_EQ(log[log.size() - 2], "qmi_kesext_hook_client_init: Giving up- Retries exceede 500 ");
  EXPECT_EQ(log.back(), "main:qmi_kesext_hook_client_t failed = -1");
}

TEST_F(StartupTest, ARefusedConnectionIsTriedFiveTimesForNasAndOnceForTheVendorService) {
  modem_.refuseConnect(Service::nas, 42);
  Launch();
  auto log = LogUntilExit();
  EXPECT_THAT(log,
              IsSupersetOf({"sprint_client_init: qmi_client_init failed. rc = 42",
                            "qmi_kesext_sprint_client_init_with_type: Try (1): Client init fail. rc = 42",
                            "qmi_kesext_sprint_client_init_with_type: Try (5): Client init fail. rc = 42",
                            "qmi_kesext_sprint_client_init: NAS Client Init rc: 42"}));
  EXPECT_THAT(log, Not(Contains("sprint_client_init: DMS")));
  EXPECT_EQ(log.back(), "main:qmi_kesext_sprint_client_init failed = 42");

  modem_.refuseConnect(Service::nas, 0);
  modem_.refuseConnect(Service::vendor, 43);
  Launch();
  log = LogUntilExit();
  ASSERT_GE(log.size(), 2U);
  EXPECT_EQ(log[log.size() - 2], "qmi_kesext_hook_client_init: qmi_client_init failed. rc = 43");
  EXPECT_EQ(log.back(), "main:qmi_kesext_hook_client_t failed = -1");
}

TEST_F(StartupTest, DmsThatIsNeverPublishedIsWaitedForFiveTimesFiveSeconds) {
  modem_.publish(Service::dms, 0);
  Launch();
  const auto log = LogUntilExit(handset::Millis(40'000));
  EXPECT_EQ(std::count(log.begin(), log.end(), "sprint_client_init: wait for server to come up."), 25);
  EXPECT_THAT(log,
              IsSupersetOf({"qmi_kesext_sprint_client_init: NAS Client Init rc: 0",
                            "sprint_client_init: qmi_client_get_service_list() returned -2 num_entries = 0 "
                            "num_services = 0",
                            "qmi_kesext_sprint_client_init_with_type: Try (5): Client init fail. rc = -2",
                            "qmi_kesext_sprint_client_init: DMS Client Init rc: -2"}));
  EXPECT_EQ(log.back(), "main:qmi_kesext_sprint_client_init failed = -2");
}

}  // namespace
}  // namespace kesext_test
