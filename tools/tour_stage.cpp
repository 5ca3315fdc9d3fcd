#include "tools/tour_stage.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>

#include "core/ground/hook_message.h"
#include "tools/decode.h"
#include "tools/difference.h"

namespace tools {

using handset::Bytes;
using handset::ByteView;

void TourStage::end() {
  const std::optional<int> status = station_.end();
  check(status == 0, fmt::format("closing the request pipe ends the process with status {}",
                                 status ? std::to_string(*status) : "(it does not end)"));
}

void TourStage::ask(std::string_view title, ByteView request, ByteView expected) {
  console_.step(title);
  console_.record("request", decodeRequest(request), request);
  last_answer_ = station_.ask(request);
  console_.record("answer", decodeAnswer(request, last_answer_), last_answer_);
  compare(last_answer_, expected);
}

void TourStage::indicate(std::string_view title, uint16_t id, ByteView indication, ByteView expected) {
  console_.step(title);
  console_.note(fmt::format("modem    indication 0x{:04X}  ({} bytes)", id, indication.size()));
  modem().indicate(id, indication);
  const Bytes message = station_.nextUnsolicited();
  console_.record("message", decodeUnsolicited(message), message);
  compare(message, expected);
}

ByteView TourStage::lastPayload() const {
  constexpr size_t kAround = kesext::kOemHookHeaderCount;
  if (last_answer_.size() < kAround) return {};
  return ByteView(last_answer_).subspan(kesext::kOemHookPayloadOffset, last_answer_.size() - kAround);
}

void TourStage::check(bool good, std::string_view what) {
  ++steps_;
  if (!good) ++wrong_;
  console_.verdict(good, what);
}

void TourStage::compare(ByteView received, ByteView expected) {
  const bool same = std::equal(received.begin(), received.end(), expected.begin(), expected.end());
  check(same, same ? "as expected" : difference(received, expected));
}

}  // namespace tools
