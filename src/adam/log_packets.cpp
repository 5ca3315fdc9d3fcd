#include "adam/log_packets.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "adam/adam_state.h"
#include "adam/log_names.h"
#include "adam/log_update.h"
#include "core/ground/device_file.h"
#include "core/ground/hook_ids.h"
#include "core/ground/log.h"
#include "core/ground/parent_pipes.h"

namespace kesext {

namespace {

constexpr mode_t kDirectoryMode = 0750;
constexpr mode_t kPackageMode = 0740;

/// Makes the log directory, once. False, after a log line, when it cannot be made.
bool makeLogDirectory() {
  if (adam_state.directory_ready) return true;
  if (mkdir(DevicePath(kLogDirectory).text(), kDirectoryMode) != 0 && errno != EEXIST) {
    LOGE("adamIndHndlr: create parent dir %s failed, rc %d", kLogDirectory, errno);
    return false;
  }
  adam_state.directory_ready = true;
  return true;
}

/// Adds the packet to its package's file; the last one completes the package. What the file system refuses
/// is logged and leaves the package where it is.
void storePacket(const adam_packet& packet, size_t skip) {
  if (!makeLogDirectory()) return;
  const LogPath path = packagePath(packet.package_id);
  const int truncate_or_append = packet.sequence_id == kFirstSequenceId ? O_TRUNC : O_APPEND;
  const DeviceFile package(path.data(), O_RDWR | O_CREAT | truncate_or_append, kPackageMode);
  if (!package) {
    LOGE("adamIndHndlr: Unable to open %s, errno %d", path.data(), errno);
    return;
  }
  const size_t size = packet.size() - skip;
  errno = 0;  // a short write does not set it
  if (write(package.descriptor(), packet.payload + skip, size) != static_cast<ssize_t>(size)) {
    LOGE("adamIndHndlr: Write to file %s failed, errno %d", path.data(), errno);
    return;
  }
  if (packet.last != kLastPacket) return;
  LOGE("adamIndHndlr: received the last pkg of %d", packet.package_id);
  adam_state.reassembly.reset();
  adam_update_current_log(path.data());
}

}  // namespace

void adamIndHndlr(const utils_ind_msg_v01& record) {
  adam_packet packet;
  std::memcpy(&packet, record.data, sizeof packet);
  const Reassembly::Verdict verdict = adam_state.reassembly.take(packet);
  switch (verdict.action) {
    case Reassembly::Action::drop:
      return;
    case Reassembly::Action::forward:
      adam_handle_kpi_data(packet);
      return;
    case Reassembly::Action::store:
      storePacket(packet, verdict.skip);
      return;
  }
}

void adam_handle_kpi_data(const adam_packet& packet) {
  // The parent takes the low byte for the length.
  const auto length = static_cast<uint8_t>(packet.size());
  if (sendGenericUnsol(UNSOL_KPI, packet.payload, length))
    LOGE("adam_handle_kpi_data: send data out");
  else
    LOGE("adam_handle_kpi_data: out of memory!");
}

}  // namespace kesext
