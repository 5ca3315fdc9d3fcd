#include "tools/log/log_dumps.h"

#include <algorithm>
#include <cctype>

namespace tools {

namespace {

constexpr std::string_view kDump = "HexDump: Data";
constexpr std::string_view kPriorities = "VDIWEF";

constexpr FieldSpec kElementData[] = {{"data", kRest, FieldKind::bytes}};
constexpr FieldSpec kScreenText[] = {{"text", kRest, FieldKind::text}};
constexpr FieldSpec kPlmnRecord[] = {{"record", kRest, FieldKind::bytes}};
constexpr FieldSpec kTunerAnswer[] = {{"length", 4, FieldKind::number, WhenAbsent::lengthOfRest},
                                      {"data", 28, FieldKind::bytes}};

constexpr DumpAnnouncement kAnnouncements[] = {
    {"handleNvRsp: response hexdump for ", "CDMA answer", {}},
    {"Dumping modem response for QMI_DATA_PLMN_REQ_V01...", "data PLMN's record, as it is answered",
     kPlmnRecord},
    {"Dumping modem response for QMI_TUNER_REQ_V01...", "modem's answer to an antenna command", kTunerAnswer},
    {"Gen NV Write RdeId ", "data that an element is written with", kElementData},
    {"kes_qmi_sprint_rde_write: hexdump len ", "data that an element is written with", kElementData},
    {"kesext_hook_sprint_get_call_processing_data() hexDump...", "modem's call-processing text", kScreenText},
    {"kesext_hook_sprint_get_evdo_data() hexDump...", "modem's EVDO text", kScreenText},
};

}  // namespace

bool isLogLine(std::string_view line) {
  if (line.starts_with("---------") || (line.starts_with("[ ") && line.ends_with(']'))) return true;
  for (size_t at = 0; at + 3 < line.size(); ++at) {
    const bool word_begins = at == 0 || line[at - 1] == ' ';
    if (!word_begins || kPriorities.find(line[at]) == std::string_view::npos) continue;
    const bool parted = line[at + 1] == ' ' || line[at + 1] == '/';
    const bool tagged = std::isalpha(static_cast<unsigned char>(line[at + 2])) != 0;
    if (parted && tagged && line.find(':', at + 3) != std::string_view::npos) return true;
  }
  return false;
}

const DumpAnnouncement* announcementOn(std::string_view line) {
  for (const DumpAnnouncement& row : kAnnouncements)
    if (line.find(row.line) != std::string_view::npos) return &row;
  return nullptr;
}

std::optional<std::string_view> dumpOn(std::string_view line) {
  const size_t at = line.find(kDump);
  if (at == std::string_view::npos) return std::nullopt;
  line.remove_prefix(at + kDump.size());
  line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
  return line;
}

bool isUnshownDump(std::string_view line) {
  return line.find("HexDump=buffer overflow") != std::string_view::npos;
}

DecodedRecord decodeDump(const DumpAnnouncement& announcement, handset::ByteView bytes) {
  if (announcement.fields.empty()) return decodeAnswer({}, bytes);
  return decodePlain(announcement.title, announcement.fields, bytes);
}

}  // namespace tools
