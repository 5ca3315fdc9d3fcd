#include "tools/records/decode.h"

#include <fmt/format.h>

#include <algorithm>

#include "core/ground/hook_message.h"
#include "tools/records/field_splitter.h"
#include "tools/records/field_value.h"

namespace tools {

namespace {

using handset::ByteView;
using handset::getBe;
using handset::getLe;

constexpr size_t kGenericHeader = kesext::kGenericHookHeaderSize;
constexpr uint8_t kGenericTypeMax = 2;

/// What stands behind a payload.
constexpr size_t kZerosBehindCdma = kesext::kOemHookHeaderCount - kesext::kOemHookPayloadOffset;
constexpr size_t kUnsolicitedPrefix = 8;
constexpr size_t kZerosBehindGeneric = kesext::kOemHookHeaderCount - kesext::kGenericHookHeaderSize;

/// The header's last two fields, and the zeros behind the payload.
struct CdmaShape {
  FieldKind status, spc;
  size_t zeros_behind;
};
constexpr CdmaShape kCdmaRequest{FieldKind::number, FieldKind::code, 0};
constexpr CdmaShape kCdmaAnswer{FieldKind::status, FieldKind::code, kZerosBehindCdma};
constexpr CdmaShape kCdmaUnsolicited{FieldKind::zeros, FieldKind::zeros, kZerosBehindCdma};

constexpr FieldSpec kFailure[] = {{"status", 1, FieldKind::status}};

std::string cdmaId(uint32_t id) {
  return fmt::format("0x{:08X}", id);
}
std::string genericId(uint32_t id) {
  return fmt::format("0x{:06X}", id);
}

template <typename Row>
void entitle(DecodedRecord& decoded, std::string_view what, const std::string& id, const Row* row) {
  if (row != nullptr) decoded.name = row->name;
  decoded.title = row == nullptr ? fmt::format("{} {}, an unknown id", what, id)
                                 : fmt::format("{} {}: {}", what, id, row->name);
}

DecodedRecord tooShort(ByteView record, size_t least) {
  DecodedRecord decoded{.title = "unusable"};
  FieldSplitter split(record, decoded);
  split.problem(record.size(), fmt::format("the record ends here; none has less than {} bytes", least));
  split.take("unparsed", FieldKind::bytes, record.size());
  return decoded;
}

/// A CDMA header, of which at least msgId and msgLen are there, and what belongs to it. `fields` describe the
/// payload.
void takeCdma(FieldSplitter& split, ByteView from_header, Fields fields, const CdmaShape& shape) {
  split.take("msgId", FieldKind::hexNumber, 4, cdmaId(getLe<uint32_t>(from_header, 0)));
  split.take("msgLen", FieldKind::signedNumber, 4);
  split.take("status", shape.status, 4);
  split.take("spc", shape.spc, 6);
  if (from_header.size() < kesext::kOemHookPayloadOffset) return;
  split.takePayload(fields, static_cast<int32_t>(getLe<uint32_t>(from_header, 4)), "msgLen",
                    shape.zeros_behind);
}

/// What a CDMA answer's payload is made of: the request's answer, which a failed one may have as well.
Fields cdmaAnswerFields(const RequestRow* row, ByteView record) {
  if (row == nullptr || record.size() < kesext::kOemHookPayloadOffset) return {};
  if (getLe<uint32_t>(record, 8) == kesext::HOOK_STATUS_SUCCESS) return row->answer;
  size_t size = 0;
  for (const FieldSpec& field : row->answer) {
    if (field.size == kRest) return {};
    size += field.size;
  }
  return getLe<uint32_t>(record, 4) == size ? row->answer : Fields{};
}

DecodedRecord decodeCdmaAnswer(ByteView record) {
  const auto id = getLe<uint32_t>(record, 0);
  const RequestRow* row = findRequest(Family::cdma, id);
  DecodedRecord decoded;
  entitle(decoded, "CDMA answer", cdmaId(id), row);
  FieldSplitter split(record, decoded);
  takeCdma(split, record, cdmaAnswerFields(row, record), kCdmaAnswer);
  return decoded;
}

DecodedRecord decodeGenericAnswer(ByteView record) {
  const uint32_t id = getBe<uint32_t>(record, 0) & 0xFFFFFF;
  const bool refused = isErrorReply(record);
  const RequestRow* row = findRequest(Family::generic, id);
  DecodedRecord decoded;
  entitle(decoded, "generic answer", genericId(id), row);
  if (refused) decoded.title = fmt::format("error reply {}", genericId(id));
  FieldSplitter split(record, decoded);
  split.take("msgType", FieldKind::number, 1);
  split.take("msgId", FieldKind::hexNumber, 3, genericId(id));
  split.take("length", FieldKind::signedNumber, 4);
  if (refused) return decoded;
  if (record[0] > kGenericTypeMax) split.problem(0, "no record that parses begins with this byte");
  const auto length = static_cast<int32_t>(getLe<uint32_t>(record, 4));
  // A failed request is answered with a status alone, whatever its answer is made of.
  const bool failed = row != nullptr && length == 1 && record.size() == kGenericHeader + 1 &&
                      record[kGenericHeader] == kesext::HOOK_STATUS_FAILURE;
  split.takePayload(failed ? Fields(kFailure) : row != nullptr ? row->answer : Fields{}, length, "length", 0);
  return decoded;
}

/// Every answer with a header begins as its request does.
bool beginsAs(ByteView request, ByteView answer) {
  for (size_t i = 0; i < 4; ++i)
    if (answer[i] != (i < request.size() ? request[i] : 0)) return false;
  return true;
}

}  // namespace

bool isCdma(ByteView record) {
  return record.size() >= 4 && getBe<uint32_t>(record, 0) % (1U << 24) == 2;
}

bool isErrorReply(ByteView record) {
  return record.size() == kGenericHeader && getLe<uint32_t>(record, 4) == UINT32_MAX;
}

const RequestRow* findRequest(ByteView request) {
  if (request.size() < kGenericHeader) return nullptr;
  if (isCdma(request)) return findRequest(Family::cdma, getLe<uint32_t>(request, 0));
  return findRequest(Family::generic, getBe<uint32_t>(request, 0) & 0xFFFFFF);
}

DecodedRecord decodeRequest(ByteView record) {
  if (record.size() < kGenericHeader) return tooShort(record, kGenericHeader);
  const RequestRow* row = findRequest(record);
  const Fields fields = row != nullptr ? row->request : Fields{};
  DecodedRecord decoded;
  FieldSplitter split(record, decoded);
  if (isCdma(record)) {
    entitle(decoded, "CDMA request", cdmaId(getLe<uint32_t>(record, 0)), row);
    takeCdma(split, record, fields, kCdmaRequest);
    return decoded;
  }
  const uint32_t id = getBe<uint32_t>(record, 0) & 0xFFFFFF;
  const auto length = static_cast<int32_t>(getBe<uint32_t>(record, 4));
  entitle(decoded, "generic request", genericId(id), row);
  if (record[0] > kGenericTypeMax) split.problem(0, "no record that parses begins with this byte");
  split.take("msgType", FieldKind::number, 1);
  split.take("msgId", FieldKind::hexNumber, 3, genericId(id));
  split.take("msgLen", FieldKind::signedNumber, 4, fmt::format("{}", length));
  split.takePayload(fields, length, "msgLen", 0);
  return decoded;
}

DecodedRecord decodeAnswer(ByteView request, ByteView record) {
  if (const RequestRow* asked = findRequest(request);
      asked != nullptr && asked->bare_answer && !record.empty())
    return decodePlain("answer without a header", asked->answer, record);
  if (record.size() < kGenericHeader) return tooShort(record, kGenericHeader);
  DecodedRecord decoded =
      isCdma(record) && !isErrorReply(record) ? decodeCdmaAnswer(record) : decodeGenericAnswer(record);
  if (!request.empty() && !beginsAs(request, record))
    decoded.problem = {0, "it answers another request; these four bytes should be the request's"};
  if (!decoded.status)
    decoded.status = isErrorReply(record) ? kesext::HOOK_STATUS_NOT_SUPPORTED : kesext::HOOK_STATUS_SUCCESS;
  return decoded;
}

DecodedRecord decodeUnsolicited(ByteView record) {
  constexpr size_t kLeast = kUnsolicitedPrefix + kesext::kOemHookHeaderCount;
  if (record.size() < kUnsolicitedPrefix + kGenericHeader) return tooShort(record, kLeast);
  const auto type = getLe<uint32_t>(record, 0);
  if (type > 1) {
    DecodedRecord decoded{.title = "unusable"};
    FieldSplitter split(record, decoded);
    split.problem(0, "hookType is 0 or 1 in every unsolicited message");
    split.take("unparsed", FieldKind::bytes, record.size());
    return decoded;
  }
  const bool cdma = type == 0;
  const size_t header_size = cdma ? kesext::kOemHookHeaderCount : kGenericHeader;
  const ByteView from_header = record.subspan(kUnsolicitedPrefix);
  const auto id = getLe<uint32_t>(from_header, 0) >> (cdma ? 0 : 8);
  const std::string id_text = cdma ? cdmaId(id) : genericId(id);
  const UnsolicitedRow* row = findUnsolicited(cdma ? Family::cdma : Family::generic, id);
  const Fields fields = row != nullptr ? row->payload : Fields{};
  DecodedRecord decoded;
  entitle(decoded, "unsolicited", id_text, row);
  FieldSplitter split(record, decoded);
  split.take("hookType", FieldKind::number, 4, cdma ? "0 (CDMA)" : "1 (generic)");
  split.take("headerSize", FieldKind::number, 4);
  if (getLe<uint32_t>(record, 4) != header_size)
    split.problem(4, fmt::format("headerSize is {} behind this hookType", header_size));
  if (cdma) {
    takeCdma(split, from_header, fields, kCdmaUnsolicited);
    return decoded;
  }
  split.take("msgType", FieldKind::number, 1);
  split.take("msgId", FieldKind::hexNumber, 3, id_text);
  split.take("length", FieldKind::signedNumber, 4);
  split.takePayload(fields, static_cast<int32_t>(getLe<uint32_t>(from_header, 4)), "length",
                    kZerosBehindGeneric);
  return decoded;
}

std::string_view nameOf(RecordKind kind) {
  constexpr std::string_view kNames[] = {"request", "answer", "unsolicited"};
  return kNames[static_cast<size_t>(kind)];
}

KindGuess guessKind(ByteView record) {
  struct Reading {
    RecordKind kind;
    size_t parsed;  // bytes, and one more for the end
    bool known;
  };
  std::vector<Reading> readings;
  for (const auto kind : {RecordKind::request, RecordKind::answer, RecordKind::unsolicited}) {
    const DecodedRecord decoded = decodeAs(kind, record);
    readings.push_back({kind, decoded.problem ? decoded.problem->offset : record.size() + 1,
                        !decoded.name.empty() || decoded.title.starts_with("error reply")});
  }
  const auto better = [](const Reading& a, const Reading& b) {
    return std::pair(a.parsed, a.known) > std::pair(b.parsed, b.known);
  };
  std::stable_sort(readings.begin(), readings.end(), better);
  if (better(readings[0], readings[1])) return {readings[0].kind};
  // Only answers have a status.
  const bool has_status = isCdma(record) && record.size() >= 12 && getLe<uint32_t>(record, 8) != 0;
  if (has_status) std::swap(readings[0], readings[1]);
  return {readings[0].kind, readings[1].kind};
}

DecodedRecord decodeAs(RecordKind kind, ByteView record, ByteView asked) {
  if (kind == RecordKind::answer) return decodeAnswer(asked, record);
  return kind == RecordKind::request ? decodeRequest(record) : decodeUnsolicited(record);
}

DecodedRecord decodePlain(std::string_view title, Fields fields, ByteView bytes) {
  DecodedRecord decoded{.title = std::string(title)};
  FieldSplitter(bytes, decoded).takeRest(fields);
  return decoded;
}

}  // namespace tools
