// What all targets share.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>

// What does not hold ends the run.
#undef NDEBUG
#include <cassert>

/// What libFuzzer, or play_corpus.cpp, calls for each input.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size);

namespace fuzz {

/// Bytes that somebody made up, taken from their front; zeros once there are no more.
struct Input {
  const uint8_t* next = nullptr;
  size_t left = 0;

  /// Fills `size` bytes at `to`.
  void take(void* to, size_t size) {
    std::memset(to, 0, size);
    size = std::min(size, left);
    std::copy_n(next, size, static_cast<uint8_t*>(to));
    next += size;
    left -= size;
  }
  template <typename Number>
  Number take() {
    Number number;
    take(&number, sizeof number);
    return number;
  }
  uint8_t byte() { return take<uint8_t>(); }
  /// One of the rows.
  template <typename Row, size_t N>
  const Row& of(const Row (&table)[N]) {
    return table[byte() % N];
  }
};

}  // namespace fuzz
