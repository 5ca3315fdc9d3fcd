#include "nam/nam_items.h"

#include "core/ground/log.h"
#include "core/ground/table.h"
#include "nv/rde_messages.h"
#include "nv/rde_operations.h"

namespace kesext {

namespace {

/// Every value lies in its record, and every record fits a message. What a write does not set is read first,
/// else it would go out as the item before left it; the MDN's record is set whole.
constexpr bool itemsAreSound() {
  for (const NamItem& item : kNamItems) {
    uint32_t set = item.nam_byte ? 1 : 0;
    for (const NamField& field : item.fields) {
      if (field.offset + field.width > item.length) return false;
      if (item.nam_byte && field.width > 0 && field.offset == 0) return false;
      set += field.width;
    }
    if (!fitsRdeData(item.length)) return false;
    if (!item.read_first && set != item.length && item.rde_index != kMdnItem) return false;
  }
  return true;
}
static_assert(itemsAreSound());
static_assert(keysAreUnique(kNamItems, &NamItem::rde_index));

}  // namespace

uint32_t kesext_hook_sprint_get_nam_item(int32_t rde_index, NamItemBuffer* buffer) {
  *buffer = {};
  const uint32_t status =
      kes_qmi_sprint_rde_read(rde_index, 0, 0, buffer->bytes, sizeof buffer->bytes, nullptr);
  LOGE("kesext_hook_sprint_get_nam_item: READ NV VALUE %d ", status);
  return status;
}

uint32_t kesext_hook_sprint_set_nam_item(int32_t rde_index, uint32_t length, const NamItemBuffer& buffer) {
  const uint32_t status = kes_qmi_sprint_rde_write(rde_index, 0, 0, length, buffer.bytes);
  LOGE("kesext_hook_sprint_set_nam_item: WRITE NV VALUE %d ", status);
  return status;
}

void putNamValues(const NamItem& item, const NamValues& values, NamItemBuffer* buffer) {
  if (item.nam_byte) buffer->bytes[0] = kNam;
  for (const NamField& field : item.fields)
    for (size_t i = 0; i < field.width; ++i)
      buffer->bytes[field.offset + i] = static_cast<uint8_t>(values.*field.value >> (8 * i));
}

void takeNamValues(const NamItem& item, const NamItemBuffer& buffer, NamValues* values) {
  for (const NamField& field : item.fields) {
    if (field.width == 0) continue;
    uint32_t value = 0;
    for (size_t i = 0; i < field.width; ++i)
      value |= uint32_t{buffer.bytes[field.offset + i]} << (8 * i);
    values->*field.value = value;
  }
}

}  // namespace kesext
