// The start-up of the modem clients in cases that the process itself never gets into.
#include "qmi/carrier_clients.h"

#include <gmock/gmock.h>

#include "handset/folder.h"
#include "handset/modem.h"
#include "platform/qmi_services.h"
#include "qmi/send.h"

namespace kesext_test {
namespace {

using ::testing::EndsWith;

/// What `action` writes to standard error.
template <typename Action>
std::string LogOf(Action action) {
  ::testing::internal::CaptureStderr();
  action();
  return ::testing::internal::GetCapturedStderr();
}

TEST(CarrierClientsTest, ASendBeforeStartUpIsRefused) {
  EXPECT_EQ(
      LogOf([] { EXPECT_EQ(kesext::qmi_kesext_sprint_nas_send_msg_sync(0x24, nullptr, 0, nullptr, 0), -1); }),
      "E RIL-KESEXT: qmi_kesext_sprint_nas_send_msg_sync: Handler not initialized!\n");
  EXPECT_EQ(
      LogOf([] { EXPECT_EQ(kesext::qmi_kesext_sprint_dms_send_msg_sync(0x3B, nullptr, 0, nullptr, 0), -1); }),
      "E RIL-KESEXT: qmi_kesext_sprint_dms_send_msg_sync: Handler not initialized!\n");
}

TEST(CarrierClientsTest, ANullServiceObjectIsRefused) {
  EXPECT_EQ(LogOf([] { EXPECT_EQ(kesext::qmi_kesext_sprint_client_init_with_type(nullptr, 1), -1); }),
            "E RIL-KESEXT: sprint_client_init: kesext_hook_get_serivce_object failed.\n");
}

TEST(CarrierClientsTest, AnUnknownTypeIsRefusedAfterTheServiceWasFound) {
  handset::Folder folder;
  setenv("HANDSET_ROOT", folder.root().c_str(), 1);
  handset::Modem modem(folder.root());
  modem.start();
  const std::string log = LogOf([] {
    EXPECT_EQ(
        kesext::qmi_kesext_sprint_client_init_with_type(nas_get_service_object_internal_v01(1, 133, 6), 3),
        -1);
  });
  EXPECT_THAT(log, EndsWith("E RIL-KESEXT: sprint_client_init: Unknown\n"
                            "E RIL-KESEXT: sprint_client_init: qmi_client_init failed. rc = -1\n"));
}

}  // namespace
}  // namespace kesext_test
