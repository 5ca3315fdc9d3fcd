// The start-up of the modem clients in cases that the process itself never gets into.
#include "qmi/carrier_clients.h"

#include <gmock/gmock.h>

#include <semaphore>

#include "core/indication_routing.h"
#include "handset/folder.h"
#include "handset/modem.h"
#include "platform/qmi_services.h"
#include "qmi/send.h"
#include "qmi/service_wait.h"
#include "qmi/vendor_client.h"

/// The call that fails.
static std::string failing_call;
/// Whether the framework asks for an RF save before it gives the handle, and when the answer waits for that.
static bool indicates_early = false;
static std::counting_semaphore<> answer_waits{0};

// The link puts these in place of the calls.
extern "C" decltype(pthread_cond_wait) __real_pthread_cond_wait;
extern "C" int __wrap_pthread_cond_wait(pthread_cond_t* condition, pthread_mutex_t* mutex) {
  answer_waits.release();
  return __real_pthread_cond_wait(condition, mutex);
}
extern "C" decltype(kesext_vs_get_service_object_internal_v01)
    __real_kesext_vs_get_service_object_internal_v01;
extern "C" qmi_idl_service_object_type __wrap_kesext_vs_get_service_object_internal_v01(int32_t major,
                                                                                        int32_t minor,
                                                                                        int32_t tool) {
  return failing_call == "service" ? nullptr
                                   : __real_kesext_vs_get_service_object_internal_v01(major, minor, tool);
}
extern "C" decltype(qmi_client_init) __real_qmi_client_init;
extern "C" int __wrap_qmi_client_init(const qmi_service_info* info, qmi_idl_service_object_type service,
                                      qmi_client_ind_cb callback, void* data, qmi_client_os_params* params,
                                      qmi_client_type* stored) {
  qmi_client_type handle = nullptr;
  const int result = __real_qmi_client_init(info, service, callback, data, params, &handle);
  if (indicates_early) {
    callback(handle, 0x0013, nullptr, 0, data);
    EXPECT_TRUE(answer_waits.try_acquire_for(handset::kTimeout)) << "it was sent without the handle";
  }
  *stored = handle;
  return result;
}

extern "C" decltype(qmi_client_notifier_init) __real_qmi_client_notifier_init;
extern "C" int __wrap_qmi_client_notifier_init(qmi_idl_service_object_type service, QmiSignal* signal,
                                               qmi_client_type* notifier) {
  return failing_call == "notifier" ? 7 : __real_qmi_client_notifier_init(service, signal, notifier);
}
extern "C" void* __real_calloc(size_t count, size_t size);
extern "C" void* __wrap_calloc(size_t count, size_t size) {
  return failing_call == "calloc" ? nullptr : __real_calloc(count, size);
}

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

/// Against a modem.
class ModemClientsTest : public ::testing::Test {
 protected:
  ModemClientsTest() : modem_(folder_.root()) {
    setenv("HANDSET_ROOT", folder_.root().c_str(), 1);
    modem_.start();
  }
  handset::Folder folder_;
  handset::Modem modem_;
};

TEST(CarrierClientsTest, ASendBeforeStartUpIsRefused) {
  EXPECT_EQ(
      LogOf([] { EXPECT_EQ(kesext::qmi_kesext_sprint_nas_send_msg_sync(0x24, nullptr, 0, nullptr, 0), -1); }),
      "E RIL-KESEXT: qmi_kesext_sprint_nas_send_msg_sync: Handler not initialized!\n");
  EXPECT_EQ(
      LogOf([] { EXPECT_EQ(kesext::qmi_kesext_sprint_dms_send_msg_sync(0x3B, nullptr, 0, nullptr, 0), -1); }),
      "E RIL-KESEXT: qmi_kesext_sprint_dms_send_msg_sync: Handler not initialized!\n");
}

TEST_F(ModemClientsTest, AServiceThatIsMissingOfNoKnownTypeOrNotToBeWatchedOrListedEndsTheStart) {
  const auto vendor = [] { return kesext::qmi_kesext_hook_client_init(kesext::handleUnsolIndication); };
  const qmi_idl_service_object_type nas = nas_get_service_object_internal_v01(1, 133, 6);
  const auto carrier = [](qmi_idl_service_object_type service, int32_t type) {
    return [=] { return kesext::qmi_kesext_sprint_client_init_with_type(service, type); };
  };
  const auto ends = [](const char* failing, auto start, int32_t result, const std::string& last_lines) {
    failing_call = failing;
    EXPECT_THAT(LogOf([=] { EXPECT_EQ(start(), result); }), EndsWith(last_lines + '\n'));
    failing_call.clear();
  };
  ends("service", vendor, -1, "_hook_client_init: kesext_hook_get_serivce_object failed.");
  ends("none", carrier(nullptr, 1), -1, "sprint_client_init: kesext_hook_get_serivce_object failed.");
  ends("notifier", vendor, -1, "_hook_client_init: qmi_client_notifier_init failed. rc = 7");
  ends("notifier", carrier(nas, 1), 7, "sprint_client_init: qmi_client_notifier_init failed. rc = 7");
  ends("calloc", vendor, -1, "_hook_client_init: qmi_client_init failed. rc = -1");
  ends("calloc", carrier(nas, 1), -1, "returned -1 num_entries = 1 num_services = 1");
  ends("none", carrier(nas, 3), -1,
       "sprint_client_init: Unknown\nE RIL-KESEXT: sprint_client_init: qmi_client_init failed. rc = -1");
}

TEST(ServiceWaitTest, AWaitTakesASecondUnlessTheServiceIsThere) {
  QmiSignal signal{};
  const auto began = std::chrono::steady_clock::now();
  kesext::waitForService(&signal);
  const auto waited = std::chrono::steady_clock::now() - began;
  EXPECT_EQ(signal.timed_out, 1);
  EXPECT_GE(waited, handset::Millis(900));
  EXPECT_LT(waited, handset::Millis(1900));
  signal.sig_set = 1;
  kesext::waitForService(&signal);
  EXPECT_EQ(signal.timed_out, 0);
}

TEST_F(ModemClientsTest, AListOfNoInstancesHasAFirstEntryAllTheSame) {
  const auto list = kesext::fetchServiceList(nas_get_service_object_internal_v01(1, 133, 6), 0);
  EXPECT_EQ(list.result, 0);
  EXPECT_TRUE(handset::isZero(handset::recordBytes(list.entries[0])));
}

TEST_F(ModemClientsTest, AnAnswerToAnIndicationThatComesBeforeTheHandleWaitsForIt) {
  indicates_early = true;
  EXPECT_EQ(kesext::qmi_kesext_hook_client_init(kesext::handleUnsolIndication), 0);
  indicates_early = false;
  ASSERT_TRUE(modem_.waitForRequests(1));
  EXPECT_EQ(modem_.requests()[0].id, 0x0013);
}

}  // namespace
}  // namespace kesext_test
