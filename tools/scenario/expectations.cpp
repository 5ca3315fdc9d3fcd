#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <limits>

#include "tools/bench/question.h"
#include "tools/records/encode.h"
#include "tools/records/field_value.h"
#include "tools/scenario/files.h"
#include "tools/scenario/scenario.h"
#include "tools/text/usage_error.h"
#include "tools/text/words.h"

namespace tools {

namespace {

using handset::Bytes;
using handset::ByteView;
/// What a record has otherwise than expected, a text for each.
using RecordCheck = std::function<std::vector<std::string>(const PlayedRecord&)>;

constexpr size_t kLinesShown = 8;
/// Every action waits until its last line is logged. Only what another thread of the process does then has to
/// be given time.
constexpr handset::Millis kGrace{500};

void append(std::vector<std::string>& all, const std::vector<std::string>& more,
            std::string_view prefix = {}) {
  for (const std::string& text : more)
    all.push_back(fmt::format("{}{}", prefix, text));
}

/// The row of this name. Throws UsageError, with the nearest names, when there is none.
template <typename Row>
const Row& rowByName(std::span<const Row> rows, std::string_view what, std::string_view name) {
  for (const Row& row : rows)
    if (row.name == name) return row;
  const std::vector<std::string_view> names = namesOf(rows);
  throw UsageError(fmt::format("there is no {} '{}'{}; there are {}", what, name, didYouMean(name, names),
                               fmt::join(names, ", ")));
}

const RequestRow* needRequest(const Reading& reading) {
  if (reading.request.empty()) throw UsageError("is of an answer, and the step makes no request");
  return findRequest(reading.request);
}

Deed readStatus(const Json& value, Reading& reading) {
  const RequestRow* row = needRequest(reading);
  if (row != nullptr && row->bare_answer)
    throw UsageError(fmt::format("the answer to {} has none", row->command));
  const uint32_t expected =
      value.is_string() ? rowByName(statusTable(), "status", textOf(value)).status
                        : static_cast<uint32_t>(numberOf(value, 0, std::numeric_limits<uint32_t>::max()));
  return [expected](Play& play) {
    constexpr FieldSpec kStatus{"status", sizeof(uint32_t), FieldKind::status};
    const std::optional<uint32_t> status = play.answer().decoded.status;
    // An answer without one does not parse.
    if (status && *status != expected)
      play.wrong.push_back(difference(kStatus, handset::le32(*status), handset::le32(expected)));
  };
}

/// A field's value as a person would type it on the command line.
std::string writtenValue(const FieldSpec& shape, const Json& value) {
  if (value.is_string()) return value.get<std::string>();
  if (value.is_number_integer()) return value.dump();
  if (!value.is_array() || shape.kind != FieldKind::words)
    throw UsageError(fmt::format("{}: takes a text or a number, not {}", shape.name, value.dump()));
  return fmt::format("{}", fmt::join(readEach(value, [](const Json& word) { return word.dump(); }), ","));
}

const FieldSpec& fieldOf(std::string_view owner, Fields fields, const std::string& name) {
  const std::vector<std::string_view> names = argumentNames(fields);
  for (const FieldSpec& field : fields)
    if (field.name == name && field.kind != FieldKind::zeros) return field;
  throw UsageError(fmt::format("{} has no field '{}'{}; it has {}", owner, name, didYouMean(name, names),
                               fmt::join(names, ", ")));
}

/// The payload's field of this name; a header's field of the same name stands before it.
const DecodedField* findLast(const DecodedRecord& decoded, std::string_view name) {
  const auto found = std::find_if(decoded.fields.rbegin(), decoded.fields.rend(),
                                  [name](const DecodedField& field) { return field.name == name; });
  return found != decoded.fields.rend() ? &*found : nullptr;
}

/// {"NAME": VALUE, ...}: values are written as in a request, numbers also as such and several as a list. The
/// fields are the payload's and the one of its header that is not the same in all: spc, or a generic record's
/// msgType. `owner` is what has them.
RecordCheck readFields(std::string_view owner, Family family, Fields payload, const Json& value) {
  constexpr FieldSpec kMessageType{"msgType", 1, FieldKind::number};
  needObject(value);
  if (payload.empty()) payload = kPlainPayload;
  std::vector<FieldSpec> fields(payload.begin(), payload.end());
  fields.push_back(family == Family::cdma ? kSpcField : kMessageType);
  std::vector<std::pair<FieldSpec, Bytes>> expected;
  for (const auto& [name, field_value] : value.items()) {
    FieldSpec field = fieldOf(owner, fields, name);
    field.digits = {};  // what comes may be anything
    expected.emplace_back(field, encodeField(field, writtenValue(field, field_value)));
  }
  return [expected](const PlayedRecord& came) {
    std::vector<std::string> wrong;
    for (const auto& [field, bytes] : expected) {
      const DecodedField* found = findLast(came.decoded, field.name);
      const ByteView there =
          found != nullptr ? ByteView(came.bytes).subspan(found->offset, found->size) : ByteView{};
      if (std::equal(there.begin(), there.end(), bytes.begin(), bytes.end())) continue;
      wrong.push_back(found != nullptr ? difference(field, there, bytes)
                                       : fmt::format("{} is not there", field.name));
    }
    return wrong;
  };
}

RecordCheck readBytes(const Json& value) {
  return [expected = bytesIn(value)](const PlayedRecord& came) -> std::vector<std::string> {
    if (came.bytes == expected) return {};
    return {fmt::format("the {} {}", came.direction, difference(came.bytes, expected))};
  };
}

Deed checkAnswer(const RecordCheck& check) {
  return [check](Play& play) { append(play.wrong, check(play.answer())); };
}

Deed readAnswerFields(const Json& value, Reading& reading) {
  const RequestRow* row = needRequest(reading);
  const std::string owner =
      row != nullptr ? fmt::format("the answer to {}", row->command) : "an answer that nothing is known of";
  const Family family = isCdma(reading.request) ? Family::cdma : Family::generic;
  return checkAnswer(readFields(owner, family, row != nullptr ? row->answer : Fields{}, value));
}

Deed readAnswerBytes(const Json& value, Reading& reading) {
  needRequest(reading);
  return checkAnswer(readBytes(value));
}

RecordCheck readExpectedMessage(const Json& value) {
  constexpr std::string_view kKeys[] = {"name", "fields", "bytes"};
  checkKeys(value, kKeys);
  if (!value.contains("name")) throw UsageError("needs a name");
  const UnsolicitedRow& row = rowByName(unsolicitedTable(), "message", textOf(value.at("name")));
  std::vector<RecordCheck> checks;
  if (value.contains("fields"))
    checks.push_back(readFields(row.name, row.family, row.payload, value.at("fields")));
  if (value.contains("bytes")) checks.push_back(readBytes(value.at("bytes")));
  return [&row, checks](const PlayedRecord& came) {
    std::vector<std::string> wrong;
    if (came.decoded.name != row.name)
      return std::vector{fmt::format("expected {}, not {}", row.name, came.decoded.title)};
    for (const RecordCheck& check : checks)
      append(wrong, check(came));
    return wrong;
  };
}

Deed readMessage(const Json& value, Reading& reading) {
  if (!reading.indicates) throw UsageError("comes of an indication, and the step has none");
  return [checks = readEach(value, readExpectedMessage)](Play& play) {
    const size_t came = play.records.size();
    if (came != checks.size())
      play.wrong.push_back(fmt::format("expected {} messages, and {} came", checks.size(), came));
    for (size_t i = 0; i < std::min(checks.size(), came); ++i)
      append(play.wrong, checks[i](play.records[i]), fmt::format("message {}: ", i + 1));
  };
}

Deed readLog(const Json& value, Reading& reading) {
  if (!reading.running && !reading.ends_process)
    throw UsageError("is of the process, which does not run here");
  return [texts = readEach(value, textOf)](Play& play) {
    handset::Parent& process = play.station.process();
    size_t from = play.log_mark;
    for (const std::string& text : texts) {
      const std::optional<size_t> behind = process.waitForLogPart(from, text, kGrace);
      if (behind) {
        from = *behind;
        continue;
      }
      const std::string_view where = from > play.log_mark ? " behind the text before" : "";
      play.wrong.push_back(fmt::format("not logged{}: {}", where, text));
      std::vector<std::string> lines = process.logsSince(play.log_mark);
      lines.erase(lines.begin(), lines.end() - static_cast<ptrdiff_t>(std::min(lines.size(), kLinesShown)));
      return append(play.wrong, lines, "  logged: ");
    }
  };
}

/// What differs first between all that was asked and what was expected to be.
std::vector<std::string> compareOrder(const std::vector<Question>& expected,
                                      const std::vector<handset::Received>& asked) {
  static const std::string kNothing = "nothing more";
  std::vector<std::string> wrong;
  for (size_t i = 0; wrong.empty() && i < std::max(expected.size(), asked.size()); ++i) {
    const std::string wanted = i < expected.size() ? expected[i].written : kNothing;
    const std::string was = i < asked.size() ? writeQuestion(asked[i]) : kNothing;
    const bool both = i < std::min(expected.size(), asked.size());
    append(wrong,
           both ? compareQuestion(expected[i], asked[i])
                : std::vector{fmt::format("expected {}, not {}", wanted, was)},
           fmt::format("message {}: ", i + 1));
  }
  return wrong;
}

std::vector<std::string> compareSome(const std::vector<Question>& expected,
                                     const std::vector<handset::Received>& asked) {
  std::vector<std::string> wrong;
  for (const Question& question : expected) {
    const auto is_it = [&](const handset::Received& one) { return compareQuestion(question, one).empty(); };
    if (std::none_of(asked.begin(), asked.end(), is_it)) wrong.push_back("expected " + question.written);
  }
  return wrong;
}

Deed readAsked(const Json& value, Reading&) {
  constexpr std::string_view kIncludes[] = {"includes"};
  const bool some = value.is_object();
  if (some) checkKeys(value, kIncludes);
  if (some && value.empty()) throw UsageError(R"(takes {"includes": [...]} for some of what is asked)");
  const std::vector<Question> questions = readEach(
      some ? value.at("includes") : value, [](const Json& line) { return readQuestion(textOf(line)); });
  return [some, questions](Play& play) {
    handset::Modem& modem = play.station.modem();
    modem.waitForRequests(questions.size(), kGrace);
    const std::vector<handset::Received> asked = modem.requests();
    const std::vector<std::string> wrong =
        some ? compareSome(questions, asked) : compareOrder(questions, asked);
    if (wrong.empty()) return;
    append(play.wrong, wrong, "asked: ");
    for (const handset::Received& one : asked)
      play.wrong.push_back("  was asked: " + writeQuestion(one));
  };
}

Deed readExit(const Json& value, Reading& reading) {
  constexpr int kLeast = -64;
  constexpr int kMost = 255;
  if (!reading.ends_process) throw UsageError("is of a step that ends the process");
  reading.step.exit_expected = static_cast<int>(numberOf(value, kLeast, kMost));
  return [](Play&) {};
}

Deed compareFiles(const std::vector<FileDescription>& files) {
  return [files](Play& play) {
    for (const FileDescription& file : files)
      if (const std::string wrong = compareFile(play.station.folder(), file); !wrong.empty())
        play.wrong.push_back(wrong);
  };
}

std::string readDropboxEntry(const Json& value) {
  constexpr std::string_view kKeys[] = {"tag", "text"};
  checkKeys(value, kKeys);
  if (value.size() != std::size(kKeys)) throw UsageError("needs a tag and a text");
  return fmt::format("{}: {}", textOf(value.at("tag")), textOf(value.at("text")));
}

Deed readDropbox(const Json& value, Reading&) {
  return [expected = readEach(value, readDropboxEntry)](Play& play) {
    std::vector<std::string> found;
    size_t number = 0;
    for (const handset::DropboxEntry& entry : play.station.folder().dropboxEntries())
      if (++number > play.dropbox_mark) found.push_back(fmt::format("{}: {}", entry.tag, entry.text));
    if (found != expected)
      play.wrong.push_back(
          fmt::format("dropbox: expected [{}], not [{}]", fmt::join(expected, ", "), fmt::join(found, ", ")));
  };
}

constexpr StepWord kExpectations[] = {
    {"status", R"("success" | ... | N)", "the answer's status", readStatus},
    {"fields", R"({"NAME": VALUE})", "fields of the answer, written as in a request", readAnswerFields},
    {"bytes", R"("HEX")", "the whole answer", readAnswerBytes},
    {"message", R"({"name": N, "fields": {...}, "bytes": B})",
     "the unsolicited messages that the indications lead to, all of them in order; [] for none", readMessage},
    {"log", R"("TEXT")", "parts of lines that are logged in the step, each behind the one before", readLog},
    {"asked", R"("MESSAGE [BYTES | FIELD=VALUE ...]" | {"includes": [...]})",
     "what the modem is asked in the step, all of it in order; [] for nothing", readAsked},
    {"exit", "N", "the status that the process ends with, or minus a signal; 0 when not given", readExit},
    {"file", kFileFormat, "files of the handset; with a size or a place, the content is what stands there",
     [](const Json& value, Reading&) { return compareFiles(readEach(value, readFile)); }},
    {"properties", R"({"NAME": "VALUE" | null})", "system properties; null for one that is not there",
     [](const Json& value, Reading&) { return compareFiles(readProperties(value)); }},
    {"dropbox", R"({"tag": T, "text": T})",
     "what comes into the drop-box in the step, all of it; [] for nothing", readDropbox},
};

}  // namespace

std::span<const StepWord> expectationWords() {
  return kExpectations;
}

}  // namespace tools
