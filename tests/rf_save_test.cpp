// The copy of the RF data from the shared memory to the partition.
#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "support/hook_process_test.h"

namespace kesext_test {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr uint16_t kDhob = 0x0013;
constexpr size_t kRegionOffset = 0xF540000;
constexpr size_t kRegionSize = 0x8000;
constexpr const char* kDevice = "/dev/kes_hob_ram";
constexpr const char* kPartition = "/dev/block/bootdevice/by-name/dhob";

class RfSaveTest : public HookProcessTest {
 protected:
  RfSaveTest() : region_(pattern(kRegionSize, 3)) {}

  /// A sparse file stands for the device.
  void MakeDevice(size_t region_size = kRegionSize) {
    folder_.writeFileAt(kDevice, kRegionOffset, handset::ByteView(region_).first(region_size));
  }
  void MakePartition() { folder_.writeFile(kPartition, std::string(kRegionSize, 'o')); }
  /// Lets the modem ask for a save and gives the byte that it is answered with. The one before may not have
  /// heard yet that the modem took its answer; the modem then asks again.
  uint8_t Save() {
    while (true) {
      save_mark_ = parent_->logMark();
      const size_t before = modem_.requests().size();
      modem_.indicate(kDhob, {});
      EXPECT_TRUE(modem_.waitForRequests(before + 1));
      if (WasRefused(save_mark_)) continue;
      const handset::Received answer = modem_.requests().at(before);
      EXPECT_EQ(answer.id, kDhob);
      EXPECT_EQ(answer.body.size(), 1U);
      return answer.body.at(0);
    }
  }
  bool WasRefused(size_t mark) {
    constexpr handset::Millis kGlance{20};
    for (int glance = 0; glance < 500; ++glance) {
      if (parent_->waitForLogSince(mark, "dhob_write: Sending DYNHOB request to BP", kGlance)) return false;
      if (parent_->waitForLogSince(mark, kDuplicate, kGlance)) return true;
    }
    ADD_FAILURE() << "neither saved nor refused";
    return false;
  }

  /// Adds the answer and the lines of a save to the record.
  void RecordSave(const std::string& title) {
    record_.push_back("# " + title + ": " + std::to_string(Save()));
    for (const std::string& line : parent_->logsSince(save_mark_))
      if (line.find("dhob_write") != std::string::npos) record_.push_back(line);
  }
  void StartWithFiles() {
    MakeDevice();
    MakePartition();
    Start();
  }

  static constexpr const char* kDuplicate = "dhob_write: Duplicate request: Save to HOB already in progress";
  const std::string kSending = E("dhob_write: Sending DYNHOB request to BP");
  const Bytes region_;
  size_t save_mark_ = 0;
};

TEST_F(RfSaveTest, AnotherInstanceTakesNoPart) {
  MakeDevice();
  MakePartition();
  Launch({"3", "4", "5", "1"});
  ASSERT_TRUE(Logs("Child process waiting for data"));
  modem_.indicate(kDhob, {});
  ASSERT_TRUE(Logs("Unsol resp 0x13 not supported by Sprint handler."));
  modem_.indicate(0x0001, {});
  EXPECT_EQ(NextUnsolicited().size(), 50U);
  EXPECT_EQ(End(), 0);
  for (const auto& request : modem_.requests())
    EXPECT_NE(request.id, kDhob);
  EXPECT_THAT(parent_->logs(), Not(Contains(HasSubstr("dhob_write"))));
}

TEST_F(RfSaveTest, EveryFailureIsAnsweredAndALaterSaveTriesAnew) {
  Start();
  const size_t descriptors = OpenDescriptors();
  RecordSave("no device");
  MakeDevice();
  RecordSave("no partition");
  MakePartition();
  MakeDevice(kRegionSize / 2);
  RecordSave("half of the region is not there");
  std::filesystem::remove(folder_.path(kPartition));
  std::filesystem::create_symlink("/dev/full", folder_.path(kPartition));
  MakeDevice();
  RecordSave("the partition takes nothing");
  std::filesystem::remove(folder_.path(kDevice));
  std::filesystem::create_symlink("/dev/null", folder_.path(kDevice));
  RecordSave("a device that cannot be mapped");
  for (const char* path : {kPartition, kDevice})
    std::filesystem::remove(folder_.path(path));
  MakeDevice();
  MakePartition();
  RecordSave("all is there");
  EXPECT_EQ(folder_.readFile(kPartition), region_);
  EXPECT_EQ(OpenDescriptors(), descriptors) << "nothing stays open";
  std::ifstream maps("/proc/" + std::to_string(parent_->pid()) + "/maps");
  for (std::string line; std::getline(maps, line);)
    EXPECT_THAT(line, Not(HasSubstr(kDevice))) << "nor mapped";
  ExpectGolden(record_, "rf_saves");
}

TEST_F(RfSaveTest, ASecondSaveDuringTheFirstIsRefused) {
  StartWithFiles();
  // The first save waits for its answer, so the flag stays set.
  modem_.silence(Service::vendor, kDhob);
  modem_.indicate(kDhob, {});
  ASSERT_TRUE(modem_.waitForRequests(1));
  modem_.indicate(kDhob, {});
  ASSERT_TRUE(modem_.waitForRequests(2));
  EXPECT_TRUE(Logs(kDuplicate));
  modem_.indicate(kDhob, {});
  ASSERT_TRUE(modem_.waitForRequests(3)) << "a refusal does not end the save";
  const auto requests = modem_.requests();
  EXPECT_EQ(requests[0].body, hex("01"));
  EXPECT_EQ(requests[1].body, hex("00"));
  EXPECT_EQ(requests[2].body, hex("00"));
  const auto logs = parent_->logs();
  EXPECT_THAT(logs, Contains(E(kDuplicate)));
  EXPECT_EQ(std::count(logs.begin(), logs.end(), kSending), 1) << "only the save's own";
  modem_.setElement(0x26, hex("01 02 03 04"));
  EXPECT_EQ(Ask(cdmaRequest(0x02000017)), cdmaResponse(0x02000017, 0, hex("01 02 03 04")))
      << "requests are served beside it";
  modem_.restore(Service::vendor, kDhob);
  for (const handset::Received& request : requests)
    modem_.respond(request, 0, Bytes(1));
  EXPECT_EQ(Save(), 1);
}

TEST_F(RfSaveTest, TheProcessMayEndDuringASave) {
  StartWithFiles();
  modem_.silence(Service::vendor, kDhob);
  modem_.indicate(kDhob, {});
  ASSERT_TRUE(modem_.waitForRequests(1));
  EXPECT_EQ(End(), 0);
}

}  // namespace
}  // namespace kesext_test
