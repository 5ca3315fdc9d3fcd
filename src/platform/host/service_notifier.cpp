#include "platform/host/service_notifier.h"

#include <poll.h>
#include <sys/eventfd.h>

#include <array>

#include "platform/host/link_results.h"

namespace host {
namespace {

/// Between two attempts to reach a modem that is not there. The contract allows 100 ms to notice it.
constexpr int kReconnectIntervalMs = 50;
constexpr int kForever = -1;

}  // namespace

bool ServiceNotifier::start(Service service, QmiSignal* signal) {
  service_ = service;
  signal_ = signal;
  stop_.reset(eventfd(0, EFD_CLOEXEC));
  if (!stop_) return false;
  const auto run = [](void* self) -> void* {
    static_cast<ServiceNotifier*>(self)->watch();
    return nullptr;
  };
  return thread_.start(run, this);
}

ServiceNotifier::~ServiceNotifier() {
  stopping_ = true;
  if (stop_) eventfd_write(stop_.get(), 1);
  thread_.join();
}

void ServiceNotifier::watch() {
  do {
    const Deadline deadline =
        std::chrono::steady_clock::now() + std::chrono::milliseconds(kReconnectIntervalMs);
    if (socket_.connect(deadline) == kDone &&
        socket_.send({.kind = FrameKind::lookup, .service = service_}, nullptr, 0, deadline) == kDone) {
      followReports();
    }
    socket_.close();
  } while (!stopOrInput(kReconnectIntervalMs));
}

/// Returns when the modem is gone or the notifier has to stop.
void ServiceNotifier::followReports() {
  while (!stopOrInput(kForever)) {
    Frame frame;
    const Received received = socket_.receive(frame);
    if (received == Received::closed) return;
    if (received == Received::nothing) continue;
    if (frame.header.kind == FrameKind::services && frame.header.code >= 1) raiseSignal();
  }
}

/// Waits until the notifier has to stop, which gives true, there is input, or the time has passed. A wait
/// that fails ends at once.
bool ServiceNotifier::stopOrInput(int timeout_ms) const {
  // The system passes over the descriptor -1 of a socket that is closed.
  std::array<pollfd, 2> waits{{{.fd = stop_.get(), .events = POLLIN, .revents = 0},
                               {.fd = socket_.fd(), .events = POLLIN, .revents = 0}}};
  poll(waits.data(), waits.size(), timeout_ms);
  return stopping_;
}

void ServiceNotifier::raiseSignal() const {
  pthread_mutex_lock(&signal_->mutex);
  signal_->sig_set = 1;
  pthread_cond_signal(&signal_->cond);
  pthread_mutex_unlock(&signal_->mutex);
}

}  // namespace host
