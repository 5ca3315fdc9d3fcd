#include "tools/bench/modem_memory.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "carrier/modem_messages.h"
#include "handset/message_table.h"
#include "tools/bench/console.h"
#include "tools/bench/modem_control.h"
#include "tools/text/usage_error.h"

namespace tools {

namespace {

using handset::Bytes;
using handset::Modem;
using Lines = std::vector<std::string>;

constexpr const char* kMemoryPath = "/modem.txt";
constexpr const char* kHeading =
    "# What the modem was told and what was written, as `hookctl modem` is told it.\n";

Lines keptElements(const Modem& modem) {
  Lines lines;
  const handset::ModemState state = modem.state();
  for (const auto& [key, bytes] : state.elements)
    lines.push_back(fmt::format("{} {}{}", key.first, bytes.empty() ? "text:" : handset::toHex(bytes, ""),
                                key.second != 0 ? fmt::format(" {}", key.second) : ""));
  return lines;
}

Lines keptBands(const Modem& modem) {
  Lines lines;
  const handset::ModemState state = modem.state();
  for (const auto& [index, status] : handset::ModemState{}.bands)
    if (state.bands.at(index) != status)
      lines.push_back(fmt::format("{} {}", index == handset::kBandClass10 ? 10 : 14, state.bands.at(index)));
  return lines;
}

Lines keptBsrTimer(const Modem& modem) {
  const uint32_t timer = modem.state().bsr_timer;
  return timer == handset::ModemState{}.bsr_timer ? Lines{} : Lines{std::to_string(timer)};
}

Lines keptTotOrder(const Modem& modem) {
  const Bytes order = modem.state().tot_order;
  std::vector<uint32_t> entries;
  for (size_t at = 0; at < order.size(); at += kesext::kTotOrderEntrySize)
    entries.push_back(handset::getLe<uint32_t>(order, at));
  return entries.empty() ? Lines{} : Lines{fmt::format("{}", fmt::join(entries, ","))};
}

/// A message's name, and what `say` says of its rule, for each that it says something of.
Lines keptRules(const Modem& modem,
                std::optional<std::string> (*say)(const handset::MessageRow&, const Modem::Rule&)) {
  Lines lines;
  for (const auto& [key, rule] : modem.rules()) {
    const handset::MessageRow* row = handset::findMessage(key.first, key.second);
    if (row == nullptr) continue;
    if (const auto said = say(*row, rule)) lines.push_back(fmt::format("{}{}", row->name, *said));
  }
  return lines;
}

/// What a response refuses its message with, if it is no more than that.
std::optional<uint32_t> errorOf(const handset::MessageRow& row, const Bytes& response) {
  const handset::Fields fields = row.response;
  const bool has_error = fields.size() > 1 && fields[1].name == "error";
  const uint32_t error = has_error ? handset::getLe<uint32_t>(response, fields[0].size) : 0;
  return refusal(row, error) == response ? std::optional(error) : std::nullopt;
}

Lines keptAnswers(const Modem& modem) {
  return keptRules(modem, [](const auto& row, const auto& rule) -> std::optional<std::string> {
    if (!rule.reply || rule.reply->code != 0 || errorOf(row, rule.reply->body)) return std::nullopt;
    Bytes body = rule.reply->body;
    while (body.size() > 1 && body.back() == 0)
      body.pop_back();
    return " " + handset::toHex(body, "");
  });
}

Lines keptFailures(const Modem& modem) {
  return keptRules(modem, [](const auto&, const auto& rule) {
    return rule.reply && rule.reply->code != 0 ? std::optional(fmt::format(" {}", rule.reply->code))
                                               : std::nullopt;
  });
}

Lines keptRefusals(const Modem& modem) {
  return keptRules(modem, [](const auto& row, const auto& rule) -> std::optional<std::string> {
    if (!rule.reply || rule.reply->code != 0) return std::nullopt;
    const auto error = errorOf(row, rule.reply->body);
    return error ? std::optional(fmt::format(" {}", *error)) : std::nullopt;
  });
}

Lines keptDelays(const Modem& modem) {
  return keptRules(modem, [](const auto&, const auto& rule) {
    return rule.delay.count() > 0 ? std::optional(fmt::format(" {}", rule.delay.count())) : std::nullopt;
  });
}

Lines keptSilences(const Modem& modem) {
  return keptRules(modem, [](const auto&, const auto& rule) {
    return rule.silent ? std::optional<std::string>("") : std::nullopt;
  });
}

Lines keptInstances(const Modem& modem) {
  Lines lines;
  for (const handset::Service service : kServices)
    if (modem.instances(service) != 1)
      lines.push_back(fmt::format("{} {}", handset::serviceName(service), modem.instances(service)));
  return lines;
}

/// What the modem is told by the command of this name: the arguments that bring it to where it is now, for
/// each time that it has to be told.
struct MemoryRow {
  std::string_view command;
  Lines (*kept)(const Modem& modem);
};
constexpr MemoryRow kMemory[] = {
    {"set rde", keptElements},       {"set band", keptBands}, {"set bsr-timer", keptBsrTimer},
    {"set tot-order", keptTotOrder}, {"answer", keptAnswers}, {"fail", keptFailures},
    {"refuse", keptRefusals},        {"delay", keptDelays},   {"silent", keptSilences},
    {"publish", keptInstances},
};

std::string memoryOf(const Modem& modem) {
  std::string text = kHeading;
  for (const MemoryRow& row : kMemory)
    for (const std::string& arguments : row.kept(modem))
      text += fmt::format("{} {}\n", row.command, arguments);
  return text;
}

void recall(const handset::Folder& folder, Modem& modem) {
  const std::optional<Bytes> memory = folder.readFile(kMemoryPath);
  if (!memory) return;
  std::istringstream lines(std::string(memory->begin(), memory->end()));
  std::string line;
  for (size_t number = 1; std::getline(lines, line); ++number) {
    try {
      commandModem(modem, splitWords(line));
    } catch (const UsageError& error) {
      complain(
          fmt::format("hookctl: {}:{}: {}; the modem goes without that line: mend the file, or tell the "
                      "modem reset",
                      folder.path(kMemoryPath), number, error.what()));
    }
  }
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
