// The generic services without memory.
#include <gmock/gmock.h>

#include "generic/antenna_tuning.h"
#include "generic/data_plmn.h"
#include "generic/pfp.h"
#include "generic/signal_coverage.h"
#include "platform/qmi_client.h"
#include "support/unit_test.h"

namespace kesext_test {
namespace {

using handset::Bytes;
using ::testing::ElementsAre;

class GenericUnitsTest : public UnitTest {
 protected:
  /// Decoding needs no more of a client than that it is there.
  static qmi_client_type Client() {
    static int client;
    return reinterpret_cast<qmi_client_type>(&client);
  }
};

TEST_F(GenericUnitsTest, WithoutMemoryMessagesAreDropped) {
  const Bytes tuner = handset::concat(handset::le32(2), handset::hex("81 01"), Bytes(126));
  const Bytes record(232);
  fake_out_of_memory = true;
  kesext::tunerIndHndlr(Client(), 0x0110, tuner.data(), static_cast<uint32_t>(tuner.size()), nullptr);
  kesext::myPfpIndHndlr(Client(), 0x000A, record.data(), 232, nullptr);
  kesext::sigcovIndHndlr(Client(), 0x010C, record.data(), 32, nullptr);
  kesext::dataPlmnIndHndlr(Client(), 0x0016, nullptr, 0, nullptr);
  EXPECT_THAT(fake_log,
              ElementsAre("E tunerIndHndlr: tuner indication is: 129 1", "E tunerIndHndlr: out of memory!",
                          "E sigcovIndHndlr: out of memory!", "E dataPlmnIndHndlr: out of memory!"));
  EXPECT_EQ(Written(), Bytes{});
}

}  // namespace
}  // namespace kesext_test
