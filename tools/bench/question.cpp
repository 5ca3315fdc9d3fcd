#include "tools/bench/question.h"

#include <fmt/format.h>

#include <algorithm>

#include "tools/bench/modem_control.h"
#include "tools/records/encode.h"
#include "tools/records/field_value.h"
#include "tools/text/usage_error.h"
#include "tools/text/words.h"

namespace tools {

namespace {

using handset::Bytes;
using handset::ByteView;

/// The fields of a request, none of which has to be given.
std::vector<FieldSpec> questionFields(handset::Service service, uint16_t id) {
  const handset::MessageRow* row = handset::findMessage(service, id);
  if (row == nullptr) return {};
  std::vector<FieldSpec> fields(row->request.begin(), row->request.end());
  for (FieldSpec& field : fields)
    if (field.when_absent == WhenAbsent::refused) field.when_absent = WhenAbsent::zeros;
  return fields;
}

bool namesField(std::string_view word) {
  const size_t sign = word.find_first_of("=:@");
  return sign != std::string_view::npos && word[sign] == '=';
}

/// Zeros are left out; so are lengths, unless they are to be given, and then the zeros behind the data.
std::string writeFields(const handset::Received& asked, bool with_lengths) {
  std::string text;
  size_t at = 0;
  size_t length = 0;  // of the data behind it
  for (const FieldSpec& field : questionFields(asked.service, asked.id)) {
    const ByteView bytes = ByteView(asked.body).subspan(at, field.size);
    at += field.size;
    const bool is_length = field.when_absent == WhenAbsent::lengthOfRest;
    if (is_length) length = static_cast<size_t>(std::min<uint64_t>(numberIn(bytes), asked.body.size()));
    if (handset::isZero(bytes) || (is_length && !with_lengths)) continue;
    const bool counted = field.kind == FieldKind::bytes && !with_lengths && length <= bytes.size() &&
                         handset::isZero(bytes.subspan(length));
    const std::string value = counted ? writeBytes(bytes.first(length)) : typedValue(field.kind, bytes);
    text += fmt::format(" {}", quoteWord(fmt::format("{}={}", field.name, value)));
  }
  return text;
}

bool readsBack(const std::string& line, const handset::Received& asked) {
  try {
    return readQuestion(line).body == asked.body;
  } catch (const UsageError&) {
    return false;
  }
}

}  // namespace

Question readQuestion(std::string_view line) {
  const std::vector<std::string> words = splitWords(line);
  if (words.empty()) throw UsageError("takes MESSAGE [BYTES | FIELD=VALUE ...]");
  Question question{std::string(line), &messageByName(words[0]), std::nullopt};
  if (words.size() == 1) return question;
  const size_t size = question.row->request_size;
  if (words.size() > 2 || namesField(words[1])) {
    const std::vector<FieldSpec> fields = questionFields(question.row->service, question.row->id);
    question.body = encodeFields(words[0], fields, Words(words).subspan(1));
  } else {
    question.body = parseBytes("BYTES", words[1]);
    if (question.body->size() > size)
      throw UsageError(fmt::format("{} asks {} bytes, not {}", words[0], size, question.body->size()));
  }
  question.body->resize(size);
  return question;
}

std::vector<std::string> compareQuestion(const Question& expected, const handset::Received& asked) {
  if (asked.service != expected.row->service || asked.id != expected.row->id)
    return {fmt::format("expected {}, not {}", expected.written, writeQuestion(asked))};
  if (!expected.body || asked.body == *expected.body) return {};
  if (asked.body.size() != expected.body->size()) return {difference(asked.body, *expected.body)};
  std::vector<std::string> wrong;
  size_t at = 0;
  for (const FieldSpec& field : questionFields(asked.service, asked.id)) {
    const ByteView was = ByteView(asked.body).subspan(at, field.size);
    const ByteView wanted = ByteView(*expected.body).subspan(at, field.size);
    at += field.size;
    if (std::equal(was.begin(), was.end(), wanted.begin(), wanted.end())) continue;
    wrong.push_back(
        fmt::format("{} {}", handset::messageName(asked.service, asked.id), difference(field, was, wanted)));
  }
  return wrong;
}

std::string writeQuestion(const handset::Received& asked) {
  std::string name = handset::messageName(asked.service, asked.id);
  if (asked.body.empty()) return name;
  const handset::MessageRow* row = handset::findMessage(asked.service, asked.id);
  if (row == nullptr || row->request_size != asked.body.size())
    return fmt::format("{} {}", name, quoteWord(writeBytes(asked.body)));
  for (const bool with_lengths : {false, true}) {
    std::string line = name + writeFields(asked, with_lengths);
    if (readsBack(line, asked)) return line;
  }
  const Bytes zero(1);
  const ByteView used = withoutZerosBehind(asked.body);
  return fmt::format("{} {}", name, quoteWord(writeBytes(used.empty() ? ByteView(zero) : used)));
}

}  // namespace tools
