#include "tools/records/field_value.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <vector>

#include "tools/text/words.h"

namespace tools {

namespace {

using handset::ByteView;
using handset::getLe;

int64_t signedIn(ByteView bytes) {
  const auto unused_bits = static_cast<unsigned>(64 - 8 * std::min<size_t>(bytes.size(), 8));
  return static_cast<int64_t>(numberIn(bytes) << unused_bits) >> unused_bits;
}

void appendEscaped(std::string& text, uint8_t byte) {
  if (byte == '"' || byte == '\\')
    text += {'\\', static_cast<char>(byte)};
  else if (byte >= 0x20 && byte < 0x7F)
    text += static_cast<char>(byte);
  else
    text += fmt::format("\\x{:02X}", byte);
}

/// How many bytes the character of two bytes or more at the front takes; 0 when there is no such character,
/// or none that can be shown.
size_t wideCharacter(ByteView bytes) {
  struct Form {
    uint8_t mask, lead;
    uint32_t least;
  };
  constexpr Form kForms[] = {{0xE0, 0xC0, 0xA0}, {0xF0, 0xE0, 0x800}, {0xF8, 0xF0, 0x10000}};
  for (size_t size = 2; size <= std::min<size_t>(4, bytes.size()); ++size) {
    const Form& form = kForms[size - 2];
    if ((bytes[0] & form.mask) != form.lead) continue;
    uint32_t character = bytes[0] & static_cast<uint8_t>(~form.mask);
    for (const uint8_t byte : bytes.subspan(1, size - 1)) {
      if ((byte & 0xC0) != 0x80) return 0;
      character = character << 6 | (byte & 0x3F);
    }
    const bool surrogate = character >= 0xD800 && character < 0xE000;
    return character < form.least || character > 0x10FFFF || surrogate ? 0 : size;
  }
  return 0;
}

std::string quotedUtf8(ByteView bytes) {
  std::string text = "\"";
  while (!bytes.empty()) {
    const size_t wide = wideCharacter(bytes);
    if (wide == 0) appendEscaped(text, bytes[0]);
    text.append(bytes.begin(), bytes.begin() + static_cast<ptrdiff_t>(wide));
    bytes = bytes.subspan(std::max<size_t>(1, wide));
  }
  return text + '"';
}

/// A text up to its zero. What stands behind that is not the text's, but not to be overlooked either.
std::string zeroFilled(ByteView bytes) {
  const auto end = std::find(bytes.begin(), bytes.end(), 0);
  const auto length = static_cast<size_t>(end - bytes.begin());
  const bool more = !handset::isZero(bytes.subspan(length));
  return quoted(bytes.first(length)) + (more ? ", and other bytes behind its zero" : "");
}

std::string zeroEnded(ByteView bytes) {
  const bool ended = !bytes.empty() && bytes.back() == 0;
  return zeroFilled(bytes) + (ended ? "" : " without a zero at its end");
}

/// The words in order, without the zeros at the end.
std::string wordsIn(ByteView bytes) {
  std::vector<std::string> parts;
  const size_t count = bytes.size() / kWordSize;
  size_t shown = count;
  while (shown > 0 && getLe<uint32_t>(bytes, kWordSize * (shown - 1)) == 0)
    --shown;
  for (size_t i = 0; i < shown; ++i)
    parts.push_back(fmt::format("{}", getLe<uint32_t>(bytes, kWordSize * i)));
  if (shown < count) parts.emplace_back("zeros");
  if (bytes.size() % kWordSize != 0) parts.push_back(fmt::format("{} bytes", bytes.size() % kWordSize));
  return fmt::format("{}", fmt::join(parts, ", "));
}

}  // namespace

ByteView withoutZerosBehind(ByteView bytes) {
  const auto last = std::find_if(bytes.rbegin(), bytes.rend(), [](uint8_t byte) { return byte != 0; });
  return bytes.first(static_cast<size_t>(bytes.rend() - last));
}

std::string typedValue(FieldKind kind, ByteView bytes) {
  const ByteView used = withoutZerosBehind(bytes);
  if (kind == FieldKind::signedNumber || kind == FieldKind::hexNumber) return valueOf(kind, bytes);
  if (isNumber(kind)) return fmt::format("{}", numberIn(bytes));
  if (kind == FieldKind::bytes || kind == FieldKind::zeros) return writeBytes(used);
  if (kind == FieldKind::code && used.empty()) return "none";
  if (kind != FieldKind::words) return {used.begin(), used.end()};
  std::vector<uint32_t> numbers;
  for (size_t at = 0; at < used.size(); at += kWordSize)
    numbers.push_back(getLe<uint32_t>(bytes, at));
  return fmt::format("{}", fmt::join(numbers, ","));
}

uint64_t numberIn(ByteView bytes) {
  uint64_t value = 0;
  for (size_t i = std::min<size_t>(bytes.size(), 8); i-- > 0;)
    value = value << 8 | bytes[i];
  return value;
}

std::string quoted(ByteView bytes) {
  std::string text = "\"";
  for (const uint8_t byte : bytes)
    appendEscaped(text, byte);
  return text + '"';
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
      return zeroFilled(bytes);
    case FieldKind::zeroEndedText:
      return zeroEnded(bytes);
    case FieldKind::utf8:
      return quotedUtf8(bytes);
    case FieldKind::code:
      return handset::isZero(bytes) ? "none" : quoted(bytes);
    case FieldKind::zeros:
      return handset::isZero(bytes) ? "zero" : "not zero";
  }
  return {};
}

std::string difference(ByteView received, ByteView expected) {
  static constexpr size_t kShown = 16;
  const auto [at, _] = std::mismatch(received.begin(), received.end(), expected.begin(), expected.end());
  const auto offset = static_cast<size_t>(at - received.begin());
  const auto some = [offset](ByteView bytes) {
    const ByteView rest = bytes.subspan(std::min(offset, bytes.size()));
    const std::string text = handset::toHex(rest.first(std::min(kShown, rest.size())));
    return text.empty() ? "the end" : text + (rest.size() > kShown ? " ..." : "");
  };
  return fmt::format("differs at byte {} of {}: expected {}, not {} ({} bytes expected)", offset,
                     received.size(), some(expected), some(received), expected.size());
}

std::string difference(const FieldSpec& field, ByteView received, ByteView expected) {
  if (field.kind == FieldKind::bytes) return fmt::format("{} {}", field.name, difference(received, expected));
  return fmt::format("{}: expected {}, not {}", field.name, valueOf(field.kind, expected),
                     valueOf(field.kind, received));
}

}  // namespace tools
