// A file descriptor that closes itself.
#pragma once

#include <unistd.h>

#include <utility>

namespace handset {

class Fd {
 public:
  Fd() = default;
  /// Takes over an open descriptor; a negative one stands for none.
  explicit Fd(int fd) : fd_(fd) {}
  Fd(Fd&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  Fd& operator=(Fd&& other) noexcept {
    if (this != &other) {
      reset();
      fd_ = std::exchange(other.fd_, -1);
    }
    return *this;
  }
  Fd(const Fd&) = delete;
  Fd& operator=(const Fd&) = delete;
  ~Fd() { reset(); }

  void reset() {
    if (fd_ >= 0) close(std::exchange(fd_, -1));
  }
  /// The descriptor, or −1 when there is none.
  [[nodiscard]] int get() const { return fd_; }
  explicit operator bool() const { return fd_ >= 0; }

 private:
  int fd_ = -1;
};

}  // namespace handset
