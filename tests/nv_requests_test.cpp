// Reads and writes of the fixed RDE elements, from the parent to the modem and back.
#include <gmock/gmock.h>

#include "support/hook_process_test.h"

namespace kesext_test {
namespace {

using ::testing::ElementsAre;

struct FixedElement {
  uint32_t read_id;
  uint32_t write_id;
  uint32_t index;
};
constexpr FixedElement kFixedElements[] = {
    {0x02000017, 0x02000018, 0x26},
    {0x02000019, 0x0200001A, 0x27},
    {0x0200000D, 0x0200000E, 0x2713},
    {0x0200000F, 0x02000010, 0x25},
};

using NvRequestsTest = ServingTest;

TEST_F(NvRequestsTest, AFixedReadAnswersFourBytesOfItsElement) {
  for (const FixedElement& element : kFixedElements) {
    SCOPED_TRACE(element.read_id);
    modem_.clearRequests();
    modem_.rde().set(element.index, pattern(10, 0xF0));
    EXPECT_EQ(Ask(cdmaRequest(element.read_id)), cdmaResponse(element.read_id, 0, pattern(4, 0xF0)));
    const auto requests = modem_.requests();
    ASSERT_EQ(requests.size(), 1U);
    EXPECT_EQ(requests[0].id, kRdeReadId);
    EXPECT_EQ(requests[0].body, concat(le32(element.index), Bytes(528)));
  }
}

TEST_F(NvRequestsTest, AFixedReadLogsWhatItAnswers) {
  modem_.rde().set(0x26, hex("FE 02 03 04 05"));
  Ask(cdmaRequest(0x02000017));
  EXPECT_THAT(HandlerLogs(),
              ElementsAre(E("NV Read RdeId 38"), E("handleNvResponse for id 2000017, dataSize-4, respSize-5"),
                          E("handleNvRsp: data is 254 for msgId 0x2000017"),
                          E("handleNvRsp: response hexdump for p_respHdr->msgId 0x2000017..."),
                          E("HexDump: Data 170000020400000000000000000000000000FE0203040000")));
}

TEST_F(NvRequestsTest, AFixedReadIgnoresTheModemsResultButNotAFailedSend) {
  EXPECT_EQ(Ask(cdmaRequest(0x0200000D)), cdmaResponse(0x0200000D, 0, Bytes(4))) << "no such element";
  modem_.fail(Service::vendor, kRdeReadId, 9);
  EXPECT_EQ(Ask(cdmaRequest(0x0200000D)), cdmaResponse(0x0200000D, 5));
  EXPECT_THAT(HandlerLogs(), ElementsAre(E("NV Read RdeId 10003")));
}

TEST_F(NvRequestsTest, AFixedWriteStoresThePayload) {
  for (const FixedElement& element : kFixedElements) {
    SCOPED_TRACE(element.write_id);
    modem_.clearRequests();
    const Bytes data = pattern(5);
    EXPECT_EQ(Ask(cdmaRequest(element.write_id, data)), cdmaResponse(element.write_id, 0));
    EXPECT_THAT(HandlerLogs(),
                ElementsAre(E("NV write RdeId: " + std::to_string(element.index) + " length 5")));
    const auto requests = modem_.requests();
    ASSERT_EQ(requests.size(), 1U);
    EXPECT_EQ(requests[0].id, kRdeWriteId);
    EXPECT_EQ(requests[0].body,
              concat(le32(element.index), Bytes(8), le32(5), le32(5), data, Bytes(512 - data.size())));
  }
}

TEST_F(NvRequestsTest, AFixedWriteIsBoundedTo512Bytes) {
  EXPECT_EQ(Ask(cdmaRequest(0x02000008, {})), cdmaResponse(0x02000008, 0)) << "an empty write is sent";
  EXPECT_EQ(Ask(cdmaRequest(0x02000008, pattern(512))), cdmaResponse(0x02000008, 0));
  EXPECT_EQ(modem_.requestCount(), 2U);
  EXPECT_EQ(modem_.rde().get(0x1C), pattern(512));
  for (const int32_t msg_len : {513, INT32_MAX, -1, INT32_MIN}) {
    EXPECT_EQ(Ask(cdmaRequest(0x02000008, pattern(600), msg_len)), cdmaResponse(0x02000008, 5));
    EXPECT_THAT(HandlerLogs(), ElementsAre(E("Data more than buffer size " + std::to_string(msg_len))));
  }
  EXPECT_EQ(modem_.requestCount(), 2U);
}

TEST_F(NvRequestsTest, ARefusedFixedWriteIsLoggedWithSendCodeAndError) {
  modem_.answer(Service::vendor, kRdeWriteId, concat(le32(1), le32(77)));
  EXPECT_EQ(Ask(cdmaRequest(0x02000010, hex("01"))), cdmaResponse(0x02000010, 5));
  EXPECT_THAT(HandlerLogs(),
              ElementsAre(E("NV write RdeId: 37 length 1"), E("NV write Err RdeId=37, Err=0, resp_type=77")));
  modem_.fail(Service::vendor, kRdeWriteId, 90);
  EXPECT_EQ(Ask(cdmaRequest(0x02000010, hex("01"))), cdmaResponse(0x02000010, 5));
  EXPECT_EQ(HandlerLogs().back(), E("NV write Err RdeId=37, Err=90, resp_type=0"));
}

}  // namespace
}  // namespace kesext_test
