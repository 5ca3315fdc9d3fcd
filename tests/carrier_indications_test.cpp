// The carrier's two indications, from the modem to the parent.
#include <gmock/gmock.h>

#include "support/hook_process_test.h"

namespace kesext_test {
namespace {

using CarrierIndicationsTest = ServingTest;

TEST_F(CarrierIndicationsTest, TheValueIndicationIsWidenedToAWord) {
  modem_.indicate(0x0012, hex("02 01"));
  EXPECT_EQ(NextUnsolicited(),
            hex("00000000 14000000 B0010002 04000000 00000000 000000000000 02010000 0000"));
  EXPECT_TRUE(Logs("Unsol resp 0x12 is handled by Sprint handler."));
  modem_.indicate(0x0012, hex("FF FF"));
  EXPECT_EQ(NextUnsolicited(), cdmaUnsolicited(0x020001B0, hex("FF FF 00 00")));
}

TEST_F(CarrierIndicationsTest, TheLteErrorIndicationIsPacked) {
  const Bytes block = pattern(103, 0x80);
  modem_.indicate(0x010B, concat(hex("01 02 03 04  A5  EE EE EE  11 12 13 14"), block, hex("EE")));
  EXPECT_EQ(NextUnsolicited(),
            cdmaUnsolicited(0x020001B1, concat(hex("01 02 03 04  A5  11 12 13 14"), block)));
}

TEST_F(CarrierIndicationsTest, AnIndicationOfAnotherSizeIsTakenAndDropped) {
  const std::pair<uint16_t, size_t> cases[] = {{0x0012, 0},   {0x0012, 1},   {0x0012, 3},
                                               {0x010B, 115}, {0x010B, 117}, {0x010B, 0}};
  for (const auto& [id, size] : cases) {
    SCOPED_TRACE(size);
    const size_t mark = parent_->logMark();
    modem_.indicate(id, Bytes(size, 1));
    EXPECT_TRUE(parent_->waitForLogSince(mark, id == 0x0012
                                                   ? "Unsol resp 0x12 is handled by Sprint handler."
                                                   : "Unsol resp 0x10b is handled by Sprint handler."));
    EXPECT_TRUE(
        parent_->waitForLogSince(mark, "kes_qmi_sprint_hook_ind_cb: qmi_client_message_decode Failed(-4)."));
  }
  ExpectNothingForwarded();
}

}  // namespace
}  // namespace kesext_test
