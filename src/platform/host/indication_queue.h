// Hands indications to their callback on a thread of its own, so that a callback that blocks holds up nothing
// else.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>

#include "platform/host/thread.h"
#include "platform/qmi_client.h"

namespace host {

class IndicationQueue {
 public:
  IndicationQueue() = default;
  /// Waits for a running callback; indications that still wait are dropped.
  ~IndicationQueue();
  IndicationQueue(const IndicationQueue&) = delete;
  IndicationQueue& operator=(const IndicationQueue&) = delete;

  /// Starts to call `callback`, which gets `handle` and `data`. False when there is no thread to be had.
  bool start(qmi_client_type handle, qmi_client_ind_cb callback, void* data);
  /// Adds an indication. Dropped when the queue has not started, and with a log line when it is full or
  /// memory is short.
  void push(uint16_t message_id, const uint8_t* body, size_t size);
  /// Whether the caller runs inside a callback of this queue.
  [[nodiscard]] bool isInCallback() const { return thread_.isCurrent(); }

 private:
  struct Indication {
    std::unique_ptr<Indication> next;
    std::unique_ptr<uint8_t[]> body;
    size_t size = 0;
    uint16_t message_id = 0;
  };

  void deliver();
  std::unique_ptr<Indication> takeFirst();

  qmi_client_type handle_ = nullptr;
  qmi_client_ind_cb callback_ = nullptr;
  void* data_ = nullptr;

  std::mutex mutex_;  // guards all below but the thread
  std::condition_variable changed_;
  std::unique_ptr<Indication> first_;
  Indication* last_ = nullptr;
  size_t memory_ = 0;  // of the indications that wait, in bytes
  bool stopping_ = false;

  Thread thread_;
};

}  // namespace host
