// The host's modem client framework against the simulated modem.
#include <gmock/gmock.h>

#include <atomic>
#include <future>
#include <mutex>
#include <thread>

#include "handset/folder.h"
#include "handset/modem.h"
#include "platform/host/indication_queue.h"
#include "platform/qmi_client.h"
#include "platform/qmi_services.h"

namespace kesext_test {
namespace {

using handset::Bytes;
using handset::hex;
using handset::le32;
using handset::Service;

constexpr uint16_t kEcho = 0x7000;
constexpr uint32_t kTimeoutMs = 10'000;

/// What an indication callback collected; the handler may be held up.
struct Indications {
  std::mutex mutex;
  std::condition_variable changed;
  std::vector<std::pair<uint32_t, Bytes>> seen;
  const qmi_client_type* client = nullptr;  // where the connecting thread has its handle stored

  static void take(qmi_client_type handle, uint32_t id, const uint8_t* bytes, uint32_t length, void* data) {
    auto* self = static_cast<Indications*>(data);
    EXPECT_EQ(handle, *self->client);
    {
      const std::lock_guard lock(self->mutex);
      self->seen.emplace_back(id, Bytes(bytes, bytes + length));
    }
    self->changed.notify_all();
  }
  bool waitFor(size_t count) {
    std::unique_lock lock(mutex);
    return changed.wait_for(lock, handset::kTimeout, [&] { return seen.size() >= count; });
  }
};

class ModemLinkTest : public ::testing::Test {
 protected:
  ModemLinkTest() : modem_(folder_.root()) {
    setenv("HANDSET_ROOT", folder_.root().c_str(), 1);
    indications_.client = &client_;
    modem_.start();
    modem_.handle(Service::vendor, kEcho, [](handset::ByteView body) {
      return handset::Reply{0, Bytes(body.begin(), body.end())};
    });
  }
  ~ModemLinkTest() override {
    if (client_ != nullptr) {
      EXPECT_EQ(qmi_client_release(client_), 0);
    }
  }

  void Connect() {
    uint32_t entries = 1;
    uint32_t services = 0;
    qmi_service_info info{};
    ASSERT_EQ(qmi_client_get_service_list(vendor_, &info, &entries, &services), 0);
    ASSERT_EQ(qmi_client_init(&info, vendor_, Indications::take, &indications_, nullptr, &client_), 0);
  }
  int Send(uint32_t id, const Bytes& request, Bytes& response, uint32_t timeout_ms = kTimeoutMs) {
    return qmi_client_send_msg_sync(client_, id, request.data(), static_cast<uint32_t>(request.size()),
                                    response.data(), static_cast<uint32_t>(response.size()), timeout_ms);
  }

  handset::Folder folder_;
  handset::Modem modem_;
  Indications indications_;
  const qmi_idl_service_object_type vendor_ = kesext_vs_get_service_object_internal_v01(1, 1, 4);
  qmi_client_type client_ = nullptr;
};

TEST_F(ModemLinkTest, AResponseIsTakenOnlyWhenItHasTheStructuresSize) {
  Connect();
  Bytes response(3);
  EXPECT_EQ(Send(kEcho, hex("01 02 03"), response), 0);
  EXPECT_EQ(response, hex("01 02 03"));
  EXPECT_EQ(Send(kEcho, hex("04 05"), response), -4);
  EXPECT_EQ(Send(kEcho, hex("04 05 06 07"), response), -4);
  modem_.fail(Service::vendor, kEcho, 1234);
  EXPECT_EQ(Send(kEcho, hex("04 05 06"), response), 1234);
  EXPECT_EQ(response, hex("01 02 03")) << "an error leaves the response as it was";
}

TEST_F(ModemLinkTest, TheLongestFrameGoesWholeAndALongerOneNotAtAll) {
  Connect();
  Bytes longest(size_t{64} * 1024 - 12);
  for (size_t i = 0; i < longest.size(); ++i)
    longest[i] = static_cast<uint8_t>(i * i >> 8);
  Bytes response(longest.size());
  EXPECT_EQ(Send(kEcho, longest, response), 0);
  EXPECT_EQ(response, longest);
  longest.push_back(0);
  EXPECT_EQ(Send(kEcho, longest, response), -1);
  EXPECT_EQ(modem_.requests().size(), 1U);
}

TEST_F(ModemLinkTest, ManyThreadsEachGetTheirOwnAnswersWhileIndicationsArrive) {
  Connect();
  std::vector<std::thread> threads;
  std::atomic<int> wrong = 0;
  for (uint32_t thread = 0; thread < 6; ++thread) {
    threads.emplace_back([&, thread] {
      for (uint32_t i = 0; i < 300; ++i) {
        const Bytes request = le32(thread << 16 | i);
        Bytes response(4);
        if (Send(kEcho, request, response) != 0 || response != request) ++wrong;
      }
    });
  }
  for (int i = 0; i < 300; ++i)
    modem_.indicate(0x0001, le32(static_cast<uint32_t>(i)));
  for (std::thread& thread : threads)
    thread.join();
  EXPECT_EQ(wrong, 0);
  ASSERT_TRUE(indications_.waitFor(300));
  for (uint32_t i = 0; i < 300; ++i)
    EXPECT_EQ(indications_.seen[i].second, le32(i)) << "in order";
}

TEST_F(ModemLinkTest, OneSendersTimeOutDoesNotEndAnothersWait) {
  Connect();
  modem_.silence(Service::vendor, kEcho);
  auto patient = std::async(std::launch::async, [this] {
    Bytes response(4);
    EXPECT_EQ(Send(kEcho, le32(7), response), 0);
    return response;
  });
  ASSERT_TRUE(modem_.waitForRequests(1));
  Bytes response(4);
  EXPECT_EQ(Send(kEcho, le32(8), response, 50), -3);
  modem_.respond(modem_.requests().at(0), 0, le32(7));
  EXPECT_EQ(patient.get(), le32(7));
}

TEST(IndicationQueueTest, WhatABlockedHandlerLeavesNoRoomForIsDroppedWithALogLine) {
  std::promise<void> go_on;
  const auto wait = [](qmi_client_type, uint32_t, const uint8_t*, uint32_t, void* data) {
    static_cast<std::future<void>*>(data)->wait();
  };
  std::future<void> gone_on = go_on.get_future();
  const Bytes body(size_t{60} * 1024);
  host::IndicationQueue queue;
  ASSERT_TRUE(queue.start(nullptr, wait, &gone_on));
  ::testing::internal::CaptureStderr();
  for (int i = 0; i < 64 * 1024 / 60 + 2; ++i)
    queue.push(0x000F, body.data(), body.size());
  go_on.set_value();
  EXPECT_THAT(::testing::internal::GetCapturedStderr(),
              ::testing::StartsWith("E QMI-HOST: indication 0xf dropped: too many wait\n"));
}

}  // namespace
}  // namespace kesext_test
