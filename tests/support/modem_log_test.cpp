#include "support/modem_log_test.h"

#include <filesystem>

namespace kesext_test {

Lines ModemLogTest::Indicate(const std::vector<Bytes>& indications) {
  const size_t mark = parent_->logMark();
  for (const Bytes& indication : indications)
    modem_.indicate(handset::kUtilityIndicationId, indication);
  // The test notification comes last, and is the only message of CDMA form.
  modem_.indicate(0x0001, {});
  forwarded_.clear();
  Bytes message;
  while (!(message = NextUnsolicited()).empty() && message.front() != 0)
    forwarded_.push_back(message);
  EXPECT_EQ(message.size(), 50U);
  EXPECT_TRUE(parent_->waitForLogSince(mark, "Unsol resp 0x1 not supported by Sprint handler."));

  Lines lines;
  for (const std::string& line : parent_->logsSince(mark)) {
    const auto tells = [&line](const char* text) { return line.find(text) != std::string::npos; };
    if (tells("Handling unsol") || tells("Unsol resp") || tells("hook_ind_cb: ")) continue;
    lines.push_back(line.starts_with(E("")) ? line.substr(E("").size()) : line);
  }
  return lines;
}

Bytes ModemLogTest::CurrentLog() const {
  std::error_code missing;
  const auto target = std::filesystem::read_symlink(folder_.path("/data/adam/.0001"), missing);
  return folder_.readFile(target.string()).value_or(Bytes{});
}

}  // namespace kesext_test
