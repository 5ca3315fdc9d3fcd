#include "platform/host/modem_client.h"

#include <cstring>

#include "platform/host/link_results.h"

namespace host {

/// A thread inside `exchange`.
struct ModemClient::Pending {
  const Exchange& exchange;
  uint32_t transaction;
  Pending* next = nullptr;
  bool done = false;
  qmi_client_error_type result = kTimedOut;  // as the response gave it, once done
};

qmi_client_error_type ModemClient::connect(Service service, Deadline deadline) {
  service_ = service;
  int32_t code = 0;
  const qmi_client_error_type result =
      socket_.connectAndAsk(FrameKind::connect, service, FrameKind::connected, deadline, code);
  return result == kDone ? code : result;
}

bool ModemClient::start(qmi_client_type handle, qmi_client_ind_cb callback, void* data) {
  if (!watch_.start(socket_.fd())) return false;
  if (callback != nullptr && !indications_.start(handle, callback, data)) return false;
  const auto run = [](void* self) -> void* {
    static_cast<ModemClient*>(self)->receiveWhileIdle();
    return nullptr;
  };
  return background_.start(run, this);
}

ModemClient::~ModemClient() {
  socket_.shutDown();
  {
    std::unique_lock lock(mutex_);
    released_ = true;
    changed_.notify_all();
    changed_.wait(lock, [this] { return pending_ == nullptr; });
  }
  background_.join();
}

qmi_client_error_type ModemClient::exchange(const Exchange& exchange, Deadline deadline) {
  std::unique_lock lock(mutex_);
  if (link_lost_) return kNoService;
  Pending pending{.exchange = exchange, .transaction = ++last_transaction_};
  add(pending);

  const FrameHeader header{.kind = FrameKind::request,
                           .service = service_,
                           .message_id = exchange.message_id,
                           .transaction = pending.transaction};
  lock.unlock();
  const qmi_client_error_type sent = socket_.send(header, exchange.request, exchange.request_size, deadline);
  lock.lock();
  if (sent == kDone) awaitResponse(lock, pending, deadline);
  remove(pending);

  if (pending.done) return pending.result;
  if (sent != kDone) return sent;
  return link_lost_ ? kNoService : kTimedOut;
}

void ModemClient::add(Pending& pending) {
  if (!watch_.paused()) watch_.pause();
  pending.next = pending_;
  pending_ = &pending;
}

void ModemClient::remove(const Pending& pending) {
  Pending** place = &pending_;
  while (*place != &pending)
    place = &(*place)->next;
  *place = pending.next;
  if (pending_ == nullptr) changed_.notify_all();
}

/// Returns when the request is done, the link is lost or the deadline has passed.
void ModemClient::awaitResponse(std::unique_lock<std::mutex>& lock, const Pending& pending,
                                Deadline deadline) {
  const auto may_go_on = [&] { return pending.done || link_lost_ || !receiving_; };
  ++waiting_;
  if (changed_.wait_until(lock, deadline, may_go_on)) receiveUntilDone(lock, pending, deadline);
  if (--waiting_ == 0) changed_.notify_all();
}

void ModemClient::receiveUntilDone(std::unique_lock<std::mutex>& lock, const Pending& pending,
                                   Deadline deadline) {
  if (pending.done || link_lost_) return;
  receiving_ = true;
  Received received = Received::nothing;
  while (received != Received::late && !pending.done && !link_lost_) {
    lock.unlock();
    Frame frame;
    received = socket_.receiveUntil(frame, deadline);
    lock.lock();
    take(received, frame);
  }
  receiving_ = false;
  changed_.notify_all();
}

/// The background thread. The end of the connection is reported to it even in a pause.
void ModemClient::receiveWhileIdle() {
  uint32_t transaction_before = 0;
  while (true) {
    watch_.wait();
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return waiting_ == 0 || link_lost_; });
    receiveAvailable(lock);
    if (link_lost_) {
      // A thread that ended before it is joined would be reported as leaked.
      changed_.wait(lock, [this] { return released_; });
      return;
    }
    if (!watch_.paused()) continue;
    // Requests that follow each other closely share a pause.
    if (last_transaction_ == transaction_before)
      watch_.resume();
    else
      watch_.pause();
    transaction_before = last_transaction_;
  }
}

void ModemClient::receiveAvailable(std::unique_lock<std::mutex>& lock) {
  receiving_ = true;
  Received received = Received::frame;
  while (received == Received::frame && waiting_ == 0 && !link_lost_) {
    lock.unlock();
    Frame frame;
    received = socket_.receive(frame);
    lock.lock();
    take(received, frame);
  }
  receiving_ = false;
  changed_.notify_all();
}

void ModemClient::take(Received received, const Frame& frame) {
  if (received == Received::closed) link_lost_ = true;
  if (received != Received::frame) return;
  if (frame.header.kind == FrameKind::response) complete(frame);
  if (frame.header.kind == FrameKind::indication) {
    indications_.push(frame.header.message_id, frame.body, frame.body_size);
  }
}

void ModemClient::complete(const Frame& frame) {
  Pending* pending = pending_;
  while (pending != nullptr && pending->transaction != frame.header.transaction)
    pending = pending->next;
  if (pending == nullptr || pending->done) return;
  const Exchange& exchange = pending->exchange;
  if (frame.header.message_id != exchange.message_id) return;
  pending->done = true;
  pending->result = frame.header.code;
  if (frame.header.code == kDone && frame.body_size != exchange.response_size) pending->result = kNotDecoded;
  if (pending->result == kDone && frame.body_size > 0) memcpy(exchange.response, frame.body, frame.body_size);
  changed_.notify_all();
}

}  // namespace host
