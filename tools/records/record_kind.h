// Which kind of record bytes are: requests, answers and unsolicited messages have headers of different
// shapes.
#pragma once

#include <optional>
#include <string_view>

#include "handset/bytes.h"
#include "tools/records/decode.h"

namespace tools {

enum class RecordKind { request, answer, unsolicited };

struct KindGuess {
  RecordKind kind = RecordKind::request;
  std::optional<RecordKind> other;  // which it can be read as just as well
};

/// What the header's ids, lengths and zeros tell.
KindGuess guessKind(handset::ByteView record);

/// Takes a record apart as one of this kind; an answer by the request that it `asked`, if that is known.
DecodedRecord decodeAs(RecordKind kind, handset::ByteView record, handset::ByteView asked = {});

std::string_view nameOf(RecordKind kind);

}  // namespace tools
