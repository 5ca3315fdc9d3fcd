#include "tools/scenario/tour_stage.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <string>

#include "core/ground/hook_message.h"
#include "tools/bench/modem_control.h"
#include "tools/records/decode.h"
#include "tools/records/difference.h"
#include "tools/records/encode.h"
#include "tools/text/words.h"

namespace tools {

using handset::Bytes;
using handset::ByteView;

namespace {

/// A line as it would be typed in the shell. One that only a program would type is cut.
std::string typed(std::string_view line) {
  constexpr size_t kShownMax = 800;  // characters
  constexpr size_t kShownOfLonger = 64;
  if (line.size() <= kShownMax) return fmt::format("hook> {}", line);
  return fmt::format("hook> {}... ({} characters)", line.substr(0, kShownOfLonger), line.size());
}

std::string toModem(std::string_view words) {
  return fmt::format("modem {}", words);
}

}  // namespace

void TourStage::end() {
  const std::optional<int> status = station_.end();
  check(status == 0, fmt::format("closing the request pipe ends the process with status {}",
                                 status ? std::to_string(*status) : "(it does not end)"));
}

void TourStage::tell(std::string_view words) {
  console_.block("    " + typed(toModem(words)));
  commandModem(modem(), splitWords(words));
}

void TourStage::ask(std::string_view title, std::string_view words, ByteView expected) {
  console_.step(title);
  console_.note(typed(words));
  const Bytes request = encodeWords(splitWords(words));
  console_.record("request", decodeRequest(request), request);
  const Answer answer = station_.ask(request);
  last_answer_ = answer.bytes;
  console_.record("answer", decodeAnswer(request, last_answer_), last_answer_, {answer.came, answer.asked});
  compare(last_answer_, expected);
}

void TourStage::indicate(std::string_view title, std::string_view words, ByteView expected) {
  console_.step(title);
  console_.note(typed(toModem(fmt::format("indicate {}", words))));
  indication(splitWords(words))(modem());
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

Bytes codedResponse(uint32_t id, uint32_t status, ByteView payload) {
  return handset::concat(handset::le32(id), handset::le32(static_cast<uint32_t>(payload.size())),
                         handset::le32(status), handset::bytesOf("000000"), payload, Bytes(2));
}

}  // namespace tools
