// Start-up's decision whether the kernel or the modem crashed.
#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <optional>

#include "support/hook_process_test.h"

namespace kesext_test {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr const char* kBootInfo = "/proc/bootinfo";
constexpr const char* kRestarts = "/sys/module/subsystem_restart/parameters/modem_restarts";
constexpr const char* kReason = "/sys/module/pil_q6v5_mss/parameters/ssr_reason";

constexpr const char* kPanic = "POWERUPREASON : 0x00020000";

using Text = std::optional<std::string>;

class SimPinNoticeTest : public HookProcessTest {
 protected:
  /// Starts the process over files with these texts, or without them, and tells whether the modem got the
  /// notice.
  bool Noticed(const Text& boot_info, const Text& restarts, const Text& reason) {
    parent_.reset();
    for (const auto& [path, text] :
         {std::pair{kBootInfo, boot_info}, std::pair{kRestarts, restarts}, std::pair{kReason, reason}}) {
      std::filesystem::remove_all(folder_.path(path));
      if (text) folder_.writeFile(path, *text);
    }
    modem_.takeRequests();
    Launch();
    EXPECT_TRUE(Logs("Child process waiting for data"));
    record_.emplace_back("#");
    for (const std::string& line : parent_->logs())
      if (line.find("panic") != std::string::npos || line.find("***") != std::string::npos ||
          line.find("verify") != std::string::npos)
        record_.push_back(line);
    const auto requests = modem_.requests();
    return std::any_of(requests.begin(), requests.end(), [](const auto& sent) { return sent.id == 0x000F; });
  }
};

TEST_F(SimPinNoticeTest, AKernelPanicDecidesAlone) {
  for (const char* boot_info : {"POWERUPREASON : 0x00020000\n", "x\nPOWERUPREASON : 0x00020000",
                                "POWERUPREASON: 0x00020000 more", "POWERUPREASON\nother: 0x00020000\n",
                                "POWERUPREASON : 0x00020000\r\n", "POWERUPREASON : 0x00020000\t1"})
    EXPECT_TRUE(Noticed(boot_info, "0\n", {})) << boot_info;
  EXPECT_TRUE(Noticed(std::string(997, 'x') + kPanic, "0\n", {})) << "1023 characters are read";
  ExpectGolden(record_, "sim_pin_kernel_panic");
}

TEST_F(SimPinNoticeTest, AnyOtherBootInformationLeavesItToTheModemFiles) {
  for (const Text& boot_info :
       {Text{"POWERUPREASON : 0x00020000x\n"}, Text{"POWERUPREASON : 0x0002000\n"},
        Text{"POWERUPREASON :0x00020000\n"}, Text{"POWERUPREASON :  0x00020000\n"},
        Text{"POWER : 0x00020000\n"}, Text{"POWERUPREASON : 1\nPOWERUPREASON : 0x00020000\n"}, Text{""},
        Text{std::string("POWERUPREASON : 0x\0 00020000", 28)},
        Text{"POWERUPREASON : 0x0002000000000000000000000000000000"}, Text{std::string(998, 'x') + kPanic},
        Text{}})
    EXPECT_FALSE(Noticed(boot_info, "0\n", "reason")) << boot_info.value_or("none");
  ExpectGolden(record_, "sim_pin_other_boot");
}

TEST_F(SimPinNoticeTest, TheRestartCounterDecidesWhenItHasADigit) {
  const std::pair<std::string, bool> cases[] = {{std::string(30, 'x') + "3", true},
                                                {"0\n", false},
                                                {"3\n", true},
                                                {"count=3", true},
                                                {"-1", true},
                                                {"1 0 2\n5", true},
                                                {"00", false},
                                                {"9999999999999999999999999999999999", true}};
  for (const auto& [restarts, noticed] : cases)
    EXPECT_EQ(Noticed({}, restarts, "a reason that is not read"), noticed) << restarts;
  ExpectGolden(record_, "sim_pin_restarts");
}

TEST_F(SimPinNoticeTest, WithoutACounterAnyReasonIsOne) {
  for (const Text& restarts : {Text{}, Text{""}, Text{"none\n1"},
                               Text{std::string("\0"
                                                "1",
                                                2)},
                               Text{std::string(31, 'x') + "3"}}) {
    EXPECT_TRUE(Noticed({}, restarts, "\n"));
    EXPECT_TRUE(Noticed({}, restarts, "fatal error"));
    EXPECT_FALSE(Noticed({}, restarts, ""));
    EXPECT_FALSE(Noticed({}, restarts, std::string("\0x", 2)));
    EXPECT_FALSE(Noticed({}, restarts, {}));
  }
  ExpectGolden(record_, "sim_pin_reasons");
}

TEST_F(SimPinNoticeTest, AFileThatCannotBeReadLeadsOn) {
  EXPECT_FALSE(Noticed({}, {}, {}));
  folder_.makeFolder(kBootInfo);
  folder_.makeFolder(kRestarts);
  folder_.writeFile(kReason, "reason");
  parent_.reset();
  Launch();
  EXPECT_TRUE(Logs("notify_auto_verify_sim_pin from AP called"));
  EXPECT_THAT(parent_->logs(), Not(Contains(HasSubstr("modem_panic:"))));
  EXPECT_THAT(parent_->logs(), Not(Contains(HasSubstr("POWERUPREASON"))));
  std::filesystem::remove(folder_.path(kReason));
  folder_.makeFolder(kReason);
  parent_.reset();
  Launch();
  EXPECT_TRUE(Logs("notify_auto_verify_sim_pin from AP NOT called"));
}

TEST_F(SimPinNoticeTest, StartUpActsInOrderAndAFailedNoticeIsAWarning) {
  EXPECT_TRUE(Noticed({}, "1", {}));
  RecordSent();
  EXPECT_THAT(parent_->logs(),
              Contains(E("dhob_write: Sending ready to received indications message to BP")));
  modem_.fail(Service::vendor, 0x000F, 77);
  EXPECT_TRUE(Noticed({}, "1", {}));
  ExpectGolden(record_, "sim_pin_notice");
}

}  // namespace
}  // namespace kesext_test
