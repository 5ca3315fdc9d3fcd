// Records that cross a pipe, taken apart field by field.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "handset/bytes.h"
#include "tools/record_table.h"

namespace tools {

struct DecodedField {
  size_t offset = 0;  // in the record, bytes
  size_t size = 0;    // bytes
  std::string name;
  std::string value;
};

struct DecodedRecord {
  std::string title;  // the record's name, with its id
  std::vector<DecodedField> fields;
};

/// Each takes a whole record, as one write gave it. What does not parse becomes a field that says so.
DecodedRecord decodeRequest(handset::ByteView record);
/// An answer is read by the request that it answers.
DecodedRecord decodeAnswer(handset::ByteView request, handset::ByteView record);
DecodedRecord decodeUnsolicited(handset::ByteView record);

/// The row of a request's record, or null when the process serves no such request.
const RequestRow* findRequest(handset::ByteView request);

}  // namespace tools
