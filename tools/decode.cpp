#include "tools/decode.h"

#include <fmt/format.h>

#include <algorithm>

#include "core/ground/hook_message.h"
#include "tools/record_table.h"

namespace tools {

namespace {

using handset::ByteView;
using handset::getBe;
using handset::getLe;

constexpr size_t kCdmaPayload = kesext::kOemHookPayloadOffset;
constexpr size_t kGenericPayload = kesext::kGenericHookHeaderSize;

bool isZero(ByteView bytes) {
  return std::all_of(bytes.begin(), bytes.end(), [](uint8_t byte) { return byte == 0; });
}

uint64_t numberIn(ByteView bytes) {
  uint64_t value = 0;
  for (size_t i = std::min<size_t>(bytes.size(), 8); i-- > 0;)
    value = value << 8 | bytes[i];
  return value;
}

int64_t signedIn(ByteView bytes) {
  const auto unused_bits = static_cast<unsigned>(64 - 8 * std::min<size_t>(bytes.size(), 8));
  return static_cast<int64_t>(numberIn(bytes) << unused_bits) >> unused_bits;
}

std::string quoted(ByteView bytes) {
  std::string text = "\"";
  for (const uint8_t byte : bytes) {
    if (byte == 0) break;
    if (byte >= 0x20 && byte < 0x7F)
      text += static_cast<char>(byte);
    else
      text += fmt::format("\\x{:02X}", byte);
  }
  return text + '"';
}

/// The words in order, without the zeros at the end.
std::string wordsIn(ByteView bytes) {
  std::vector<uint32_t> all(bytes.size() / 4);
  for (size_t i = 0; i < all.size(); ++i)
    all[i] = getLe<uint32_t>(bytes, 4 * i);
  const size_t count = all.size();
  while (!all.empty() && all.back() == 0)
    all.pop_back();
  const std::string_view rest = all.size() == count ? "" : all.empty() ? "zeros" : ", zeros";
  return fmt::format("{}{}", fmt::join(all, ", "), rest);
}

std::string valueOf(FieldKind kind, ByteView bytes) {
  const uint64_t number = numberIn(bytes);
  switch (kind) {
    case FieldKind::number:
      return fmt::format("{}", number);
    case FieldKind::signedNumber:
      return fmt::format("{}", signedIn(bytes));
    case FieldKind::hexNumber:
      return fmt::format("0x{:X}", number);
    case FieldKind::element:
      return fmt::format("{} (0x{:X})", number, number);
    case FieldKind::status:
      return fmt::format("{} ({})", number, statusName(static_cast<uint32_t>(number)));
    case FieldKind::bytes:
      return fmt::format("{} bytes", bytes.size());
    case FieldKind::words:
      return wordsIn(bytes);
    case FieldKind::text:
    case FieldKind::zeroEndedText:
      return quoted(bytes);
    case FieldKind::utf8:
      return '"' + std::string(bytes.begin(), bytes.end()) + '"';
    case FieldKind::code:
      return isZero(bytes) ? "none" : quoted(bytes);
    case FieldKind::zeros:
      return isZero(bytes) ? "zero" : "NOT ZERO";
  }
  return {};
}

/// Takes fields off the front of a record.
class Splitter {
 public:
  Splitter(ByteView record, DecodedRecord& into) : record_(record), into_(into) {}

  void take(std::string_view name, FieldKind kind, size_t size) {
    const ByteView bytes = record_.subspan(at_, std::min(size, record_.size() - at_));
    if (bytes.empty()) return;
    std::string value = valueOf(kind, bytes);
    if (bytes.size() < size) value += fmt::format(" (cut: {} of {} bytes)", bytes.size(), size);
    add(name, bytes.size(), std::move(value));
  }
  void add(std::string_view name, size_t size, std::string value) {
    into_.fields.push_back({at_, size, std::string(name), std::move(value)});
    at_ += size;
  }
  /// A payload of `size` bytes, as its fields say; without fields, as bytes.
  void takePayload(Fields fields, size_t size) {
    if (fields.empty()) fields = kPlainPayload;
    size_t fixed = 0;
    for (const FieldSpec& field : fields)
      if (field.size != kRest) fixed += field.size;
    const size_t rest = size > fixed ? size - fixed : 0;
    const size_t end = at_ + size;
    for (const FieldSpec& field : fields) {
      const size_t wanted = field.size == kRest ? rest : field.size;
      take(field.name, field.kind, std::min(wanted, end - std::min(at_, end)));
    }
    if (at_ < end) take("more", FieldKind::bytes, end - at_);
  }
  void takeRemainder(std::string_view name, FieldKind kind) { take(name, kind, left()); }
  [[nodiscard]] size_t left() const { return record_.size() - at_; }

 private:
  ByteView record_;
  DecodedRecord& into_;
  size_t at_ = 0;
};

DecodedRecord unusable(ByteView record) {
  DecodedRecord decoded{.title = "unusable", .fields = {}};
  Splitter(record, decoded).takeRemainder("unparsed", FieldKind::bytes);
  return decoded;
}

bool isCdma(ByteView record) {
  return record.size() >= 4 && getBe<uint32_t>(record, 0) % (1U << 24) == 2;
}

std::string titleOf(std::string_view what, const std::string& id, std::string_view name) {
  return name.empty() ? fmt::format("{} {}, which nothing serves", what, id)
                      : fmt::format("{} {}: {}", what, id, name);
}

std::string cdmaId(uint32_t id) {
  return fmt::format("0x{:08X}", id);
}
std::string genericId(uint32_t id) {
  return fmt::format("0x{:06X}", id);
}

/// A CDMA header and what belongs to it, from the splitter's place on. `fields` describe the payload.
void takeCdma(Splitter& split, ByteView from_header, Fields fields, bool answer) {
  split.add("msgId", 4, cdmaId(getLe<uint32_t>(from_header, 0)));
  split.take("msgLen", FieldKind::signedNumber, 4);
  split.take("status", answer ? FieldKind::status : FieldKind::number, 4);
  split.take("spc", FieldKind::code, 6);
  const size_t msg_len = from_header.size() >= 8 ? getLe<uint32_t>(from_header, 4) : 0;
  split.takePayload(fields, std::min(msg_len, split.left()));
  split.takeRemainder(answer ? "end" : "beyond msgLen", answer ? FieldKind::zeros : FieldKind::bytes);
}

}  // namespace

const RequestRow* findRequest(ByteView request) {
  if (request.size() < kGenericPayload) return nullptr;
  if (isCdma(request)) return findRequest(Family::cdma, getLe<uint32_t>(request, 0));
  return findRequest(Family::generic, getBe<uint32_t>(request, 0) & 0xFFFFFF);
}

DecodedRecord decodeRequest(ByteView record) {
  if (record.size() < kGenericPayload) return unusable(record);
  DecodedRecord decoded;
  Splitter split(record, decoded);
  if (isCdma(record)) {
    const auto id = getLe<uint32_t>(record, 0);
    const RequestRow* row = findRequest(Family::cdma, id);
    decoded.title = titleOf("CDMA request", cdmaId(id), row != nullptr ? row->name : "");
    takeCdma(split, record, row != nullptr ? row->request : Fields{}, false);
    return decoded;
  }
  if (record[0] > 2) return unusable(record);
  const uint32_t id = getBe<uint32_t>(record, 0) & 0xFFFFFF;
  const RequestRow* row = findRequest(Family::generic, id);
  decoded.title = titleOf("generic request", genericId(id), row != nullptr ? row->name : "");
  split.take("msgType", FieldKind::number, 1);
  split.add("msgId", 3, genericId(id));
  split.add("msgLen", 4, fmt::format("{}", static_cast<int32_t>(getBe<uint32_t>(record, 4))));
  split.takePayload(row != nullptr ? row->request : Fields{}, split.left());
  return decoded;
}

DecodedRecord decodeAnswer(ByteView request, ByteView record) {
  if (record.size() < kGenericPayload) return unusable(record);
  DecodedRecord decoded;
  Splitter split(record, decoded);
  if (const RequestRow* asked = findRequest(request); asked != nullptr && asked->bare_answer) {
    decoded.title = "answer without a header";
    split.takePayload(asked->answer, split.left());
    return decoded;
  }
  if (isCdma(record) && record.size() >= kCdmaPayload) {
    const auto id = getLe<uint32_t>(record, 0);
    const RequestRow* row = findRequest(Family::cdma, id);
    const bool succeeded = getLe<uint32_t>(record, 8) == kesext::HOOK_STATUS_SUCCESS;
    decoded.title = fmt::format("CDMA answer 0x{:08X}", id);
    takeCdma(split, record, row != nullptr && succeeded ? row->answer : Fields{}, true);
    return decoded;
  }
  const uint32_t id = getBe<uint32_t>(record, 0) & 0xFFFFFF;
  const auto length = static_cast<int32_t>(getLe<uint32_t>(record, 4));
  const RequestRow* row = findRequest(Family::generic, id);
  decoded.title = fmt::format("generic {} 0x{:06X}", length < 0 ? "error reply" : "reply", id);
  split.take("msgType", FieldKind::number, 1);
  split.add("msgId", 3, genericId(id));
  split.take("length", FieldKind::signedNumber, 4);
  // A failed request is answered with a status alone, whatever its answer is made of.
  const bool failed = length == 1 && record.size() > kGenericPayload &&
                      record[kGenericPayload] == kesext::HOOK_STATUS_FAILURE;
  static constexpr FieldSpec kFailure[] = {{"status", 1, FieldKind::status}};
  const Fields fields = row != nullptr ? row->answer : Fields{};
  split.takePayload(failed ? Fields(kFailure) : fields, split.left());
  return decoded;
}

DecodedRecord decodeUnsolicited(ByteView record) {
  constexpr size_t kPrefix = 8;
  if (record.size() < kPrefix + kesext::kOemHookHeaderCount) return unusable(record);
  DecodedRecord decoded;
  Splitter split(record, decoded);
  const bool cdma = getLe<uint32_t>(record, 0) == 0;
  split.add("hookType", 4, cdma ? "0 (CDMA)" : fmt::format("{} (generic)", getLe<uint32_t>(record, 0)));
  split.take("headerSize", FieldKind::number, 4);
  if (cdma) {
    const auto id = getLe<uint32_t>(record, kPrefix);
    const UnsolicitedRow* row = findUnsolicited(Family::cdma, id);
    decoded.title = titleOf("unsolicited", cdmaId(id), row != nullptr ? row->name : "");
    takeCdma(split, record.subspan(kPrefix), row != nullptr ? row->payload : Fields{}, true);
    return decoded;
  }
  const uint32_t id = getLe<uint32_t>(record, kPrefix) >> 8;
  const UnsolicitedRow* row = findUnsolicited(Family::generic, id);
  decoded.title = titleOf("unsolicited", genericId(id), row != nullptr ? row->name : "");
  split.take("msgType", FieldKind::number, 1);
  split.add("msgId", 3, genericId(id));
  split.take("length", FieldKind::number, 4);
  split.takePayload(row != nullptr ? row->payload : Fields{},
                    std::min<size_t>(getLe<uint32_t>(record, 12), split.left()));
  split.takeRemainder("end", FieldKind::zeros);
  return decoded;
}

}  // namespace tools
