#include "tools/records/record_kind.h"

#include "core/ground/hook_message.h"

namespace tools {

namespace {

using handset::ByteView;
using handset::getBe;
using handset::getLe;
using enum RecordKind;

bool isUnsolicited(ByteView record) {
  const auto type = getLe<uint32_t>(record, 0);
  const auto header_size = getLe<uint32_t>(record, 4);
  return (type == 0 && header_size == kesext::kOemHookHeaderCount) ||
         (type == 1 && header_size == kesext::kGenericHookHeaderSize);
}

/// An answer counts two zeros behind its payload, a request ends with it.
KindGuess guessCdma(ByteView record) {
  constexpr size_t kRequestHeader = kesext::kOemHookPayloadOffset;
  constexpr size_t kAnswerHeader = kesext::kOemHookHeaderCount;
  const auto payload = getLe<uint32_t>(record, 4);
  if (record.size() == payload + uint64_t{kRequestHeader}) return {request};
  if (record.size() == payload + uint64_t{kAnswerHeader}) {
    const bool zeros = record[record.size() - 2] == 0 && record[record.size() - 1] == 0;
    if (zeros) return {answer};
    return {answer, request};
  }
  // It parses as neither. Only answers have a status, and one byte too many is an answer's that is cut.
  const bool has_status = record.size() >= 12 && getLe<uint32_t>(record, 8) != 0;
  const bool cut_end = record.size() == payload + uint64_t{kRequestHeader} + 1;
  return has_status || cut_end ? KindGuess{answer, request} : KindGuess{request, answer};
}

/// The length is the most significant byte first in a request, the least in an answer.
KindGuess guessGeneric(ByteView record) {
  const size_t payload = record.size() - kesext::kGenericHookHeaderSize;
  const auto in_request = getBe<uint32_t>(record, 4);
  const auto in_answer = getLe<uint32_t>(record, 4);
  if (in_request == 0 && in_answer == 0) return {request, answer};
  if (in_request == payload) return {request};
  if (in_answer == payload) return {answer};
  // It parses as neither; one of the two lengths may still be one that records have.
  if (in_request <= kesext::kRequestBufferSize) return {request};
  if (in_answer <= kesext::kRequestBufferSize) return {answer};
  return {request, answer};
}

}  // namespace

KindGuess guessKind(ByteView record) {
  if (record.size() < kesext::kGenericHookHeaderSize) return {request};
  if (isErrorReply(record)) return {answer};
  if (isUnsolicited(record)) return {unsolicited};
  return isCdma(record) ? guessCdma(record) : guessGeneric(record);
}

DecodedRecord decodeAs(RecordKind kind, ByteView record, ByteView asked) {
  switch (kind) {
    case request:
      return decodeRequest(record);
    case answer:
      return decodeAnswer(asked, record);
    case unsolicited:
      return decodeUnsolicited(record);
  }
  return {};
}

std::string_view nameOf(RecordKind kind) {
  switch (kind) {
    case request:
      return "request";
    case answer:
      return "answer";
    case unsolicited:
      return "unsolicited";
  }
  return {};
}

}  // namespace tools
