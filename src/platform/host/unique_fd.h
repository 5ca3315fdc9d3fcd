// A file descriptor that is closed with its owner.
#pragma once

#include <unistd.h>

#include <utility>

namespace host {

class UniqueFd {
 public:
  UniqueFd() = default;
  /// Takes over an open descriptor; a negative one stands for none.
  explicit UniqueFd(int fd) : fd_(fd) {}
  UniqueFd(UniqueFd&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  UniqueFd& operator=(UniqueFd&& other) noexcept {
    reset(std::exchange(other.fd_, -1));
    return *this;
  }
  ~UniqueFd() { reset(); }

  /// The descriptor; negative when there is none.
  [[nodiscard]] int get() const { return fd_; }
  explicit operator bool() const { return fd_ >= 0; }

  /// Closes the descriptor and owns `fd` from now on.
  void reset(int fd = -1) {
    if (fd_ >= 0) close(fd_);
    fd_ = fd;
  }

 private:
  int fd_ = -1;
};

}  // namespace host
