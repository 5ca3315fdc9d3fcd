// The NV handlers that serve a request when the carrier declined it.
#include <gmock/gmock.h>

#include <algorithm>

#include "nv/nv_requests.h"
#include "support/golden.h"
#include "support/records.h"
#include "support/unit_test.h"

namespace kesext_test {
namespace {

using handset::Bytes;
using handset::concat;
using handset::hex;
using handset::le32;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class NvFallbackTest : public UnitTest {
 protected:
  /// The modem answers every send with the result and these bytes.
  static void ModemAnswers(const Bytes& body, int32_t sent = 0) {
    fake_modem = [=](const FakeSend& send, uint8_t* response) {
      EXPECT_LE(body.size(), send.response_length);
      std::copy(body.begin(), body.end(), response);
      return sent;
    };
  }
  static void ModemHolds(const Bytes& data, uint32_t length, uint32_t result = 0, uint32_t error = 0) {
    ModemAnswers(concat(le32(result), le32(error), le32(7), le32(8), le32(9), le32(length), le32(512), data));
  }
  Bytes GenericRead(const Bytes& payload) {
    kesext::handleGenNvReadRequest(Request(cdmaRequest(0x02000016, payload)), 0xFFFFFFFF, 0);
    return Written();
  }
  Bytes GenericWrite(const Bytes& payload) {
    kesext::handleGenNvWriteRequest(Request(cdmaRequest(0x02000015, payload)), 0xFFFFFFFF, 0);
    return Written();
  }
  Bytes CompareCode(const Bytes& code, int32_t msg_len) {
    kesext::handleNvReadRequest(Request(cdmaRequest(0x0200000A, code, msg_len)), 0x20, 0);
    return Written();
  }
};

TEST_F(NvFallbackTest, TheCodeComparisonNeedsSixBytesOnBothSides) {
  const Bytes code = handset::bytesOf("123456");
  const Bytes equal = cdmaResponse(0x0200000A, 0);
  const Bytes different = cdmaResponse(0x0200000A, 5);
  ModemHolds(code, 6);
  EXPECT_EQ(CompareCode(code, 6), equal);
  EXPECT_THAT(fake_log, ElementsAre("E NV Read RdeId 32", "E handleSpcResponse for id 200000a, respSize-6"));
  EXPECT_EQ(CompareCode(handset::bytesOf("123457"), 6), different);
  EXPECT_EQ(CompareCode(code, 5), different);
  EXPECT_EQ(CompareCode(code, -6), different);
  ModemHolds(code, 7);
  EXPECT_EQ(CompareCode(code, 6), different);
  EXPECT_EQ(CompareCode(code, 7), different);
  ModemAnswers({}, 3);
  EXPECT_EQ(CompareCode(code, 6), different);
}

TEST_F(NvFallbackTest, AGenericReadAnswersTheWordsAndDataOfTheResponse) {
  ModemHolds(hex("F0 01 02 03 04 05 06 07 08 09"), 10);
  EXPECT_EQ(GenericRead(nvPayload(1, 2, 3, 4)),
            concat(hex("16 00 00 02  1E 00 00 00  00 00 00 00"), Bytes(6), nvPayload(7, 8, 9, 10),
                   hex("F0 01 02 03 04 05 06 07 08 09"), Bytes(6)));
  EXPECT_EQ(fake_sends.at(0).request, concat(nvPayload(1, 2, 3, 4), Bytes(516)));
  EXPECT_THAT(fake_log, ElementsAre("E Gen NV Read 7 length 10"));
  ModemHolds(Bytes(512, 1), 512);
  EXPECT_EQ(GenericRead(nvPayload(1, 2, 3, 4)).size(), 552U);
  ModemHolds({}, 0);
  EXPECT_EQ(GenericRead({}).size(), 40U);
}

TEST_F(NvFallbackTest, AFailedGenericReadIsAnsweredWithStatus5) {
  ModemHolds(Bytes(4, 1), 4, 1, 16);
  EXPECT_EQ(GenericRead(nvPayload(1, 0, 0, 0)), cdmaResponse(0x02000016, 5));
  ModemHolds(Bytes(512, 1), 513);
  EXPECT_EQ(GenericRead(nvPayload(1, 0, 0, 0)), cdmaResponse(0x02000016, 5));
  ModemHolds({}, 0xFFFFFFFF);
  EXPECT_EQ(GenericRead(nvPayload(1, 0, 0, 0)), cdmaResponse(0x02000016, 5));
  ModemAnswers({}, -4);
  EXPECT_EQ(GenericRead(nvPayload(1, 0, 0, 0)), cdmaResponse(0x02000016, 5));
  EXPECT_THAT(fake_log, ElementsAre("E Gen NV Read error 0 or 16", "E Gen NV Read error 0 or 0",
                                    "E Gen NV Read error 0 or 0", "E Gen NV Read error -4 or 0"));
}

TEST_F(NvFallbackTest, AGenericWriteOfMoreThan512BytesIsSilent) {
  for (const uint32_t length : {513U, 0x80000000U, 0xFFFFFFFFU}) {
    fake_log.clear();
    EXPECT_EQ(GenericWrite(nvPayload(500, 0, 0, length, Bytes(600, 1))), Bytes{});
    EXPECT_THAT(fake_log,
                ElementsAre("E Data more than buffer size " + std::to_string(static_cast<int32_t>(length))));
  }
  EXPECT_THAT(fake_sends, IsEmpty());
  EXPECT_EQ(GenericWrite(nvPayload(500, 0, 0, 512, Bytes(512, 1))), cdmaResponse(0x02000015, 0));
}

TEST_F(NvFallbackTest, AFailedGenericWriteIsAnsweredWithStatus5) {
  for (const int sent : {0, 3}) {
    ModemAnswers(le32(1), sent);
    EXPECT_EQ(GenericWrite(nvPayload(500, 0, 0, 1)), cdmaResponse(0x02000015, 5));
  }
  EXPECT_EQ(fake_log.back(), "E Gen NV write error 3 result 1, for element 500");
}

TEST_F(NvFallbackTest, AnIdThatIsNoFixedReadIsAnsweredWithStatus5) {
  for (const uint32_t id : {0x02000008, 0x0200000A}) {
    kesext::handleNvResponse(Request(cdmaRequest(id)), {}, 2);
    EXPECT_EQ(Written(), cdmaResponse(id, 5, Bytes(2)));
  }
  kesext::handleNvReadRequest(Request(cdmaRequest(0x02000008)), 0x26, 0);
  EXPECT_EQ(Written(), Bytes{}) << "no row tells how";
  ExpectGolden(fake_log, "nv_no_fixed_read");
}

}  // namespace
}  // namespace kesext_test
