// The read and write of one RDE element, against a modem that is a function.
#include "nv/rde_operations.h"

#include <gmock/gmock.h>

#include <cstring>

#include "handset/bytes.h"
#include "nv/rde_messages.h"
#include "support/fake_platform.h"

namespace kesext_test {
namespace {

using handset::Bytes;
using handset::concat;
using handset::hex;
using handset::le32;
using ::testing::ElementsAre;

class RdeOperationsTest : public ::testing::Test {
 protected:
  void SetUp() override { resetFakes(); }

  /// The modem answers reads with this result and these data, of which it says that `length` are valid.
  void ModemHolds(const Bytes& data, uint32_t length, uint32_t result = 0, uint32_t error = 0) {
    fake_modem = [=](const FakeSend& sent, uint8_t* response) {
      EXPECT_EQ(sent.response_length, sizeof(kesext::RdeReadResponse));
      kesext::RdeReadResponse read{
          .result = result, .error = error, .rde_index = 11, .length = length, .data_len = 512};
      std::memcpy(read.data, data.data(), data.size());
      std::memcpy(response, &read, sizeof read);
      return 0;
    };
  }
};

TEST_F(RdeOperationsTest, AReadCopiesTheValidBytesAndCountsThem) {
  ModemHolds(hex("AB 01 02 03"), 3);
  Bytes buffer(4, 0xEE);
  uint32_t count = 99;
  EXPECT_EQ(kesext::kes_qmi_sprint_rde_read(10017, 2, -3, buffer.data(), 3, &count), 0U);
  EXPECT_EQ(buffer, hex("AB 01 02 EE"));
  EXPECT_EQ(count, 3U);
  ASSERT_EQ(fake_sends.size(), 1U);
  EXPECT_EQ(fake_sends[0].msg_id, 8U);
  EXPECT_EQ(fake_sends[0].request, concat(le32(10017), le32(2), hex("FD FF FF FF"), Bytes(520)));
  EXPECT_THAT(fake_log, ElementsAre("E NV Read with RDE index (10017), recordNum(2), offset(-3).",
                                    "E NV Read 11, length 3, data length 512, grde - AB0102"));
  EXPECT_EQ(kesext::kes_qmi_sprint_rde_read(1, 0, 0, buffer.data(), 4, nullptr), 0U) << "no count wanted";
}

TEST_F(RdeOperationsTest, AnElementLargerThanTheBufferIsASuccessThatCopiesNothing) {
  ModemHolds(Bytes(20, 1), 20);
  Bytes buffer(16, 0xEE);
  uint32_t count = 99;
  EXPECT_EQ(kesext::kes_qmi_sprint_rde_read(1, 0, 0, buffer.data(), 16, &count), 0U);
  EXPECT_EQ(kesext::kes_qmi_sprint_rde_read(1, 0, 0, nullptr, 1024, &count), 0U);
  EXPECT_EQ(buffer, Bytes(16, 0xEE));
  EXPECT_EQ(count, 99U);
  EXPECT_EQ(fake_log.at(2), "E Input buffer is NULL or too small! max_len(16).");
  EXPECT_EQ(fake_log.back(), "E Input buffer is NULL or too small! max_len(1024).");
}

TEST_F(RdeOperationsTest, AFailedReadReturns4AndCopiesNothing) {
  struct Case {
    uint32_t length, result, error;
    int32_t sent;
    const char* log;
  };
  const Case cases[] = {{4, 1, 16, 0, "E NV Read fail - 0, result - 1, error - 16"},
                        {513, 0, 0, 0, "E NV Read fail - 0, result - 0, error - 0"},
                        {0xFFFFFFFF, 0, 0, 0, "E NV Read fail - 0, result - 0, error - 0"},
                        {4, 0, 0, -3, "E NV Read fail - -3, result - 0, error - 0"}};
  for (const Case& c : cases) {
    ModemHolds(Bytes(512, 1), c.length, c.result, c.error);
    if (c.sent != 0) fake_modem = [&c](const FakeSend&, uint8_t*) { return c.sent; };
    Bytes buffer(1024, 0xEE);
    uint32_t count = 99;
    EXPECT_EQ(kesext::kes_qmi_sprint_rde_read(1, 0, 0, buffer.data(), 1024, &count), 4U);
    EXPECT_EQ(buffer, Bytes(1024, 0xEE));
    EXPECT_EQ(count, 99U);
    EXPECT_EQ(fake_log.back(), c.log);
  }
}

TEST_F(RdeOperationsTest, AWriteSendsItsBytesWithBothLengths) {
  const Bytes data = hex("0A FF");
  EXPECT_EQ(kesext::kes_qmi_sprint_rde_write(15, 1, 2, 2, data.data()), 0U);
  ASSERT_EQ(fake_sends.size(), 1U);
  EXPECT_EQ(fake_sends[0].msg_id, 9U);
  EXPECT_EQ(fake_sends[0].request, concat(le32(15), le32(1), le32(2), le32(2), le32(2), data, Bytes(510)));
  EXPECT_EQ(fake_sends[0].response_length, 8U);
  EXPECT_THAT(fake_log, ElementsAre("E NV Write with RDE index 15, record number 1, offset 2.",
                                    "E kes_qmi_sprint_rde_write: hexdump len 2...", "E HexDump: Data 0AFF",
                                    "E NV Write success for element 15"));
}

}  // namespace
}  // namespace kesext_test
