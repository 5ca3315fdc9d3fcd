// The ground floor: classification, hexadecimal text, writing to the parent.
#include <fcntl.h>
#include <gmock/gmock.h>

#include "core/dispatch_loop.h"
#include "core/ground/hex_text.h"
#include "core/ground/hook_message.h"
#include "core/ground/message_buffer.h"
#include "core/ground/parent_pipes.h"
#include "core/ground/process_state.h"
#include "core/test_notification.h"
#include "handset/bytes.h"
#include "platform/host/unique_fd.h"
#include "support/golden.h"
#include "support/unit_test.h"

namespace kesext_test {
namespace {

using handset::Bytes;
using handset::hex;
using ::testing::ElementsAre;

class GroundTest : public UnitTest {};

TEST_F(GroundTest, AGenericHeaderIsBigEndian) {
  const Bytes bytes = hex("01 05 00 19 80 01 02 03");
  kesext::GenericHookHeader header{};
  uint32_t family = 0;
  EXPECT_EQ(kesext::ParOemGen(bytes.data(), 8, &header), 1);
  EXPECT_EQ(header.msgType, 1);
  EXPECT_EQ(header.msgId, 0x050019U);
  EXPECT_EQ(header.msgLen, 0x80010203U);
  EXPECT_EQ(kesext::ParOemGen(bytes.data(), 8, nullptr), 0);
  EXPECT_EQ(kesext::ParOemGen(bytes.data(), 7, &header), 0);
  EXPECT_EQ(kesext::ParOemGen(nullptr, 8, &header), 0);
  EXPECT_EQ(kesext::getOemHook(nullptr, 8, &family), 0xFFFFFFFFU);
  EXPECT_THAT(fake_log, ElementsAre("E Oem gen header null", "E ParOemGen INVALID DATA LEN OR NULL POINTER",
                                    "E ParOemGen INVALID DATA LEN OR NULL POINTER",
                                    "E getOemHook: NULL DATA or check size"));
}

TEST_F(GroundTest, HexDumpShowsAtMost1024Bytes) {
  const Bytes bytes(1025, 0xAF);
  kesext::hexDump(bytes.data(), 0);
  kesext::hexDump(bytes.data(), 2);
  kesext::hexDump(bytes.data(), 1024);
  kesext::hexDump(bytes.data(), 1025);
  std::string longest;
  for (int i = 0; i < 1024; ++i)
    longest += "AF";
  EXPECT_THAT(fake_log, ElementsAre("E HexDump: Data ", "E HexDump: Data AFAF", "E HexDump: Data " + longest,
                                    "E HexDump=buffer overflow"));
}

TEST_F(GroundTest, AStatusRecordWithoutARequestHasId0) {
  kesext::sendStatusResponse(nullptr, 5);
  EXPECT_EQ(Written(), hex("00 00 00 00 00 00 00 00 05 00 00 00 00 00 00 00 00 00 00 00"));
}

TEST_F(GroundTest, AWaitThatGivesNoRequestIsLoggedAndRepeatedAtOnce) {
  const host::UniqueFd closed_pipe(open("/dev/null", O_RDONLY | O_CLOEXEC));  // a read gives nothing as well
  kesext::process_state.request_pipe = closed_pipe.get();
  fake_polls = {-1, 0, 1};
  kesext::serveRequests();
  ExpectGolden(fake_log, "waits_without_request");
}

TEST_F(GroundTest, ANotificationNumberOfFiveDigitsKeepsItsFirstFour) {
  for (uint32_t number = 12; number <= 12345; ++number) {
    kesext::sendUnsolNotify(nullptr, 1, nullptr, 0, nullptr);
    const Bytes message = Written();
    ASSERT_EQ(message.size(), 50U);
    const std::string text(message.begin() + 26, message.end());
    const std::string expected = ("UNSOLNOTIFY9876-" + std::to_string(number)).substr(0, 20);
    ASSERT_EQ(text, expected + std::string(24 - expected.size(), '\0'));
  }
}

}  // namespace
}  // namespace kesext_test
