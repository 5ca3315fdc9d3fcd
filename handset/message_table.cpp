#include "handset/message_table.h"

#include <algorithm>
#include <array>
#include <tuple>

namespace handset {
namespace {

constexpr std::array kTable{
    MessageRow{Service::dms, 0x003B, "validate programming code", 6, 8, 0},
    MessageRow{Service::dms, 0x0052, "change programming code", 12, 8, 0},

    MessageRow{Service::nas, 0x0024, "serving system", 0, 1508, 0},
    MessageRow{Service::nas, 0x0044, "plmn name", 32, 3944, 0},
    MessageRow{Service::nas, 0x004F, "signal information", 0, 16, 0},
    MessageRow{Service::nas, 0x005A, "transmit and receive information", 4, 16, 0},
    MessageRow{Service::nas, 0x005B, "write a-key", 32, 8, 0},

    MessageRow{Service::vendor, 0x0008, "rde read", 532, 540, 0},
    MessageRow{Service::vendor, 0x0009, "rde write", 532, 8, 0},
    MessageRow{Service::vendor, 0x000A, "pfp", 4, 12, 0},
    MessageRow{Service::vendor, 0x000F, "utility", 264, 520, 0},
    MessageRow{Service::vendor, 0x0010, "engineering information", 4, 1012, 0},
    MessageRow{Service::vendor, 0x0011, "factory reset", 1, 1, 1},
    MessageRow{Service::vendor, 0x0013, "rf data save", 1, 1, 0},
    MessageRow{Service::vendor, 0x0016, "data plmn", 4, 568, 0},
    MessageRow{Service::vendor, 0x0100, "roaming list segment", 16388, 4, 0},
    MessageRow{Service::vendor, 0x0101, "band read", 4, 8, 0},
    MessageRow{Service::vendor, 0x0102, "band write", 8, 4, 0},
    MessageRow{Service::vendor, 0x0103, "profile switch", 4, 4, 0},
    MessageRow{Service::vendor, 0x0104, "tot order read", 0, 80, 0},
    MessageRow{Service::vendor, 0x0105, "tot order update", 68, 8, 1},
    MessageRow{Service::vendor, 0x0106, "active ehrpd apn list", 0, 1168, 0},
    MessageRow{Service::vendor, 0x0107, "lte service state", 0, 12, 1},
    MessageRow{Service::vendor, 0x0108, "bsr timer read", 0, 12, 1},
    MessageRow{Service::vendor, 0x0109, "bsr timer write", 4, 8, 1},
    MessageRow{Service::vendor, 0x010A, "lte channels", 0, 20, 1},
    MessageRow{Service::vendor, 0x0110, "antenna tuning", 32, 32, 0},
};

constexpr bool before(const MessageRow& a, const MessageRow& b) {
  return std::tie(a.service, a.id) < std::tie(b.service, b.id);
}

constexpr bool strictlyAscending() {
  for (size_t i = 1; i < kTable.size(); ++i) {
    if (!before(kTable[i - 1], kTable[i])) return false;
  }
  return true;
}
static_assert(strictlyAscending(), "findMessage searches by halves");

}  // namespace

std::span<const MessageRow> messageTable() {
  return kTable;
}

const MessageRow* findMessage(Service service, uint16_t id) {
  const MessageRow wanted{service, id, {}, 0, 0, 0};
  const auto* row = std::lower_bound(kTable.begin(), kTable.end(), wanted, before);
  return row != kTable.end() && row->service == service && row->id == id ? row : nullptr;
}

std::string_view serviceName(Service service) {
  switch (service) {
    case Service::dms:
      return "dms";
    case Service::nas:
      return "nas";
    case Service::vendor:
      return "vendor";
  }
  return "unknown";
}

}  // namespace handset
