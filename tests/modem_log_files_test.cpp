// Packages in the modem logs' directory, and what becomes of them where the file system refuses.
#include <gmock/gmock.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <functional>
#include <memory>

#include "support/log_listing.h"
#include "support/modem_log_test.h"

namespace kesext_test {
namespace {

namespace fs = std::filesystem;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* kDirectory = "/data/adam";
constexpr const char* kCurrentLink = "/data/adam/.0001";
constexpr const char* kOldLog = "/data/adam/adam_old.log";
constexpr const char* kPackage = "/data/adam/~adam0003.log";
constexpr size_t kKilobyte = 1024;
constexpr uintmax_t kLogSizeMax = 31'457'279;
constexpr fs::perms kReadOnly{0555};
constexpr fs::perms kUnreadable{0311};

/// NOW in place of the time that a new log is named for.
std::string withoutTime(std::string text) {
  const size_t name = text.find("adam_2");
  if (name != std::string::npos) text.replace(name, std::strlen("adam_YYYYMMDDhhmmss"), "adam_NOW");
  return text;
}

class ModemLogFilesTest : public ModemLogTest {
 protected:
  void TearDown() override {
    if (!parent_) return;
    EXPECT_EQ(OpenDescriptors(), descriptors_) << "nothing stays open";
  }
  void Begin() {
    Start();
    descriptors_ = OpenDescriptors();
  }

  /// No file of the process may be larger than 16 KiB.
  void BeginWithSizeLimit() {
    LaunchFromShell(R"(ulimit -f 16; exec "$0" "$@")");
    ASSERT_TRUE(Logs("Child process waiting for data"));
    descriptors_ = OpenDescriptors();
  }

  /// Lets the modem send indications, adds what was logged for them to the lines, and gives the last.
  std::string Send(const std::vector<Bytes>& indications) {
    for (const std::string& line : Indicate(indications))
      lines_.push_back(withoutTime(line));
    // Where it may not be a member of the logs' group, it cannot give them a new log.
    if (!in_log_group_)
      std::erase(lines_, "adam_update_current_log: Unable to chown /data/adam/adam_NOW.log, errno 1");
    return lines_.back();
  }
  std::string SendPacket(uint8_t sequence_id, uint8_t last) {
    return Send({logPacketIndication({3, sequence_id, last, Bytes(5, sequence_id)})});
  }

  void Link(int index, const std::string& target) {
    folder_.makeFolder(kDirectory);
    const std::string link = folder_.path("/data/adam/.000" + std::to_string(index));
    fs::remove(link);
    fs::create_symlink(target, link);
  }
  /// A current log of so many bytes, of which only the first take room.
  void MakeCurrentLog(uintmax_t size) {
    folder_.writeFile(kOldLog, old_);
    fs::resize_file(folder_.path(kOldLog), size);
    Link(1, kOldLog);
  }
  void Permit(const char* path, fs::perms perms) { fs::permissions(folder_.path(path), perms); }
  Lines Listing() const {
    Lines entries = logListing(folder_);
    std::transform(entries.begin(), entries.end(), entries.begin(), withoutTime);
    return entries;
  }

  const Bytes old_ = pattern(32 * kKilobyte);
  const Bytes content_ = handset::bytesOf("package");
  const std::vector<Bytes> package_ = logPackage(3, kLogHeader, content_);
  const std::string appended_ = "adam_update_current_log: update /data/adam/adam_NOW.log succeed.";
  const std::string not_stored_ = "adamIndHndlr: Write to file /data/adam/~adam0003.log failed, errno ";
  const std::string not_written_ = "adam_update_current_log: Unable to write /data/adam/adam_old.log, errno ";

  const bool in_log_group_ = handset::joinLogGroup();
  size_t descriptors_ = 0;
  Lines lines_;
};

TEST_F(ModemLogFilesTest, TheFirstPackageBeginsALog) {
  const mode_t mask = umask(0);
  Begin();
  umask(mask);
  SendPacket(1, 0);
  EXPECT_EQ(fs::status(folder_.path(kDirectory)).permissions(), fs::perms{0750});
  EXPECT_EQ(handset::logEntries(folder_).at(0).mode, 0740U);
  Send(package_);
  ExpectGolden(lines_, "modem_log_first_package");
  EXPECT_THAT(Listing(), ElementsAre(".0001 -> /data/adam/adam_NOW.log", "adam_NOW.log"));
  EXPECT_EQ(CurrentLog(), content_);
  const handset::LogEntry log = handset::logEntries(folder_).back();
  EXPECT_EQ(log.mode, 0660U);
  EXPECT_EQ(log.group == 2002, in_log_group_);
}

TEST_F(ModemLogFilesTest, ARestartCarriesOnWithTheLog) {
  Start();
  Send(package_);
  const Lines before = logListing(folder_);
  EXPECT_EQ(End(), 0);
  Begin();
  Send(package_);
  EXPECT_EQ(logListing(folder_), before);
  EXPECT_EQ(CurrentLog(), concat(content_, content_));
}

TEST_F(ModemLogFilesTest, WithoutACurrentLogAllIsEmptiedButPackages) {
  Begin();
  const std::string long_name(255, 'x');
  for (const char* current_link : {"missing", "dangling", "no link"}) {
    SCOPED_TRACE(current_link);
    fs::remove(folder_.path(kCurrentLink));
    if (current_link[0] == 'd') Link(1, "/data/adam/adam_gone.log");
    if (current_link[0] == 'n') folder_.writeFile(kCurrentLink, kOldLog);
    for (const char* name :
         {"adam_old.log", "stray", ".hidden", "adam.new", "~adam0009.log", long_name.c_str()})
      folder_.writeFile(std::string(kDirectory) + "/" + name, "before");
    folder_.makeFolder("/data/adam/empty");
    Link(2, kOldLog);
    Send(package_);
    EXPECT_THAT(Listing(), ElementsAre(".0001 -> /data/adam/adam_NOW.log", "adam_NOW.log", "~adam0009.log"));
    EXPECT_EQ(CurrentLog(), content_);
  }
  ExpectGolden(lines_, "modem_log_begun_anew");
}

TEST_F(ModemLogFilesTest, ALogOf30MegabytesIsHandedOff) {
  Begin();
  MakeCurrentLog(kLogSizeMax - content_.size());
  Send(package_);
  EXPECT_EQ(fs::file_size(folder_.path(kOldLog)), kLogSizeMax);
  EXPECT_THAT(folder_.dropboxEntries(), IsEmpty());
  MakeCurrentLog(kLogSizeMax - content_.size() + 1);
  Send(package_);
  ExpectGolden(lines_, "modem_log_handed_off");
  const auto entries = folder_.dropboxEntries();
  ASSERT_EQ(entries.size(), 1U);
  EXPECT_EQ(entries[0].tag, "modem_adam");
  EXPECT_EQ(entries[0].text, kOldLog);
  EXPECT_THAT(Listing(), ElementsAre(".0001 -> /data/adam/adam_NOW.log", ".0002 -> /data/adam/adam_old.log",
                                     "adam_NOW.log", "adam_old.log"));
  EXPECT_EQ(handset::logEntries(folder_).at(0).mode, 0660U);
  EXPECT_EQ(CurrentLog(), content_);
}

TEST_F(ModemLogFilesTest, ADropBoxThatRefusesDoesNotHoldUpTheNewLog) {
  Begin();
  fs::remove(folder_.path("/dropbox"));
  folder_.writeFile("/dropbox", "in the way");
  MakeCurrentLog(kLogSizeMax);
  EXPECT_EQ(Send(package_), appended_);
  EXPECT_THAT(lines_, Contains("adam: send to dropbox failed!."));
}

TEST_F(ModemLogFilesTest, APacketThatCannotBeStoredIsDroppedAndThePackageGoesOn) {
  // Whether the directory is there already, and what is in the way.
  const std::pair<bool, std::function<void()>> cases[] = {
      {false, [this] { fs::remove(folder_.path("/data")); }},
      {false, [this] { Permit("/data", kReadOnly); }},
      {true, [this] { Permit(kDirectory, kReadOnly); }},
      {false, [this] { folder_.writeFile(kDirectory, ""); }},
      {true, [this] { folder_.makeFolder(kPackage); }},
      {true, [this] { fs::create_symlink("/dev/full", folder_.path(kPackage)); }},
  };
  for (const auto& [in_directory, damage] : cases) {
    Begin();
    if (in_directory) folder_.makeFolder(kDirectory);
    damage();
    SendPacket(1, 0);
    SendPacket(2, 1);
    SendPacket(9, 1);
    fs::remove_all(folder_.path("/data"));
    folder_.makeFolder(kDirectory);
    EXPECT_EQ(SendPacket(3, 1), appended_);
    EXPECT_EQ(CurrentLog(), Bytes(5, 3));
    EXPECT_EQ(OpenDescriptors(), descriptors_);
    fs::remove_all(folder_.path(kDirectory));
    SendPacket(1, 1);  // the directory is made once
  }
  ExpectGolden(lines_, "modem_log_not_stored");
}

TEST_F(ModemLogFilesTest, APackageStaysUntilThereIsALogForIt) {
  Begin();
  folder_.makeFolder(kOldLog);
  Link(1, kOldLog);
  Send(package_);
  EXPECT_EQ(folder_.readFile(kPackage), content_);

  // In a directory that takes no new entry there is no new log.
  fs::remove(folder_.path(kOldLog));
  MakeCurrentLog(kLogSizeMax);
  Permit(kDirectory, kReadOnly);
  Send(package_);
  Permit(kDirectory, fs::perms::all);
  EXPECT_THAT(Listing(), ElementsAre(".0001 -> /data/adam/adam_old.log", "adam_old.log", "~adam0003.log"));
  fs::remove(folder_.path(kCurrentLink));
  Permit(kDirectory, kReadOnly);
  Send(package_);
  EXPECT_EQ(folder_.readFile(kPackage), content_);
  Permit(kDirectory, fs::perms::all);
  ExpectGolden(lines_, "modem_log_not_to_be_had");
}

TEST_F(ModemLogFilesTest, ADirectoryThatCannotBeReadIsNotCleanedUp) {
  Begin();
  // The process makes the directory, which it may then enter and write but not read.
  SendPacket(1, 0);
  Permit(kDirectory, kUnreadable);
  Send(package_);
  Permit(kDirectory, fs::perms::all);
  MakeCurrentLog(kLogSizeMax);
  folder_.writeFile("/data/adam/adam_older.log", "older");
  Link(2, "/data/adam/adam_older.log");
  Permit(kDirectory, kUnreadable);
  Send(package_);
  Permit(kDirectory, fs::perms::all);
  ExpectGolden(lines_, "modem_log_directory_unreadable");
}

TEST_F(ModemLogFilesTest, APackageStaysWhereTheLogOrItsOwnFileCannotBeWrittenOrFlushed) {
  Begin();
  Link(1, kOldLog);
  for (const char* log : {"/dev/full", "/dev/null"}) {
    fs::remove(folder_.path(kOldLog));
    fs::create_symlink(log, folder_.path(kOldLog));
    Send(package_);
    EXPECT_EQ(folder_.readFile(kPackage), content_);
  }
  for (const char* file : {kOldLog, kPackage})
    fs::remove(folder_.path(file));
  MakeCurrentLog(1);
  fs::create_symlink("/dev/null", folder_.path(kPackage));
  Send(package_);
  EXPECT_TRUE(fs::is_symlink(folder_.path(kPackage)));
  ExpectGolden(lines_, "modem_log_takes_nothing");
}

struct Unmount {
  void operator()(const char* path) const { umount2(path, MNT_DETACH); }
};

TEST_F(ModemLogFilesTest, AFullDiskTakesNothingFromTheLogAndKeepsThePackage) {
  const std::string data = folder_.path("/data");
  if (mount("tmpfs", data.c_str(), "tmpfs", 0, "size=64k") != 0)
    GTEST_SKIP() << "mounting a file system takes a user who may: " << std::strerror(errno);
  const std::unique_ptr<const char, Unmount> disk(data.c_str());
  const Bytes package = pattern(24 * kKilobyte, 7);
  MakeCurrentLog(old_.size());
  Begin();
  EXPECT_EQ(Send(logPackage(3, kLogHeader, package)), not_written_ + "28");
  EXPECT_EQ(CurrentLog(), old_);
  EXPECT_EQ(folder_.readFile(kPackage), package);
}

TEST_F(ModemLogFilesTest, AFileAtItsSizeLimitTakesNoMoreAndAShortWriteHasNoError) {
  BeginWithSizeLimit();
  const size_t old_size = 16 * kKilobyte - 100;
  MakeCurrentLog(old_size);
  const Bytes package = pattern(300, 7);
  EXPECT_EQ(Send(logPackage(3, kLogHeader, package)), not_written_ + "0");
  EXPECT_EQ(CurrentLog(), sized(old_, old_size));
  EXPECT_EQ(folder_.readFile(kPackage), package);
  MakeCurrentLog(16 * kKilobyte);
  EXPECT_EQ(Send(package_), not_written_ + "27");
  folder_.writeFile(kPackage, sized(old_, 16 * kKilobyte - 2));
  EXPECT_EQ(SendPacket(2, 0), not_stored_ + "0");
  EXPECT_EQ(SendPacket(3, 0), not_stored_ + "27");
}

TEST_F(ModemLogFilesTest, APackageThatIsTheCurrentLogIsAppendedToItselfOnce) {
  BeginWithSizeLimit();
  Link(1, kPackage);
  Indicate({logPacketIndication({3, 2, 0, Bytes(5, 2)})});
  fs::create_hard_link(folder_.path(kPackage), folder_.path(kOldLog));
  EXPECT_EQ(SendPacket(3, 1), "adam_update_current_log: update /data/adam/~adam0003.log succeed.");
  const Bytes once = concat(Bytes(5, 2), Bytes(5, 3));
  EXPECT_EQ(folder_.readFile(kOldLog), concat(once, once));
}

}  // namespace
}  // namespace kesext_test
