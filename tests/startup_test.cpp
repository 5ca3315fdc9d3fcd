// From the command line to the first wait for a request.
#include <unistd.h>

#include <algorithm>
#include <fstream>

#include "support/hook_process_test.h"

namespace kesext_test {
namespace {

class StartupTest : public HookProcessTest {
 protected:
  /// Waits for the process to end by itself, and adds its log to the record.
  void RecordUntilExit(const std::string& title, handset::Millis timeout = handset::kTimeout) {
    EXPECT_EQ(parent_->wait(timeout), 0);
    EXPECT_FALSE(parent_->nextUnsolicited()) << "the pipes are closed";
    // The pipe's end tells that the log is complete.
    parent_->waitForLogSince(0, "never logged");
    record_.push_back("# " + title);
    for (const std::string& line : parent_->logs())
      record_.push_back(line);
  }
};

TEST_F(StartupTest, BringsUpNasThenDmsThenVendorAndServesUntilTheRequestPipeIsClosed) {
  Launch({"3", "4", "5", "3"});
  ASSERT_TRUE(Logs("Child process waiting for data"));
  parent_->closeRequests();
  RecordUntilExit("instance 3");
  ExpectGolden(record_, "startup_instance_3");
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
  for (const Arguments& arguments :
       {Arguments{}, {"3", "4", "5"}, {"-1", "4", "5", "0"}, {"3", "-1", "5", "0"}, {"3", "4", "-1", "0"}}) {
    Launch(arguments);
    RecordUntilExit(std::to_string(arguments.size()) + " arguments");
  }
  ExpectGolden(record_, "startup_arguments");
}

TEST_F(StartupTest, ALogThatNobodyReadsEndsNothing) {
  LaunchFromShell(R"(exec "$0" "$@" 2> >(exit))");
  EXPECT_TRUE(parent_->send(cdmaRequest(0x02000099)));
  EXPECT_EQ(parent_->nextResponse(), cdmaResponse(0x02000099, 6));
  EXPECT_EQ(End(), 0);
}

#ifndef __SANITIZE_THREAD__  // whose own files come before the process's
TEST_F(StartupTest, FilesThatTakeNothingEndNothing) {
  LaunchFromShell(R"(ulimit -f 0; exec "$0" "$@")");
  EXPECT_TRUE(Logs("Child process waiting for data"));
}
#endif

TEST_F(StartupTest, SelectAndReadFailuresAreLoggedAndRetriedAtOnce) {
  // Two closed descriptors, one that cannot be, and one that may only be written.
  const std::pair<const char*, const char*> cases[] = {{"99", "Select failed with errno = 9."},
                                                       {"1024", "Select failed with errno = 9."},
                                                       {"-2", "Select failed with errno = 9."},
                                                       {"4", "Dispatcher: read failed with errno 9"}};
  for (const auto& [request_pipe, line] : cases) {
    SCOPED_TRACE(request_pipe);
    Launch({request_pipe, "4", "5", "0"});
    // The response pipe becomes readable for select once the parent has left it.
    ASSERT_TRUE(Logs("Child process waiting for data"));
    parent_->closeResponses();
    for (int i = 0; i < 2; ++i) {
      EXPECT_TRUE(parent_->waitForLog(line));
      EXPECT_TRUE(parent_->waitForLog("Read failed"));
      EXPECT_TRUE(parent_->waitForLog("Child process waiting for data"));
    }
    parent_->kill(SIGKILL);
    EXPECT_EQ(parent_->wait(), -SIGKILL);
  }
}

TEST_F(StartupTest, ARequestPipeMayHaveAnyNumber) {
  LaunchFromShell(R"(ulimit -n 3000; exec "$0" 2500 4 5 0 2500<&3 3<&-)");
  EXPECT_TRUE(parent_->send(cdmaRequest(0x02000099)));
  EXPECT_EQ(parent_->nextResponse(), cdmaResponse(0x02000099, 6));
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
  RecordUntilExit("one instance");
  EXPECT_EQ(std::count(record_.begin(), record_.end(),
                       E("qmi_kesext_hook_client_init: wait for server to come up.")),
            500);
  record_.erase(record_.begin(), record_.end() - 2);
  ExpectGolden(record_, "startup_one_instance");
}

TEST_F(StartupTest, ARefusedConnectionIsTriedFiveTimesForNasAndOnceForTheVendorService) {
  modem_.refuseConnect(Service::nas, 42);
  Launch();
  RecordUntilExit("no NAS");
  modem_.refuseConnect(Service::nas, 0);
  modem_.refuseConnect(Service::vendor, 43);
  Launch();
  RecordUntilExit("no vendor service");
  ExpectGolden(record_, "startup_refused");
}

TEST_F(StartupTest, DmsThatIsNeverPublishedIsWaitedForFiveTimesFiveSeconds) {
  modem_.publish(Service::dms, 0);
  Launch();
  RecordUntilExit("no DMS", handset::Millis(40'000));
  ExpectGolden(record_, "startup_no_dms");
}

}  // namespace
}  // namespace kesext_test
