// Classification, dispatch and the pipes, seen from the parent.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <iterator>
#include <random>

#include "support/hook_process_test.h"

namespace kesext_test {
namespace {

using DispatchTest = ServingTest;

TEST_F(DispatchTest, ARequestBeyondTheBufferIsCutAndItsRestIsTheNextRequest) {
  // One write of more than a pipe takes at once would not be one request.
  Bytes request = cdmaRequest(0x02000099, Bytes(17408 - 18, 0x55));
  const Bytes rest = hex("00 05 00 77 00 00 00 00");
  ASSERT_EQ(request.size(), 17408U);
  ASSERT_TRUE(parent_->send(concat(request, rest)));
  EXPECT_TRUE(Logs("Read 17408 bytes from pipe"));
  EXPECT_TRUE(Logs("Read 8 bytes from pipe"));
  Bytes answers = parent_->nextResponse().value_or(Bytes{});
  if (answers.size() < 28) answers = concat(answers, parent_->nextResponse().value_or(Bytes{}));
  EXPECT_EQ(answers, concat(cdmaResponse(0x02000099, 6), hex("00 05 00 77 FF FF FF FF")));
}

TEST_F(DispatchTest, ARoamingListSegmentIsCutTo16384Bytes) {
  const Bytes data = pattern(17000);
  for (const uint32_t size : {16384U, 20000U, 0xFFFFFFFFU}) {
    modem_.takeRequests();
    EXPECT_EQ(Ask(cdmaRequest(0x020000B4, concat(le32(size), data))), cdmaResponse(0x020000B4, 0));
    const auto requests = modem_.requests();
    ASSERT_EQ(requests.size(), 1U);
    EXPECT_EQ(requests[0].body, concat(le32(16384), handset::ByteView(data).first(16384)));
    EXPECT_THAT(LogsOfLastRequest(),
                ::testing::Contains(E("kes_qmi_sprint_set_roaming_list_segment: data_length (" +
                                      std::to_string(static_cast<int32_t>(size)) + ").")));
  }
}

TEST_F(DispatchTest, AnyBytesGetOneAnswerPerRead) {
  constexpr uint32_t generic_ids[] = {0x050019, 0x05001E, 0x060001, 0x050020,
                                      0x050029, 0x0A0006, 0x05002A, 0x050077};
  std::mt19937 random(20);
  const auto below = [&random](uint32_t limit) { return static_cast<uint32_t>(random() % limit); };
  for (int round = 0; round < 400; ++round) {
    Bytes request(1 + below(round % 8 == 0 ? 17408 : 600));
    for (uint8_t& byte : request)
      byte = static_cast<uint8_t>(random());
    const uint32_t kind = below(4);
    if (kind == 1 && request.size() >= 4) {
      handset::putBe<uint32_t>(request, 0, below(3) << 24 | generic_ids[below(std::size(generic_ids))]);
    } else if (kind > 1 && request.size() >= 4) {
      handset::putLe<uint32_t>(request, 0, 0x02000000 + (below(2) == 0 ? below(0x20) : 0xA8 + below(0x28)));
    }
    SCOPED_TRACE(handset::toHex(handset::ByteView(request).first(std::min<size_t>(request.size(), 34))));
    const size_t mark = parent_->logMark();
    ASSERT_TRUE(parent_->send(request));
    ASSERT_TRUE(parent_->waitForLogSince(mark, "Child process waiting for data"));
    ASSERT_TRUE(parent_->nextResponse(handset::Millis(0)));
  }
}

TEST_F(DispatchTest, AClosedResponsePipeIsLoggedAndServingGoesOn) {
  parent_->closeResponses();
  const size_t mark = parent_->logMark();
  ASSERT_TRUE(parent_->send(cdmaRequest(0x02000099)));
  EXPECT_TRUE(parent_->waitForLogSince(mark, "Write to parent failed 32"));
  EXPECT_TRUE(parent_->waitForLogSince(mark, "Child process waiting for data"));
}

TEST_F(DispatchTest, AFullUnsolicitedPipeHoldsUpNoRequestAndLosesNoMessage) {
  ASSERT_EQ(fcntl(parent_->unsolicitedFd(), F_SETPIPE_SZ, 4096), 4096);
  constexpr int kNotifications = 1000;  // of 50 bytes each, the last with numbers of four digits
  for (int i = 0; i < kNotifications; ++i)
    modem_.indicate(0x0001, {});
  modem_.setElement(0x26, hex("01 02 03 04"));
  for (int i = 0; i < 20; ++i)
    EXPECT_EQ(Ask(cdmaRequest(0x02000017)), cdmaResponse(0x02000017, 0, hex("01 02 03 04")));
  for (int i = 0; i < kNotifications; ++i) {
    const Bytes message = NextUnsolicited();
    ASSERT_EQ(message.size(), 50U);
    const std::string text(message.begin() + 26, message.begin() + 48);
    ASSERT_STREQ(text.c_str(), ("UNSOLNOTIFY9876-" + std::to_string(12 + i)).c_str());
  }
}

}  // namespace
}  // namespace kesext_test
