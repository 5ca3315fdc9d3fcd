#include "tools/bench/modem_memory.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <exception>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "handset/message_table.h"
#include "tools/bench/console.h"
#include "tools/bench/modem_control.h"
#include "tools/records/field_value.h"
#include "tools/text/usage_error.h"
#include "tools/text/words.h"

namespace tools {

namespace {

using handset::Bytes;
using handset::Modem;
using Lines = std::vector<std::string>;

constexpr const char* kMemoryPath = "/modem.txt";
/// More than what a modem is kept as ever has.
constexpr uintmax_t kMemoryMax = uintmax_t{4} * 1024 * 1024;  // bytes
constexpr size_t kLineMax = size_t{64} * 1024;
/// Of lines that are wrong.
constexpr size_t kComplaintsMax = 5;
constexpr const char* kHeading =
    "# What the modem was told and what was written, as `hookctl modem` is told it.";

/// What a response refuses its message with, if it is no more than that.
std::optional<uint32_t> errorOf(const handset::MessageRow& row, const Bytes& response) {
  const handset::Fields fields = row.response;
  const bool has_error = fields.size() > 1 && fields[1].name == "error";
  const uint32_t error = has_error ? handset::getLe<uint32_t>(response, fields[0].size) : 0;
  return refusal(row, error) == response ? std::optional(error) : std::nullopt;
}

std::string typed(const Bytes& bytes) {
  return bytes.empty() ? "text:" : quoteWord(writeBytes(bytes));
}

void keepReply(const handset::MessageRow& row, const handset::Reply& reply, Lines& lines) {
  const handset::ByteView used = withoutZerosBehind(reply.body);
  if (reply.code != 0)
    lines.push_back(fmt::format("fail {} {}", row.name, reply.code));
  else if (const auto error = errorOf(row, reply.body))
    lines.push_back(fmt::format("refuse {} {}", row.name, *error));
  else
    lines.push_back(fmt::format("answer {} {}", row.name,
                                typed(used.empty() ? Bytes(1) : Bytes(used.begin(), used.end()))));
}

void keepRules(const Modem& modem, Lines& lines) {
  for (const auto& [key, rule] : modem.rules()) {
    const handset::MessageRow* row = handset::findMessage(key.first, key.second);
    if (row == nullptr) continue;
    if (rule.reply) keepReply(*row, *rule.reply, lines);
    if (rule.delay.count() > 0) lines.push_back(fmt::format("delay {} {}", row->name, rule.delay.count()));
    if (rule.silent) lines.push_back(fmt::format("silent {}", row->name));
  }
}

void keepState(const handset::ModemState& state, Lines& lines) {
  const handset::ModemState fresh;
  for (const auto& [key, bytes] : state.elements)
    lines.push_back(fmt::format("set rde {} {}{}", key.first, typed(bytes),
                                key.second != 0 ? fmt::format(" {}", key.second) : ""));
  for (const auto& [index, status] : fresh.bands)
    if (state.bands.at(index) != status)
      lines.push_back(
          fmt::format("set band {} {}", index == handset::kBandClass10 ? 10 : 14, state.bands.at(index)));
  if (state.bsr_timer != fresh.bsr_timer) lines.push_back(fmt::format("set bsr-timer {}", state.bsr_timer));
  std::vector<uint32_t> order;
  for (size_t at = 0; at < state.tot_order.size(); at += kWordSize)
    order.push_back(handset::getLe<uint32_t>(state.tot_order, at));
  if (!order.empty()) lines.push_back(fmt::format("set tot-order {}", fmt::join(order, ",")));
}

/// The lines that bring a fresh modem to where this one is.
std::string memoryOf(const Modem& modem) {
  Lines lines{kHeading};
  keepState(modem.state(), lines);
  keepRules(modem, lines);
  for (const handset::Service service : handset::kServices)
    if (modem.instances(service) != 1)
      lines.push_back(fmt::format("publish {} {}", handset::serviceName(service), modem.instances(service)));
  return fmt::format("{}\n", fmt::join(lines, "\n"));
}

/// Tells the modem what a line keeps. Throws UsageError for one that keeps nothing.
void recallLine(const std::string& line, Modem& modem) {
  const std::vector<std::string> words = splitWords(line.substr(0, kLineMax));
  if (line.size() > kLineMax) throw UsageError(fmt::format("a line has up to {} characters", kLineMax));
  for (const std::string_view deed : {"indicate", "start", "stop"})
    if (!words.empty() && words.front() == deed)
      throw UsageError(fmt::format("{} is nothing that a modem is kept by", deed));
  modemOrder(words)(modem);
}

void recall(const handset::Folder& folder, Modem& modem) {
  const std::string path = folder.path(kMemoryPath);
  std::error_code none;
  if (const auto size = std::filesystem::file_size(path, none); !none && size > kMemoryMax)
    throw UsageError(
        fmt::format("{} has more than {} bytes, so no modem is kept there: take it away, or take "
                    "another folder",
                    path, kMemoryMax));
  const std::optional<Bytes> memory = folder.readFile(kMemoryPath);
  if (!memory) return;
  std::istringstream lines(std::string(memory->begin(), memory->end()));
  std::string line;
  size_t wrong = 0;
  for (size_t number = 1; std::getline(lines, line); ++number) {
    try {
      recallLine(line, modem);
    } catch (const UsageError& error) {
      if (++wrong <= kComplaintsMax)
        complain(
            fmt::format("hookctl: {}:{}: {:.300}; the modem goes without that line: mend the file, or tell "
                        "the modem reset",
                        path, number, error.what()));
    }
  }
  if (wrong > kComplaintsMax)
    complain(fmt::format("hookctl: {}: {} more such lines", path, wrong - kComplaintsMax));
}

/// Writes the file whenever there is something else to be written than the last time.
class Memory {
 public:
  Memory(const handset::Folder& folder, const Modem& modem)
      : folder_(folder), modem_(modem), written_(memoryOf(modem)) {}

  void write() {
    const std::scoped_lock lock(mutex_);
    const std::string text = memoryOf(modem_);
    if (text == written_) return;
    written_ = text;
    try {
      folder_.replaceFile(kMemoryPath, text);
    } catch (const std::exception& error) {
      complain(fmt::format("hookctl: what the modem holds is not kept: {}", error.what()));
    }
  }

 private:
  const handset::Folder& folder_;
  const Modem& modem_;
  std::mutex mutex_;
  std::string written_;
};

}  // namespace

void keepModem(const handset::Folder& folder, Modem& modem) {
  recall(folder, modem);
  modem.onChange([memory = std::make_shared<Memory>(folder, modem)] { memory->write(); });
}

}  // namespace tools
