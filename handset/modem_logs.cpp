#include "handset/modem_logs.h"

#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <tuple>

namespace handset {
namespace {

namespace fs = std::filesystem;

constexpr const char* kLogDirectory = "/data/adam";
constexpr gid_t kLogGroup = 2002;
constexpr size_t kDataSize = 512;
constexpr uint32_t kLogPacketType = 1;
constexpr size_t kSequenceIdMax = 255;

LogEntry describe(const Folder& folder, const fs::path& path) {
  LogEntry entry{.name = path.filename()};
  fs::path file = path;
  std::error_code error;
  if (fs::is_symlink(path, error)) {
    // Links carry the handset's own path.
    entry.target = fs::read_symlink(path, error).string();
    file = folder.path(*entry.target);
  }
  struct stat status {};
  entry.dangling = stat(file.c_str(), &status) != 0;
  entry.size = static_cast<uint64_t>(status.st_size);
  entry.mode = status.st_mode & 07777;
  entry.group = status.st_gid;
  return entry;
}

}  // namespace

Bytes utilityIndication(uint32_t type, ByteView data, uint32_t len) {
  if (data.size() > kDataSize) throw std::out_of_range("utilityIndication");
  Bytes record = concat(le32(type), le32(len), data);
  record.resize(8 + kDataSize);
  return record;
}

Bytes utilityIndication(uint32_t type, ByteView data) {
  return utilityIndication(type, data, static_cast<uint32_t>(data.size()));
}

Bytes logPacketIndication(const LogPacket& packet) {
  const uint16_t size = packet.size.value_or(static_cast<uint16_t>(packet.payload.size()));
  const Bytes start{packet.package_id, packet.sequence_id, packet.last, 0};
  return utilityIndication(kLogPacketType, concat(start, le16(size), packet.payload), 0);
}

std::vector<Bytes> logPackage(uint8_t package_id, uint32_t header, ByteView content) {
  const Bytes whole = concat(le32(header), content);
  const size_t count = (whole.size() + kLogPacketPayloadMax - 1) / kLogPacketPayloadMax;
  if (count > kSequenceIdMax) throw std::out_of_range("logPackage");
  std::vector<Bytes> indications;
  for (size_t i = 0; i < count; ++i) {
    const ByteView rest = ByteView(whole).subspan(i * kLogPacketPayloadMax);
    const ByteView payload = rest.first(std::min(rest.size(), kLogPacketPayloadMax));
    indications.push_back(logPacketIndication({.package_id = package_id,
                                               .sequence_id = static_cast<uint8_t>(i + 1),
                                               .last = static_cast<uint8_t>(i + 1 == count ? 1 : 0),
                                               .payload = {payload.begin(), payload.end()}}));
  }
  return indications;
}

std::vector<LogEntry> logEntries(const Folder& folder) {
  std::vector<LogEntry> entries;
  std::error_code error;
  for (const auto& file : fs::directory_iterator(folder.path(kLogDirectory), error))
    entries.push_back(describe(folder, file.path()));
  std::sort(entries.begin(), entries.end(), [](const LogEntry& a, const LogEntry& b) {
    return std::tuple(!a.target, a.name) < std::tuple(!b.target, b.name);
  });
  return entries;
}

bool joinLogGroup() {
  const int count = getgroups(0, nullptr);
  std::vector<gid_t> groups(static_cast<size_t>(std::max(count, 0)));
  groups.resize(static_cast<size_t>(std::max(getgroups(count, groups.data()), 0)));
  if (getegid() == kLogGroup || std::find(groups.begin(), groups.end(), kLogGroup) != groups.end())
    return true;
  groups.push_back(kLogGroup);
  return setgroups(groups.size(), groups.data()) == 0;
}

}  // namespace handset
