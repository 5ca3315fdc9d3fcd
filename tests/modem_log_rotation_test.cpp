// When a new modem log begins, what it is called, and what goes for it.
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <utime.h>

#include <algorithm>
#include <cerrno>
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
#include "support/golden.h"
#include "support/log_listing.h"

namespace kesext_test {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

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
  /// Creates a log, and adds to the record what was logged for it, but for the reading of links, which
  /// depends on the order of the directory, and the listing.
  std::string Create(time_t now) {
    fake_time = now;
    fake_log.clear();
    kesext::LogPath path{};
    EXPECT_EQ(kesext::adam_create_new_log(path), 0);
    SetTime(path.data(), now);
    for (const std::string& line : fake_log)
      if (line.find("index name") == std::string::npos) record_.push_back(line);
    for (const std::string& entry : logListing(folder_))
      record_.push_back("> " + entry);
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
  [[nodiscard]] bool Exists(const std::string& path) const { return fs::exists(folder_.path(path)); }
  [[nodiscard]] std::vector<std::string> HandedOff() const {
    std::vector<std::string> texts;
    for (const handset::DropboxEntry& entry : folder_.dropboxEntries())
      texts.push_back(entry.text);
    return texts;
  }

  handset::Folder folder_;
  std::vector<std::string> record_;
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
  fs::resize_file(folder_.path(pathAt(kStart)), 0);
  EXPECT_TRUE(Rotates(kStart + kPeriod));
  EXPECT_THAT(HandedOff(), IsEmpty());
  EXPECT_TRUE(Rotates(kStart + kPeriod + 1));
  EXPECT_THAT(HandedOff(), ElementsAre(pathAt(kStart + kPeriod)));
}

TEST_F(ModemLogRotationTest, SizesBeyond32BitsCount) {
  Rotates(kStart);
  constexpr uintmax_t kGiB = uintmax_t{1} << 30;
  fs::resize_file(folder_.path(pathAt(kStart)), 3 * kGiB);
  EXPECT_TRUE(Rotates(kStart + 1));
  fs::resize_file(folder_.path(pathAt(kStart + 1)), 4 * kGiB);
  EXPECT_TRUE(Rotates(kStart + 2));
  EXPECT_THAT(HandedOff(), ElementsAre(pathAt(kStart), pathAt(kStart + 1)));
  EXPECT_EQ(folder_.readFile(pathAt(kStart + 2)), handset::bytesOf("package\n"));
}

TEST_F(ModemLogRotationTest, ALogWhoseStatusOverflowsIsThere) {
  for (const time_t now : {kStart, kStart + 1})
    Create(now);
  fake_call_error = [](const std::string& call) { return call == "stat" ? EOVERFLOW : 0; };
  kesext::LogPath path;
  EXPECT_EQ(kesext::adam_get_filename(kesext::kPreviousLog, path), 0);
  EXPECT_EQ(kesext::adam_create_new_log(path), 0);
  EXPECT_FALSE(Exists(pathAt(kStart))) << "it is the oldest of three";
}

TEST_F(ModemLogRotationTest, ALinkIsReadUpTo149Characters) {
  const std::string longest = "/data/adam/" + std::string(149 - 11, 'x');
  Write(longest, kStart);
  for (const std::string& target : {longest, longest + 'y'}) {
    fs::remove(folder_.path("/data/adam/.0001"));
    fs::create_symlink(target, folder_.path("/data/adam/.0001"));
    kesext::LogPath path;
    EXPECT_EQ(kesext::adam_get_filename(kesext::kCurrentLog, path), 0);
    EXPECT_EQ(path.data(), longest);
  }
}

TEST_F(ModemLogRotationTest, EachNewLogPushesTheOthersDown) {
  Create(kStart);
  EXPECT_EQ(handset::logEntries(folder_).back().mode, 0740U);
  // A directory in a link's place gives way.
  for (const char* link : {"/data/adam/.0002", "/data/adam/adam.new"})
    folder_.makeFolder(link);
  for (const time_t now : {kStart + 1, kStart + 2, kStart + 3})
    Create(now);
  ExpectGolden(record_, "modem_log_rotation");
}

TEST_F(ModemLogRotationTest, AtEveryMomentOfARotationBothLinksLeadToALog) {
  for (const time_t now : {kStart, kStart + 1, kStart + 2})
    Create(now);
  fs::create_symlink("/data/adam/left by a killed process", folder_.path("/data/adam/adam.new"));
  int calls = 0;
  fake_call_error = [&](const std::string& call) {
    if (call == "stat") return 0;  // the listing's own
    ++calls;
    const std::vector<handset::LogEntry> entries = handset::logEntries(folder_);
    EXPECT_TRUE(entries[0].name == ".0001" && !entries[0].dangling) << "before call " << calls;
    EXPECT_TRUE(entries[1].name == ".0002" && !entries[1].dangling) << "before call " << calls;
    EXPECT_TRUE(Exists(pathAt(kStart + 2))) << "before call " << calls;
    return 0;
  };
  Create(kStart + 3);
  EXPECT_GE(calls, 4);
  ExpectGolden(record_, "modem_log_rotation_moments");
}

TEST_F(ModemLogRotationTest, ALinkThatCannotBeMadeLeavesTheOldOneAndEveryLog) {
  time_t now = kStart;
  for (int failing : {0, 0, 1, 2, 3, 4}) {
    fake_call_error = [&failing](const std::string& call) {
      return (call == "symlink" || call == "rename") && --failing == 0 ? ENOSPC : 0;
    };
    Create(now++);
    record_.insert(record_.end(), fake_log.begin(), fake_log.end());
  }
  ExpectGolden(record_, "modem_log_link_fails");
}

TEST_F(ModemLogRotationTest, ALogThatIsGoneAtOnceHasNoLinkAndTheOneBeforeItsOwn) {
  for (const time_t now : {kStart, kStart + 1})
    Create(now);
  fake_time = kStart + 2;
  fake_call_error = [this, left = 2](const std::string& call) mutable {
    if (call == "stat" && --left == 0) fs::remove(folder_.path(pathAt(kStart + 2)));
    return 0;
  };
  kesext::LogPath path;
  EXPECT_EQ(kesext::adam_create_new_log(path), 0);
  EXPECT_THAT(logListing(folder_), ElementsAre(".0002 -> " + pathAt(kStart + 1), logAt(kStart + 1)));
}

TEST_F(ModemLogRotationTest, ADirectoryThatCannotBeReadToItsEndIsNotSaidToBeDone) {
  int left = 0;
  fake_call_error = [&](const std::string& call) { return call == "readdir" && --left == 0 ? EIO : 0; };
  for (const int readable : {0, 2}) {
    for (const time_t now : {kStart, kStart + 1, kStart + 2})
      Create(now);
    left = readable + 1;
    Create(kStart + 3);
    EXPECT_EQ(fake_log.back(), "E adam_clean_dir: can't read /data/adam, errno 5");
    left = readable + 1;
    kesext::adam_reset_dir();
    EXPECT_EQ(fake_log.back(), "E adam_reset_dir: can't read /data/adam, errno 5");
    kesext::adam_reset_dir();
    EXPECT_EQ(fake_log.back(), "E adam_reset_dir DONE!");
    EXPECT_THAT(logListing(folder_), IsEmpty());
  }
}

TEST_F(ModemLogRotationTest, StraysOfTwoDaysGoWithTheThirdLog) {
  // Their distance in time from the third log.
  const std::pair<std::string, time_t> strays[] = {{"ancient", -9'000'000},
                                                   {"older", -172'800},
                                                   {"younger", -172'799},
                                                   {"nearer", 172'799},
                                                   {"farther", 172'800},
                                                   {"~adam0009.log", -172'800},
                                                   {".hidden", -9'000'000},
                                                   {std::string(255, 'x'), -172'800},
                                                   {std::string(139, 'x'), -172'800}};
  const time_t third = kStart + 2;
  for (const auto& [name, distance] : strays)
    Write("/data/adam/" + name, third + distance);
  // A link has the time of what it leads to, and without that none.
  Write("/ancient", 0);
  fs::create_symlink(folder_.path("/ancient"), folder_.path("/data/adam/to_ancient"));
  fs::create_symlink("/nowhere", folder_.path("/data/adam/to_nowhere"));
  folder_.makeFolder("/data/adam/empty");
  SetTime("/data/adam/empty", 0);
  Write(Create(kStart), kStart);
  Write(Create(kStart + 1), 0);
  EXPECT_EQ(logListing(folder_).size(), std::size(strays) + 7) << "nothing goes with the second log";
  record_.clear();
  Create(third);
  EXPECT_TRUE(Exists("/ancient"));
  std::sort(record_.begin(), record_.end());
  ExpectGolden(record_, "modem_log_strays");
}

TEST_F(ModemLogRotationTest, ALogIsNamedForTheLocalTime) {
  Write(Create(kStart), kStart);
  EXPECT_EQ(Create(kStart), "/data/adam/adam_20240201015959.log");
  EXPECT_EQ(folder_.readFile(pathAt(kStart)), handset::Bytes{}) << "of the same second, it begins anew";
  const char* last = sizeof(time_t) == 8 ? "19000101000000" : "20380119051407";
  EXPECT_EQ(Create(std::numeric_limits<time_t>::max()), "/data/adam/adam_" + std::string(last) + ".log");
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
  ASSERT_EQ(mknod(folder_.path(kPackage).c_str(), S_IFSOCK | 0600, 0), 0);
  EXPECT_EQ(update(), "E adam_update_current_log: Unable to open files, errno 6");
  fs::remove(folder_.path(kPackage));
  folder_.makeFolder(kPackage);
  EXPECT_EQ(update(), std::string("E adam_update_current_log: Unable to read ") + kPackage + ", errno 21");
  EXPECT_TRUE(Exists(kPackage));
}

}  // namespace
}  // namespace kesext_test
