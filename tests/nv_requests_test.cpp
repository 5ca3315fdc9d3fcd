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

TEST_F(NvRequestsTest, EveryFixedElementIsReadAndWritten) {
  for (const FixedElement& element : kFixedElements) {
    modem_.setElement(element.index, pattern(10, 0xF0));
    Record("read", cdmaRequest(element.read_id));
    Record("written", cdmaRequest(element.write_id, pattern(5)));
  }
  ExpectGolden(record_, "nv_fixed_elements");
}

TEST_F(NvRequestsTest, AFixedReadIgnoresTheModemsResultAndAWriteDoesNot) {
  Record("no such element", cdmaRequest(0x0200000D));
  modem_.fail(Service::vendor, kRdeReadId, 9);
  Record("not sent", cdmaRequest(0x0200000D));
  modem_.answer(Service::vendor, kRdeWriteId, concat(le32(1), le32(77)));
  Record("a write that is refused", cdmaRequest(0x02000010, hex("01")));
  modem_.fail(Service::vendor, kRdeWriteId, 90);
  Record("a write that is not sent", cdmaRequest(0x02000010, hex("01")));
  ExpectGolden(record_, "nv_failures");
}

TEST_F(NvRequestsTest, AFixedWriteIsBoundedTo512Bytes) {
  EXPECT_EQ(Ask(cdmaRequest(0x02000008, {})), cdmaResponse(0x02000008, 0)) << "an empty write is sent";
  EXPECT_EQ(Ask(cdmaRequest(0x02000008, pattern(512))), cdmaResponse(0x02000008, 0));
  EXPECT_EQ(modem_.requests().size(), 2U);
  EXPECT_EQ(modem_.element(0x1C), pattern(512));
  for (const int32_t msg_len : {513, INT32_MAX, -1, INT32_MIN}) {
    EXPECT_EQ(Ask(cdmaRequest(0x02000008, pattern(600), msg_len)), cdmaResponse(0x02000008, 5));
    EXPECT_THAT(HandlerLogs(), ElementsAre(E("Data more than buffer size " + std::to_string(msg_len))));
  }
  EXPECT_EQ(modem_.requests().size(), 2U);
}

}  // namespace
}  // namespace kesext_test
