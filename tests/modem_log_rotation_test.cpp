// When a new modem log begins, what it is called, and what goes for it.
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <utime.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iomanip>
#include <limits>
#include <sstream>

#include "adam/adam_state.h"
#include "adam/log_directory.h"
#include "adam/log_update.h"
#include "handset/folder.h"
#include "support/fake_platform.h"
#include "support/log_listing.h"

namespace kesext_test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

/// A second before midnight, UTC; local time is two hours ahead.
constexpr time_t kStart = 1'706'745'599;
constexpr time_t kLocalAhead = 7'200;
constexpr time_t kPeriod = 43'200;
constexpr const char* kPackage = "/data/adam/~adam0003.log";

/// The log file that is created at a time.
std::string logAt(time_t time) {
  const time_t local = time + kLocalAhead;
  std::ostringstream name;
  name << std::put_time(gmtime(&local), "adam_%Y%m%d%H%M%S.log");
  return name.str();
}
std::string pathAt(time_t time) {
  return "/data/adam/" + logAt(time);
}

class ModemLogRotationTest : public ::testing::Test {
 protected:
  ModemLogRotationTest() {
    setenv("HANDSET_ROOT", folder_.root().c_str(), 1);
    setenv("TZ", "XST-2", 1);
    umask(022);
    resetFakes();
    kesext::adam_state = {};
    handset::joinLogGroup();
    folder_.makeFolder("/data/adam");
  }
  ~ModemLogRotationTest() override {
    resetFakes();
    unsetenv("TZ");
    unsetenv("HANDSET_ROOT");
  }

  void SetTime(const std::string& path, time_t written) {
    const utimbuf times{written, written};
    ASSERT_EQ(utime(folder_.path(path).c_str(), &times), 0);
  }
  /// A file that was last written at a time.
  void Write(const std::string& path, time_t written) {
    folder_.writeFile(path, "package\n");
    SetTime(path, written);
  }
  std::string Create(time_t now) {
    fake_time = now;
    kesext::LogPath path{};
    EXPECT_EQ(kesext::adam_create_new_log(path), 0);
    SetTime(path.data(), now);
    return path.data();
  }
  /// Appends a package at a time, and tells whether that began a new log.
  bool Rotates(time_t now) {
    fake_time = now;
    Write(kPackage, now);
    fake_log.clear();
    kesext::adam_update_current_log(kPackage);
    EXPECT_EQ(fake_log.back().substr(0, 34), "E adam_update_current_log: update ");
    EXPECT_FALSE(Exists(kPackage));
    return std::find(fake_log.begin(), fake_log.end(),
                     "E adam_create_new_log: create new " + pathAt(now) + ".") != fake_log.end();
  }
  [[nodiscard]] bool Exists(const std::string& path) const {
    return std::filesystem::exists(folder_.path(path));
  }
  [[nodiscard]] std::vector<std::string> HandedOff() const {
    std::vector<std::string> texts;
    for (const handset::DropboxEntry& entry : folder_.dropboxEntries())
      texts.push_back(entry.text);
    return texts;
  }

  handset::Folder folder_;
};

TEST_F(ModemLogRotationTest, ThePeriodBeginsWithTheFirstPackageAndAgainWithEachHandOff) {
  Write(Create(kStart), kStart);
  const time_t first = kStart + 100 * kPeriod;
  EXPECT_FALSE(Rotates(first)) << "however old the log is";
  EXPECT_FALSE(Rotates(first + kPeriod - 1));
  EXPECT_TRUE(Rotates(first + kPeriod));
  EXPECT_FALSE(Rotates(first + 2 * kPeriod - 1));
  EXPECT_TRUE(Rotates(first + 2 * kPeriod));
  EXPECT_THAT(HandedOff(), ElementsAre(pathAt(kStart), pathAt(first + kPeriod)));
}

TEST_F(ModemLogRotationTest, AnEmptyLogIsNotHandedOffAndDoesNotBeginThePeriod) {
  EXPECT_TRUE(Rotates(kStart)) << "there was none";
  std::filesystem::resize_file(folder_.path(pathAt(kStart)), 0);
  EXPECT_TRUE(Rotates(kStart + kPeriod));
  EXPECT_THAT(HandedOff(), IsEmpty());
  EXPECT_TRUE(Rotates(kStart + kPeriod + 1));
  EXPECT_THAT(HandedOff(), ElementsAre(pathAt(kStart + kPeriod)));
}

TEST_F(ModemLogRotationTest, EachNewLogPushesTheOthersDown) {
  const auto link = [](int index, time_t time) {
    return ".000" + std::to_string(index) + " -> " + pathAt(time);
  };
  const auto removed = [](time_t time) { return "E adam_create_new_log: remove old " + pathAt(time); };
  Create(kStart);
  EXPECT_THAT(logListing(folder_), ElementsAre(link(1, kStart), logAt(kStart)));
  EXPECT_EQ(handset::logEntries(folder_).back().mode, 0740U);
  Create(kStart + 1);
  EXPECT_THAT(logListing(folder_),
              ElementsAre(link(1, kStart + 1), link(2, kStart), logAt(kStart), logAt(kStart + 1)));
  EXPECT_THAT(fake_log, Not(Contains(removed(kStart))));
  for (const time_t now : {kStart + 2, kStart + 3}) {
    Create(now);
    EXPECT_THAT(logListing(folder_), ElementsAre(link(1, now), link(2, now - 1), logAt(now - 1), logAt(now)));
    EXPECT_THAT(fake_log, Contains(removed(now - 2)));
  }
}

TEST_F(ModemLogRotationTest, StraysOfTwoDaysGoWithTheThirdLog) {
  struct Stray {
    const char* path;
    time_t distance;  // in time, from the third log
    bool stays;
  };
  const Stray strays[] = {
      {"/data/adam/ancient", -9'000'000, false}, {"/data/adam/older", -172'800, false},
      {"/data/adam/younger", -172'799, true},    {"/data/adam/nearer", 172'799, true},
      {"/data/adam/farther", 172'800, false},    {"/data/adam/~adam0009.log", -172'800, false},
      {"/data/adam/.hidden", -9'000'000, true}};
  const time_t third = kStart + 2;
  for (const Stray& stray : strays)
    Write(stray.path, third + stray.distance);
  Write(Create(kStart), kStart);
  Write(Create(kStart + 1), 0);
  for (const Stray& stray : strays)
    EXPECT_TRUE(Exists(stray.path)) << stray.path << " with the second log";
  Create(third);
  for (const Stray& stray : strays) {
    const std::string line = std::string("E adam_clean_dir: unexpected ") + stray.path;
    EXPECT_EQ(Exists(stray.path), stray.stays) << stray.path;
    EXPECT_THAT(fake_log, Contains(line).Times(stray.stays ? 0 : 1));
  }
  EXPECT_TRUE(Exists(pathAt(third)));
  EXPECT_TRUE(Exists(pathAt(kStart + 1))) << "the previous log, however old";
}

TEST_F(ModemLogRotationTest, ALogIsNamedForTheLocalTime) {
  EXPECT_EQ(Create(kStart), "/data/adam/adam_20240201015959.log");
  EXPECT_EQ(Create(std::numeric_limits<time_t>::max()), "/data/adam/adam_19000101000000.log") << "of no year";
}

TEST_F(ModemLogRotationTest, APackageThatIsNotThereOrCannotBeReadLeavesTheLogAsItWas) {
  Rotates(kStart);
  const auto update = [this] {
    fake_log.clear();
    kesext::adam_update_current_log(kPackage);
    EXPECT_EQ(folder_.readFile(pathAt(kStart)), handset::bytesOf("package\n"));
    return fake_log.back();
  };
  EXPECT_EQ(update(), "E adam_update_current_log: Unable to stat temp files, errno 2");
  folder_.makeFolder(kPackage);
  EXPECT_EQ(update(), std::string("E adam_update_current_log: Unable to read ") + kPackage + ", errno 21");
  EXPECT_TRUE(Exists(kPackage));
}

}  // namespace
}  // namespace kesext_test
