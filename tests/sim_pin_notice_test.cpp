// Start-up's decision whether the kernel or the modem crashed.
#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <optional>

#include "support/hook_process_test.h"

namespace kesext_test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr const char* kBootInfo = "/proc/bootinfo";
constexpr const char* kRestarts = "/sys/module/subsystem_restart/parameters/modem_restarts";
constexpr const char* kReason = "/sys/module/pil_q6v5_mss/parameters/ssr_reason";

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
    modem_.clearRequests();
    Launch();
    EXPECT_TRUE(Logs("Child process waiting for data"));
    const auto requests = modem_.requests();
    const auto notice =
        std::find_if(requests.begin(), requests.end(), [](const auto& r) { return r.id == 0x000F; });
    if (notice == requests.end()) {
      EXPECT_THAT(parent_->logs(), Contains(D("notify_auto_verify_sim_pin from AP NOT called")));
      return false;
    }
    EXPECT_EQ(notice->body, concat(le32(4), le32(256), Bytes(256)));
    EXPECT_THAT(parent_->logs(), Contains(D("notify_auto_verify_sim_pin from AP called")));
    return true;
  }
};

TEST_F(SimPinNoticeTest, AKernelPanicDecidesAlone) {
  for (const char* boot_info : {"POWERUPREASON : 0x00020000\n", "x\nPOWERUPREASON : 0x00020000",
                                "POWERUPREASON: 0x00020000 more", "POWERUPREASON\nother: 0x00020000\n",
                                "POWERUPREASON : 0x00020000\r\n", "POWERUPREASON : 0x00020000\t1"}) {
    EXPECT_TRUE(Noticed(boot_info, "0\n", {})) << boot_info;
    EXPECT_THAT(parent_->logs(), Contains(D("is_kernel_panic looking for POWERUPREASON")));
    EXPECT_THAT(parent_->logs(), Contains(D("is_kernel_panic POWERUPREASON=0x00020000")));
    EXPECT_THAT(parent_->logs(), Not(Contains(HasSubstr("is_modem_panic"))));
  }
}

TEST_F(SimPinNoticeTest, AnyOtherBootInformationLeavesItToTheModemFiles) {
  const std::pair<std::string, std::string> cases[] = {
      {"POWERUPREASON : 0x00020000x\n", "0x00020000x"},
      {"POWERUPREASON : 0x0002000\n", "0x0002000"},
      {"POWERUPREASON :0x00020000\n", ""},
      {"POWERUPREASON :  0x00020000\n", ""},
      {"POWER : 0x00020000\n", ""},
      {"POWERUPREASON : 1\nPOWERUPREASON : 0x00020000\n", "1"},
      {"", ""},
      {std::string("POWERUPREASON : 0x\0 00020000", 28), "0x"},
      {"POWERUPREASON : 0x0002000000000000000000000000000000", "0x00020000000000000000000000000"},
      {std::string(1010, 'x') + "POWERUPREASON : 0x00020000\n", ""},
  };
  for (const auto& [boot_info, reason] : cases) {
    EXPECT_FALSE(Noticed(boot_info, "0\n", "reason")) << boot_info;
    EXPECT_THAT(parent_->logs(), Contains(D("is_kernel_panic POWERUPREASON=" + reason)));
    EXPECT_THAT(parent_->logs(), Contains(E("modem_panic: 0")));
  }
  EXPECT_FALSE(Noticed({}, "0\n", "reason"));
  EXPECT_THAT(parent_->logs(), Not(Contains(HasSubstr("POWERUPREASON"))));
}

TEST_F(SimPinNoticeTest, TheRestartCounterDecidesWhenItHasADigit) {
  struct Case {
    const char* restarts;
    const char* number;
    bool noticed;
  };
  const std::string digit_at_31 = std::string(30, 'x') + "3";
  for (const Case& c :
       {Case{digit_at_31.c_str(), "3", true}, Case{"0\n", "0", false}, Case{"3\n", "3", true},
        Case{"count=3", "3", true}, Case{"-1", "1", true}, Case{"1 0 2\n5", "102", true},
        Case{"00", "0", false}, Case{"9999999999999999999999999999999999", "2147483647", true}}) {
    EXPECT_EQ(Noticed({}, c.restarts, "a reason that is not read"), c.noticed) << c.restarts;
    EXPECT_THAT(parent_->logs(), Contains(E(std::string("modem_panic: ") + c.number)));
    EXPECT_THAT(parent_->logs(), Not(Contains(HasSubstr("panic_reason"))));
  }
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
    EXPECT_THAT(parent_->logs(), Contains(D("is_modem_panic looking for BP Panic")));
    EXPECT_THAT(parent_->logs(), Contains(D("*** Try open the sys file bp panic_reason : "
                                            "/sys/module/pil_q6v5_mss/parameters/ssr_reason")));
    EXPECT_THAT(parent_->logs(), Contains(E("*** failed open the sys file : panic_reason ***")));
  }
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

TEST_F(SimPinNoticeTest, StartUpActsInOrder) {
  EXPECT_TRUE(Noticed({}, "1", {}));
  std::vector<std::pair<uint16_t, uint32_t>> sent;
  for (const auto& request : modem_.requests())
    sent.emplace_back(
        request.id, request.body.size() < 4 ? request.body.at(0) : handset::getLe<uint32_t>(request.body, 0));
  EXPECT_THAT(sent, ElementsAre(std::pair{0x000F, 4U}, std::pair{0x0008, 8029U}, std::pair{0x0008, 8028U},
                                std::pair{0x0008, 53U}, std::pair{0x0013, 0xFFU}));
  EXPECT_THAT(parent_->logs(),
              Contains(E("dhob_write: Sending ready to received indications message to BP")));
}

TEST_F(SimPinNoticeTest, AFailedNoticeIsAWarning) {
  modem_.fail(Service::vendor, 0x000F, 77);
  EXPECT_TRUE(Noticed({}, "1", {}));
  EXPECT_THAT(parent_->logs(), Contains(E("[Warning] Failed notify the auto verify SIM PIN to BP")));
}

}  // namespace
}  // namespace kesext_test
