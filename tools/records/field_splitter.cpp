#include "tools/records/field_splitter.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <utility>

#include "tools/records/field_value.h"

namespace tools {

void FieldSplitter::problem(size_t offset, std::string text) {
  if (!into_.problem || offset < into_.problem->offset) into_.problem = {offset, std::move(text)};
}

void FieldSplitter::take(std::string_view name, FieldKind kind, size_t size, std::string value) {
  takeUpTo(record_.size(), "the record", name, kind, size, std::move(value));
}

void FieldSplitter::takeUpTo(size_t end, std::string_view where, std::string_view name, FieldKind kind,
                             size_t size, std::string value) {
  const handset::ByteView bytes = record_.subspan(at_, std::min(size, end - at_));
  if (bytes.size() < size)
    problem(end, fmt::format("{} ends here, {} {}", where, bytes.empty() ? "before" : "inside", name));
  if (bytes.empty()) return;
  if (kind == FieldKind::zeros) {
    const auto other = std::find_if(bytes.begin(), bytes.end(), [](uint8_t byte) { return byte != 0; });
    if (other != bytes.end()) problem(at_ + static_cast<size_t>(other - bytes.begin()), "zeros belong here");
  }
  if (kind == FieldKind::status) into_.status = static_cast<uint32_t>(numberIn(bytes));
  if (value.empty() || bytes.size() < size) value = valueOf(kind, bytes);
  into_.fields.push_back({at_, bytes.size(), std::string(name), std::move(value), kind});
  at_ += bytes.size();
}

void FieldSplitter::takePayload(Fields fields, int64_t said, std::string_view length_name,
                                size_t zeros_behind) {
  const auto there = static_cast<int64_t>(left());
  const auto zeros = static_cast<int64_t>(zeros_behind);
  const auto all = [&] { return fmt::format("{} says {} bytes of payload", length_name, said); };
  if (said < 0) problem(at_, all());
  if (said > there)
    problem(record_.size(), fmt::format("the record ends here; {}, {} are there", all(), there));
  takeFields(fields, static_cast<size_t>(std::clamp<int64_t>(said, 0, there)));
  if (left() > zeros_behind) {
    if (said >= 0)
      problem(at_ + (zeros_behind),
              fmt::format("the record should end here; {}, {} are there", all(), there - zeros));
    take("more", FieldKind::bytes, left());
  } else if (zeros_behind > 0) {
    take("end", FieldKind::zeros, zeros_behind);
  }
}

void FieldSplitter::takeFields(Fields fields, size_t size) {
  if (fields.empty()) fields = kPlainPayload;
  size_t fixed = 0;
  for (const FieldSpec& field : fields)
    if (field.size != kRest) fixed += field.size;
  const size_t rest = size > fixed ? size - fixed : 0;
  const size_t end = at_ + size;
  std::optional<Count> count;
  for (const FieldSpec& field : fields) {
    const size_t offset = at_;
    if (offset == end && field.when_absent == WhenAbsent::leftOut) continue;
    takeUpTo(end, "the payload", field.name, field.kind, field.size == kRest ? rest : field.size, {});
    const handset::ByteView taken = record_.subspan(offset, at_ - offset);
    if (field.when_absent == WhenAbsent::lengthOfRest) {
      count = {field.name, numberIn(taken)};
    } else if (count && (field.kind == FieldKind::bytes || field.kind == FieldKind::words)) {
      checkCount(*count, field, offset, taken.size());
      count.reset();
    }
  }
  if (at_ == end) return;
  problem(at_, fmt::format("the payload should end here, behind {}", fields.back().name));
  takeUpTo(end, "the payload", "more", FieldKind::bytes, end - at_, {});
}

void FieldSplitter::checkCount(const Count& count, const FieldSpec& field, size_t offset, size_t size) {
  const bool words = field.kind == FieldKind::words;
  const size_t unit = words ? kWordSize : 1;
  const size_t there = size / unit;
  const std::string said = fmt::format("{} says {} {}", count.name, count.value, words ? "words" : "bytes");
  if (count.value > there)
    problem(offset + size, fmt::format("{} ends here; {}, {} are there", field.name, said, there));
  else if (field.size == kRest && count.value < there)
    problem(offset + static_cast<size_t>(count.value) * unit,
            fmt::format("{} should end here; {}, {} are there", field.name, said, there));
}

}  // namespace tools
