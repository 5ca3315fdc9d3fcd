// One record of every row of the table, with arguments that any field of its kind takes.
#pragma once

#include <string>
#include <vector>

#include "handset/bytes.h"
#include "support/records.h"
#include "tools/records/decode.h"
#include "tools/records/encode.h"

namespace kesext_test {

inline std::string SampleArgument(const tools::FieldSpec& field) {
  std::string digits(field.digits.most, '1');
  if (!digits.empty()) return digits;
  switch (field.kind) {
    case tools::FieldKind::bytes:
      return "0102";
    case tools::FieldKind::words:
      return "1,2";
    case tools::FieldKind::text:
    case tools::FieldKind::utf8:
    case tools::FieldKind::zeroEndedText:
      return "abc";
    case tools::FieldKind::code:
      return "000000";
    case tools::FieldKind::zeros:
      return "";
    default:
      return "5";
  }
}

/// Fields' bytes; of a payload of nothing but optional fields, the first is given.
inline handset::Bytes SamplePayload(tools::Fields fields) {
  std::vector<std::string> words;
  for (const tools::FieldSpec& field : fields)
    if (field.when_absent == tools::WhenAbsent::refused) words.push_back(SampleArgument(field));
  if (words.empty() && !fields.empty())
    words.push_back(std::string(fields[0].name) + "=" + SampleArgument(fields[0]));
  return tools::encodeFields("sample", fields, words);
}

inline handset::Bytes SampleRequest(const tools::RequestRow& row) {
  const handset::Bytes payload = SamplePayload(row.request);
  return row.family == tools::Family::cdma ? cdmaRequest(row.id, payload) : genericRequest(row.id, payload);
}

/// A successful answer with a header.
inline handset::Bytes SampleAnswer(const tools::RequestRow& row) {
  const handset::Bytes payload = SamplePayload(row.answer);
  return row.family == tools::Family::cdma ? cdmaResponse(row.id, 0, payload) : genericReply(row.id, payload);
}

inline handset::Bytes SampleUnsolicited(const tools::UnsolicitedRow& row) {
  const handset::Bytes payload = SamplePayload(row.payload);
  return row.family == tools::Family::cdma ? cdmaUnsolicited(row.id, payload)
                                           : genericUnsolicited(0, row.id, payload);
}

struct SampleRecord {
  tools::RecordKind kind;
  handset::Bytes bytes;
};

inline std::vector<SampleRecord> SampleRecords() {
  std::vector<SampleRecord> records;
  for (const tools::RequestRow& row : tools::requestTable()) {
    records.push_back({tools::RecordKind::request, SampleRequest(row)});
    records.push_back({tools::RecordKind::answer, SampleAnswer(row)});
  }
  for (const tools::UnsolicitedRow& row : tools::unsolicitedTable())
    records.push_back({tools::RecordKind::unsolicited, SampleUnsolicited(row)});
  return records;
}

}  // namespace kesext_test
