#include "tools/records/difference.h"

#include <fmt/format.h>

#include <algorithm>

namespace tools {

using handset::ByteView;

std::string difference(ByteView received, ByteView expected) {
  static constexpr size_t kShown = 16;
  const auto [at, _] = std::mismatch(received.begin(), received.end(), expected.begin(), expected.end());
  const auto offset = static_cast<size_t>(at - received.begin());
  const auto some = [offset](ByteView bytes) {
    const ByteView rest = bytes.subspan(std::min(offset, bytes.size()));
    const std::string text = handset::toHex(rest.first(std::min(kShown, rest.size())));
    return text.empty() ? "the end" : text + (rest.size() > kShown ? " ..." : "");
  };
  return fmt::format("differs at byte {} of {}: expected {}, not {} ({} bytes expected)", offset,
                     received.size(), some(expected), some(received), expected.size());
}

}  // namespace tools
