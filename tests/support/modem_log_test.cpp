#include "support/modem_log_test.h"

#include <filesystem>

namespace kesext_test {

Lines ModemLogTest::Indicate(const std::vector<Bytes>& indications) {
  Lines lines;
  for (const std::string& line : HookProcessTest::Indicate(handset::kUtilityIndicationId, indications)) {
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
