// Bytes of a field in words.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "handset/bytes.h"
#include "tools/records/record_table.h"

namespace tools {

/// What the bytes of a field of this kind say; whatever is no printable text in a text is escaped.
std::string valueOf(FieldKind kind, handset::ByteView bytes);

/// What a person would type for these bytes, without the zeros at their end; encodeField reads it, if it can
/// be typed at all.
std::string typedValue(FieldKind kind, handset::ByteView bytes);

/// The bytes without the zeros at their end.
handset::ByteView withoutZerosBehind(handset::ByteView bytes);

/// The number that up to eight bytes are, the least significant first.
uint64_t numberIn(handset::ByteView bytes);

/// The bytes between quotes: printable ASCII as it stands, everything else as \xNN.
std::string quoted(handset::ByteView bytes);

/// The first bytes that differ, beside what they should be.
std::string difference(handset::ByteView received, handset::ByteView expected);

/// The same of a field, in words where it has any: "timer: expected 31, not 30".
std::string difference(const FieldSpec& field, handset::ByteView received, handset::ByteView expected);

}  // namespace tools
