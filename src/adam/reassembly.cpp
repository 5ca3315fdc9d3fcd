#include "adam/reassembly.h"

#include "core/ground/log.h"
#include "core/ground/table.h"

namespace kesext {

namespace {

/// What a package holds, as its header word tells; any other word is the beginning of an unknown log.
enum class PackageKind { log_behind_header, log_with_header, kpi, unknown };

struct HeaderRow {
  uint32_t header;
  PackageKind kind;
};
constexpr HeaderRow kHeaders[] = {
    {0x01C0FFEE, PackageKind::log_behind_header},
    {0xFFFFFFFF, PackageKind::log_with_header},
    {0x02C0FFEE, PackageKind::kpi},
    {0x03C0FFEE, PackageKind::kpi},
    {0x06C0FFEE, PackageKind::kpi},
    {0x07C0FFEE, PackageKind::kpi},
};
static_assert(keysAreUnique(kHeaders, &HeaderRow::header));

PackageKind kindOf(uint32_t header) {
  const HeaderRow* row = findRow(kHeaders, &HeaderRow::header, header);
  return row != nullptr ? row->kind : PackageKind::unknown;
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
  // Counted up, not set to 2: once a package has begun anew half-way, its next packet is out of order.
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
