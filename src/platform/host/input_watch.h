// Waits for input on a socket, with pauses in which input wakes nobody.
#pragma once

#include "platform/host/unique_fd.h"

namespace host {

/// One thread waits; the others are called under a lock of the owner.
class InputWatch {
 public:
  /// Watches `fd`, which outlives the watch. False when this machine has no descriptor left.
  bool start(int fd);
  /// Returns when there is input, outside a pause; when a pause is due to end; when the connection has ended;
  /// or for no reason.
  void wait() const;
  /// Leaves input out; after a short time wait returns, for its caller to see whether the pause goes on.
  void pause();
  /// Ends a pause. Input that came meanwhile counts.
  void resume();
  [[nodiscard]] bool paused() const { return paused_; }

 private:
  void watchFor(unsigned events) const;

  int fd_ = -1;
  bool paused_ = false;
  UniqueFd epoll_;
  UniqueFd timer_;
};

}  // namespace host
