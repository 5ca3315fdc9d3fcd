#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <limits>

#include "tools/bench/question.h"
#include "tools/records/field_value.h"
#include "tools/scenario/files.h"
#include "tools/scenario/steps.h"
#include "tools/text/usage_error.h"
#include "tools/text/words.h"

namespace tools {

namespace {

using handset::Bytes;

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
  std::vector<std::string_view> names;
  for (const Row& row : rows) {
    if (row.name == name) return row;
    names.push_back(row.name);
  }
  throw UsageError(fmt::format("there is no {} '{}'{}; there are {}", what, name, didYouMean(name, names),
                               fmt::join(names, ", ")));
}

const RequestRow* needRequest(const Reading& reading) {
  if (reading.request.empty()) throw UsageError("is of an answer, and the step makes no request");
  return findRequest(reading.request);
}

std::string describeStatus(uint32_t status) {
  return fmt::format("{} ({})", status, statusName(status));
}

Deed readStatus(const Json& value, Reading& reading) {
  const RequestRow* row = needRequest(reading);
  if (row != nullptr && row->bare_answer)
    throw UsageError(fmt::format("the answer to {} has none", row->command));
  const uint32_t expected =
      value.is_string() ? rowByName(statusTable(), "status", textOf(value)).status
                        : static_cast<uint32_t>(numberOf(value, 0, std::numeric_limits<uint32_t>::max()));
  return [expected](Play& play) {
    const uint32_t status = answerStatus(play.answer->decoded, play.answer->bytes);
    if (status != expected)
      play.wrong.push_back(
          fmt::format("status: expected {}, not {}", describeStatus(expected), describeStatus(status)));
  };
}

Deed readAnswerFields(const Json& value, Reading& reading) {
  const RequestRow* row = needRequest(reading);
  const std::string owner =
      row != nullptr ? fmt::format("the answer to {}", row->command) : "an answer that nothing is known of";
  const Family family = isCdma(reading.request) ? Family::cdma : Family::generic;
  return [fields = readFields(owner, family, row != nullptr ? row->answer : Fields{}, value)](Play& play) {
    append(play.wrong, compareFields(fields, play.answer->decoded, play.answer->bytes));
  };
}

Deed readAnswerBytes(const Json& value, Reading& reading) {
  needRequest(reading);
  return [expected = bytesIn(value)](Play& play) {
    if (play.answer->bytes != expected)
      play.wrong.push_back(fmt::format("the answer {}", difference(play.answer->bytes, expected)));
  };
}

struct ExpectedMessage {
  std::string_view name;
  std::vector<ExpectedField> fields;
  std::optional<Bytes> bytes;
};

ExpectedMessage readExpectedMessage(const Json& value) {
  constexpr std::string_view kKeys[] = {"name", "fields", "bytes"};
  checkKeys(value, kKeys);
  if (!value.contains("name")) throw UsageError("needs a name");
  const UnsolicitedRow& row = rowByName(unsolicitedTable(), "message", textOf(value.at("name")));
  ExpectedMessage message{.name = row.name};
  if (value.contains("fields"))
    message.fields = readFields(std::string(row.name), row.family, row.payload, value.at("fields"));
  if (value.contains("bytes")) message.bytes = bytesIn(value.at("bytes"));
  return message;
}

std::vector<std::string> compareMessage(const ExpectedMessage& expected, const PlayedRecord& came) {
  if (came.decoded.name != expected.name)
    return {fmt::format("expected {}, not {}", expected.name, came.decoded.title)};
  std::vector<std::string> wrong = compareFields(expected.fields, came.decoded, came.bytes);
  if (expected.bytes && *expected.bytes != came.bytes)
    wrong.push_back(difference(came.bytes, *expected.bytes));
  return wrong;
}

Deed readMessage(const Json& value, Reading& reading) {
  if (!reading.indicates) throw UsageError("comes of an indication, and the step has none");
  return [messages = readEach(value, readExpectedMessage)](Play& play) {
    if (play.messages.size() != messages.size())
      play.wrong.push_back(
          fmt::format("expected {} messages, and {} came", messages.size(), play.messages.size()));
    for (size_t i = 0; i < std::min(messages.size(), play.messages.size()); ++i)
      append(play.wrong, compareMessage(messages[i], play.messages[i]), fmt::format("message {}: ", i + 1));
  };
}

Deed readLog(const Json& value, Reading& reading) {
  if (!reading.running && !reading.ends_process)
    throw UsageError("is of the process, which does not run here");
  return [texts = readEach(value, textOf)](Play& play) {
    handset::Parent& process = play.station.process();
    size_t from = play.log_mark;
    bool all = true;
    for (const std::string& text : texts) {
      const std::optional<size_t> behind = process.waitForLogPart(from, text, kGrace);
      all = all && behind;
      if (!behind)
        play.wrong.push_back(
            fmt::format("not logged{}: {}", from > play.log_mark ? " behind the text before" : "", text));
      from = behind.value_or(from);
    }
    if (all) return;
    std::vector<std::string> lines = process.logsSince(play.log_mark);
    lines.erase(lines.begin(), lines.end() - static_cast<ptrdiff_t>(std::min(lines.size(), kLinesShown)));
    append(play.wrong, lines, "  logged: ");
  };
}

/// What differs first between all that was asked and what was expected to be.
std::vector<std::string> compareOrder(const std::vector<Question>& expected,
                                      const std::vector<handset::Received>& asked) {
  for (size_t i = 0; i < std::max(expected.size(), asked.size()); ++i) {
    if (i >= asked.size())
      return {fmt::format("message {}: expected {}, and nothing more was asked", i + 1, expected[i].written)};
    if (i >= expected.size())
      return {fmt::format("message {}: expected nothing more, not {}", i + 1, writeQuestion(asked[i]))};
    std::vector<std::string> wrong;
    append(wrong, compareQuestion(expected[i], asked[i]), fmt::format("message {}: ", i + 1));
    if (!wrong.empty()) return wrong;
  }
  return {};
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
  if (!reading.ends_process) throw UsageError("is of a step that ends the process");
  constexpr int kLeast = -64;
  constexpr int kMost = 255;
  reading.exit_expected = static_cast<int>(numberOf(value, kLeast, kMost));
  return [](Play&) {};
}

Deed compareFiles(const std::vector<FileDescription>& files) {
  return [files](Play& play) {
    for (const FileDescription& file : files)
      append(play.wrong, compareFile(play.station.folder(), file));
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
