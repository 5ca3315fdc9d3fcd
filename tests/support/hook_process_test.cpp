#include "support/hook_process_test.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iterator>

namespace kesext_test {

namespace {

constexpr std::string_view kWaiting = "Child process waiting for data";
/// An indication that nothing knows, and what begins the log of it.
constexpr uint16_t kUnknown = 0xFFFF;
constexpr std::string_view kUnknownCame = "qmi_kesext_hook_ind_cb: msg_id=0xffff ";

/// "SIZE bytes", and the bytes without the zeros at their end.
std::string brief(Bytes bytes) {
  const std::string size = std::to_string(bytes.size()) + " bytes";
  while (!bytes.empty() && bytes.back() == 0)
    bytes.pop_back();
  return bytes.empty() ? size : size + " " + handset::toHex(bytes, "");
}

/// The process that the cases start; another build's where the environment names it.
std::string executable() {
  const char* other = std::getenv("KESEXT_PROCESS");
  return other != nullptr ? other : KESEXT_BINARY;
}

bool isWanted(const std::string& line, const std::vector<std::string>& only) {
  const auto has = [&line](const std::string& text) { return line.find(text) != std::string::npos; };
  return only.empty() || std::any_of(only.begin(), only.end(), has);
}

}  // namespace

Bytes sized(Bytes bytes, size_t size) {
  bytes.resize(size);
  return bytes;
}

Bytes pattern(size_t count, uint8_t first) {
  Bytes bytes(count);
  for (size_t i = 0; i < count; ++i)
    bytes[i] = static_cast<uint8_t>(first + i * 7);
  return bytes;
}

HookProcessTest::HookProcessTest() : modem_(folder_.root()) {
  modem_.start();
}

HookProcessTest::~HookProcessTest() {
  if (!parent_) return;
  if (!parent_->wait(handset::Millis(0))) {
    EXPECT_EQ(End(), 0);
  }
  for (const std::string& line : parent_->logs())
    EXPECT_TRUE(line.starts_with("E RIL-KESEXT: ") || line.starts_with("D RIL-KESEXT: ")) << line;
}

void HookProcessTest::Launch(std::vector<std::string> arguments) {
  parent_ = std::make_unique<handset::Parent>(handset::ParentOptions{
      .executable = executable(), .handset_root = folder_.root(), .arguments = std::move(arguments)});
}

void HookProcessTest::LaunchFromShell(const std::string& script) {
  const std::vector<std::string> arguments{"-c", script, executable(), "3", "4", "5", "0"};
  parent_ = std::make_unique<handset::Parent>(handset::ParentOptions{
      .executable = "/bin/bash", .handset_root = folder_.root(), .arguments = arguments});
}

void HookProcessTest::Start(int instance_id) {
  Launch({"3", "4", "5", std::to_string(instance_id)});
  ASSERT_TRUE(Logs(kWaiting));
  modem_.takeRequests();
}

Bytes HookProcessTest::Ask(const Bytes& request) {
  asked_at_ = parent_->logMark();
  EXPECT_TRUE(parent_->send(request));
  Bytes answer = parent_->nextResponse().value_or(Bytes{});
  EXPECT_TRUE(parent_->waitForLogSince(asked_at_, kWaiting));
  return answer;
}

std::vector<std::string> HookProcessTest::LogsOfLastRequest() {
  std::vector<std::string> lines = parent_->logsSince(asked_at_);
  lines.erase(std::find(lines.begin(), lines.end(), E(kWaiting)), lines.end());
  return lines;
}

std::vector<std::string> HookProcessTest::HandlerLogs() {
  std::vector<std::string> lines;
  for (const std::string& line : LogsOfLastRequest()) {
    if (line == E("kesext_hook_sprint_handler: ENTER ") ||
        line.ends_with(" not supported by Sprint handler.") ||
        line.starts_with(D("handle generic request, "))) {
      lines.clear();
    } else if (!line.starts_with(E("kesext_hook_sprint_send_response: ")) &&
               !line.ends_with(" is handled by Sprint handler.")) {
      lines.push_back(line);
    }
  }
  return lines;
}

void HookProcessTest::RecordAnswer(const Bytes& request, const std::vector<std::string>& only) {
  modem_.takeRequests();
  record_.push_back("< " + brief(Ask(request)));
  RecordSent(only);
  for (const std::string& line : only.empty() ? HandlerLogs() : LogsOfLastRequest())
    if (isWanted(line, only)) record_.push_back(line);
}

void HookProcessTest::RecordSent(const std::vector<std::string>& only) {
  for (const handset::Received& sent : modem_.requests()) {
    const std::string id = handset::toHex(handset::be32(sent.id), "").substr(4);
    const std::string line =
        "> " + std::string(handset::serviceName(sent.service)) + " " + id + ": " + brief(sent.body);
    if (isWanted(line, only)) record_.push_back(line);
  }
}

std::vector<std::string> HookProcessTest::Indicate(uint16_t id, const std::vector<Bytes>& indications) {
  const size_t mark = parent_->logMark();
  for (const Bytes& indication : indications)
    modem_.indicate(id, indication);
  modem_.indicate(kUnknown, {});
  EXPECT_TRUE(parent_->waitForLogSince(mark, "Unsupported Indicator message 65535"));
  forwarded_.clear();
  while (auto message = parent_->nextUnsolicited(handset::Millis(0)))
    forwarded_.push_back(*message);

  std::vector<std::string> lines = parent_->logsSince(mark);
  const auto is_last = [](const std::string& line) { return line.find(kUnknownCame) != std::string::npos; };
  lines.erase(std::find_if(lines.begin(), lines.end(), is_last), lines.end());
  return lines;
}

void HookProcessTest::RecordIndication(uint16_t id, const Bytes& indication) {
  const std::vector<std::string> lines = Indicate(id, {indication});
  for (const Bytes& message : forwarded_)
    record_.push_back("< " + brief(message));
  record_.insert(record_.end(), lines.begin(), lines.end());
}

bool HookProcessTest::Logs(std::string_view text) {
  return parent_->waitForLogSince(0, text);
}

Bytes HookProcessTest::NextUnsolicited() {
  return parent_->nextUnsolicited().value_or(Bytes{});
}

size_t HookProcessTest::OpenDescriptors() const {
  const std::filesystem::directory_iterator descriptors("/proc/" + std::to_string(parent_->pid()) + "/fd");
  return static_cast<size_t>(std::distance(begin(descriptors), end(descriptors)));
}

int HookProcessTest::End() {
  parent_->closeRequests();
  return parent_->wait().value_or(-1);
}

std::string E(std::string_view text) {
  return "E RIL-KESEXT: " + std::string(text);
}

std::string D(std::string_view text) {
  return "D RIL-KESEXT: " + std::string(text);
}

}  // namespace kesext_test
