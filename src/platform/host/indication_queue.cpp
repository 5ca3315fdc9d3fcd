#include "platform/host/indication_queue.h"

#include <cstring>
#include <new>
#include <utility>

#include "platform/android_log.h"

namespace host {
namespace {

/// What the waiting indications may take, their records included so that empty ones are bounded too. Bytes.
constexpr size_t kQueueMemoryMax = size_t{64} * 1024 * 1024;

void logDropped(uint16_t message_id, const char* why) {
  __android_log_print(ANDROID_LOG_ERROR, "QMI-HOST", "indication 0x%x dropped: %s", message_id, why);
}

}  // namespace

bool IndicationQueue::start(qmi_client_type handle, qmi_client_ind_cb callback, void* data) {
  handle_ = handle;
  callback_ = callback;
  data_ = data;
  const auto run = [](void* self) -> void* {
    static_cast<IndicationQueue*>(self)->deliver();
    return nullptr;
  };
  return thread_.start(run, this);
}

IndicationQueue::~IndicationQueue() {
  {
    const std::lock_guard lock(mutex_);
    stopping_ = true;
    changed_.notify_all();
  }
  thread_.join();
  // One by one: left to its owner, a long chain would be destroyed by recursion.
  while (first_ != nullptr)
    takeFirst();
}

void IndicationQueue::push(uint16_t message_id, const uint8_t* body, size_t size) {
  if (callback_ == nullptr) return;
  std::unique_ptr<Indication> added(new (std::nothrow) Indication);
  if (added != nullptr) added->body.reset(new (std::nothrow) uint8_t[size]);
  if (added == nullptr || added->body == nullptr) return logDropped(message_id, "out of memory");
  memcpy(added->body.get(), body, size);
  added->size = size;
  added->message_id = message_id;

  const std::lock_guard lock(mutex_);
  if (memory_ + sizeof(Indication) + size > kQueueMemoryMax) return logDropped(message_id, "too many wait");
  memory_ += sizeof(Indication) + size;
  std::unique_ptr<Indication>& end = first_ == nullptr ? first_ : last_->next;
  last_ = added.get();
  end = std::move(added);
  changed_.notify_all();
}

void IndicationQueue::deliver() {
  std::unique_lock lock(mutex_);
  while (true) {
    changed_.wait(lock, [this] { return stopping_ || first_ != nullptr; });
    if (stopping_) return;
    const std::unique_ptr<Indication> next = takeFirst();
    lock.unlock();
    callback_(handle_, next->message_id, next->body.get(), static_cast<uint32_t>(next->size), data_);
    lock.lock();
  }
}

std::unique_ptr<IndicationQueue::Indication> IndicationQueue::takeFirst() {
  std::unique_ptr<Indication> taken = std::move(first_);
  first_ = std::move(taken->next);
  memory_ -= sizeof(Indication) + taken->size;
  return taken;
}

}  // namespace host
