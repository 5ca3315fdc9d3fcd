// A modem that is slow, silent, wrong or gone while requests are served.
#include <gmock/gmock.h>

#include "support/hook_process_test.h"

namespace kesext_test {
namespace {

using handset::Millis;

class ModemTroubleTest : public HookProcessTest {
 protected:
  void SetUp() override {
    modem_.setElement(0x26, hex("01 02 03 04"));
    Start();
  }

  const Bytes read_ = cdmaRequest(0x02000017);
  const Bytes answer_ = cdmaResponse(0x02000017, 0, hex("01 02 03 04"));
};

TEST_F(ModemTroubleTest, ASilentModemIsGivenFifteenSecondsAndItsLateAnswerDropped) {
  modem_.silence(Service::vendor, kRdeReadId);
  const auto sent = std::chrono::steady_clock::now();
  ASSERT_TRUE(parent_->send(read_));
  EXPECT_EQ(parent_->nextResponse(Millis(20'000)), cdmaResponse(0x02000017, 5));
  const auto waited = std::chrono::steady_clock::now() - sent;
  EXPECT_GE(waited, Millis(15'000));
  EXPECT_LT(waited, Millis(16'000));
  ASSERT_TRUE(parent_->waitForLog("Child process waiting for data"));

  const handset::Received unanswered = modem_.requests().at(0);
  modem_.restore(Service::vendor, kRdeReadId);
  modem_.respond(unanswered, 0, Bytes(540, 0xEE));
  EXPECT_EQ(Ask(read_), answer_) << "the next request gets its own answer";
}

TEST_F(ModemTroubleTest, RubbishFromTheModemIsDropped) {
  modem_.silence(Service::vendor, kRdeReadId);
  ASSERT_TRUE(parent_->send(read_));
  ASSERT_TRUE(modem_.waitForRequests(1));
  const handset::Received request = modem_.requests().at(0);
  const auto header = [](uint8_t kind, uint16_t id, uint32_t transaction) {
    return concat(Bytes{kind, 0xE4}, handset::le16(id), le32(transaction), le32(0));
  };
  for (const Bytes& packet :
       {hex("06"), hex("06 E4 08 00 01 00 00 00 00 00 00"), header(5, kRdeReadId, request.transaction),
        header(0, kRdeReadId, request.transaction), header(0xFF, kRdeReadId, request.transaction),
        concat(header(6, kRdeReadId, request.transaction + 1000), Bytes(540)),
        concat(header(6, kRdeWriteId, request.transaction), Bytes(540)), header(4, 0, 0)})
    EXPECT_EQ(modem_.sendRaw(Service::vendor, packet), 1U);
  Bytes response(540);
  response[28] = 0x77;
  ASSERT_TRUE(modem_.respond(request, 0, response));
  EXPECT_EQ(parent_->nextResponse(), cdmaResponse(0x02000017, 0, hex("77 00 00 00")));
}

TEST_F(ModemTroubleTest, AModemThatDisappearsFailsTheRequestUnderWayAndLaterOnesAtOnce) {
  modem_.silence(Service::vendor, kRdeReadId);
  ASSERT_TRUE(parent_->send(read_));
  ASSERT_TRUE(modem_.waitForRequests(1));
  modem_.stop();
  EXPECT_EQ(parent_->nextResponse(Millis(5000)), cdmaResponse(0x02000017, 5));
  EXPECT_EQ(Ask(cdmaRequest(0x02000016, nvPayload(1, 0, 0, 0))), cdmaResponse(0x02000016, 5));
  EXPECT_TRUE(Logs("NV Read fail - -2, result - 0, error - 0"));
  modem_.start();
  EXPECT_EQ(Ask(read_), cdmaResponse(0x02000017, 5)) << "nothing reconnects";
}

}  // namespace
}  // namespace kesext_test
