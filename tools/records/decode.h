// Records that cross a pipe, taken apart field by field.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "handset/bytes.h"
#include "tools/records/record_table.h"

namespace tools {

struct DecodedField {
  size_t offset = 0;  // in the record, bytes
  size_t size = 0;    // bytes
  std::string name;
  std::string value;
  FieldKind kind = FieldKind::bytes;
};

/// Where a record stops making sense, and why.
struct RecordProblem {
  size_t offset = 0;  // in the record, bytes
  std::string text;
};

struct DecodedRecord {
  std::string title;                 // the record's name, with its id
  std::string name;                  // what it does; empty where the id is not known
  std::vector<DecodedField> fields;  // together the whole record
  std::optional<uint32_t> status;    // of an answer, unless it has no header
  std::optional<RecordProblem> problem;
};

/// Each takes a whole record, as one write gave it, whatever its bytes are.
DecodedRecord decodeRequest(handset::ByteView record);
/// An answer is read by the request that it answers; without one, by its own id.
/// Its status is the header's or, of a generic one, the payload's. A generic answer of length −1 says that
/// nothing serves the request, one without a status that it was served.
DecodedRecord decodeAnswer(handset::ByteView request, handset::ByteView record);
DecodedRecord decodeUnsolicited(handset::ByteView record);

/// Requests, answers and unsolicited messages have headers of different shapes.
enum class RecordKind { request, answer, unsolicited };

std::string_view nameOf(RecordKind kind);

struct KindGuess {
  RecordKind kind = RecordKind::request;
  std::optional<RecordKind> other;  // which it can be read as just as well
};

/// The kind that a record parses as, or does for longest; of those, one whose id is known.
KindGuess guessKind(handset::ByteView record);

/// Takes a record apart as one of this kind; an answer by the request that it `asked`, if that is known.
DecodedRecord decodeAs(RecordKind kind, handset::ByteView record, handset::ByteView asked = {});

/// Bytes that are these fields and have no header.
DecodedRecord decodePlain(std::string_view title, Fields fields, handset::ByteView bytes);

/// Whether this begins as CDMA requests and their answers do.
bool isCdma(handset::ByteView record);
/// Whether this is the answer to a generic request that nothing serves.
bool isErrorReply(handset::ByteView record);

/// The row of a request's record, or null when the process serves no such request.
const RequestRow* findRequest(handset::ByteView request);

}  // namespace tools
