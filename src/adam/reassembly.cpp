#include "adam/reassembly.h"

#include "core/ground/log.h"

namespace kesext {

namespace {

/// What a package holds, as its header word tells.
enum class PackageKind { log_behind_header, log_with_header, kpi, unknown };

PackageKind kindOf(uint32_t header) {
  switch (header) {
    case 0x01C0FFEE:
      return PackageKind::log_behind_header;
    case 0xFFFFFFFF:
      return PackageKind::log_with_header;
    case 0x02C0FFEE:
    case 0x03C0FFEE:
    case 0x06C0FFEE:
    case 0x07C0FFEE:
      return PackageKind::kpi;
    default:
      return PackageKind::unknown;
  }
}

}  // namespace

Reassembly::Verdict Reassembly::take(const adam_packet& packet) {
  if (state_ == State::idle) {
    state_ = State::collecting;
    package_id_ = packet.package_id;
    expected_sequence_id_ = packet.sequence_id;
  }
  if (packet.package_id != package_id_) {
    LOGE("adamIndHndlr: wrong pckage id [%d] received, cur [%d]", packet.package_id, package_id_);
    return drop();
  }
  return packet.sequence_id == kFirstSequenceId ? takeFirst(packet) : takeNext(packet);
}

Reassembly::Verdict Reassembly::takeFirst(const adam_packet& packet) {
  if (packet.size() == 0) {
    LOGE("adamIndHndlr: zero pckage size");
    return drop();
  }
  if (packet.size() <= kPackageHeaderSize) {
    LOGE("adamIndHndlr: bad header");
    return drop();
  }
  const uint32_t header = loadLe32(packet.payload);
  LOGE("adamIndHndlr: header 0x%x", header);
  const PackageKind kind = kindOf(header);
  if (kind == PackageKind::kpi) {
    reset();
    return {Action::forward, 0};
  }
  if (kind == PackageKind::unknown) LOGE("adamIndHndlr: unknown header 0x%x", header);
  // Counted on rather than set: a package that begins anew half-way does not go on.
  ++expected_sequence_id_;
  return store(packet, kind == PackageKind::log_behind_header ? kPackageHeaderSize : 0);
}

Reassembly::Verdict Reassembly::takeNext(const adam_packet& packet) {
  if (packet.sequence_id != expected_sequence_id_) {
    LOGE("adamIndHndlr: wrong seq id [%d] received, cur [%d]", packet.sequence_id, expected_sequence_id_);
    return drop();
  }
  if (packet.size() == 0) {
    LOGE("adamIndHndlr: zero pckage size");
    return drop();
  }
  expected_sequence_id_ = uint32_t{packet.sequence_id} + 1;
  return store(packet, 0);
}

Reassembly::Verdict Reassembly::store(const adam_packet& packet, size_t skip) {
  if (packet.size() > kPacketPayloadMax) {
    LOGE("adamIndHndlr: bad pckage size [%d]", packet.size());
    return drop();
  }
  return {Action::store, skip};
}

Reassembly::Verdict Reassembly::drop() {
  reset();
  return {Action::drop, 0};
}

}  // namespace kesext
