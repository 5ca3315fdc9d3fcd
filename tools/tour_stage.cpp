#include "tools/tour_stage.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "core/ground/hook_message.h"

namespace tools {

using handset::Bytes;
using handset::ByteView;

TourStage::TourStage(std::string executable, const Console& console)
    : executable_(std::move(executable)), console_(console), modem_(folder_.root()) {
  modem_.start();
}

bool TourStage::start() {
  parent_.emplace(handset::ParentOptions{.executable = executable_, .handset_root = folder_.root()});
  if (parent_->waitForLog("Child process waiting for data")) return true;
  console_.verdict(false, "the process did not come to serve requests; it last logged:");
  showLastLogLines();
  return false;
}

void TourStage::end() {
  parent_->closeRequests();
  const std::optional<int> status = parent_->wait();
  check(status == 0, fmt::format("closing the request pipe ends the process with status {}",
                                 status ? std::to_string(*status) : "(it does not end)"));
}

void TourStage::ask(std::string_view title, ByteView request, ByteView expected) {
  console_.step(title);
  console_.record("request", decodeRequest(request), request);
  const std::optional<Bytes> answer = parent_->ask(request);
  last_answer_ = answer.value_or(Bytes{});
  if (answer) console_.record("answer", decodeAnswer(request, *answer), *answer);
  compare(answer, expected);
}

void TourStage::indicate(std::string_view title, uint16_t id, ByteView indication, ByteView expected) {
  console_.step(title);
  console_.note(fmt::format("modem    indication 0x{:04X}  ({} bytes)", id, indication.size()));
  modem_.indicate(id, indication);
  const std::optional<Bytes> message = parent_->nextUnsolicited();
  if (message) console_.record("message", decodeUnsolicited(*message), *message);
  compare(message, expected);
}

bool TourStage::settle() {
  constexpr uint16_t kTestNotification = 0x0001;
  modem_.indicate(kTestNotification, {});
  return parent_->nextUnsolicited().has_value();
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

void TourStage::compare(const std::optional<Bytes>& received, ByteView expected) {
  if (!received) {
    check(false, "nothing came");
    showLastLogLines();
    return;
  }
  const bool same = std::equal(received->begin(), received->end(), expected.begin(), expected.end());
  check(same, same ? "as expected" : "expected " + handset::toHex(expected));
}

void TourStage::showLastLogLines() const {
  constexpr size_t kLines = 8;
  const std::vector<std::string> lines = parent_->logs();
  for (size_t i = lines.size() - std::min(kLines, lines.size()); i < lines.size(); ++i)
    console_.note(lines[i]);
}

}  // namespace tools
