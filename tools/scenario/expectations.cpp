#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <limits>

#include "tools/bench/modem_control.h"
#include "tools/records/difference.h"
#include "tools/scenario/files.h"
#include "tools/scenario/steps.h"
#include "tools/scenario/values.h"
#include "tools/text/usage_error.h"

namespace tools {

namespace {

using handset::Bytes;

constexpr size_t kLogLinesShown = 8;
/// Every action waits until its last line is logged, so that hardly any time has to be given.
constexpr handset::Millis kLogGrace{500};

void append(std::vector<std::string>& all, const std::vector<std::string>& more,
            std::string_view prefix = {}) {
  for (const std::string& text : more)
    all.push_back(fmt::format("{}{}", prefix, text));
}

const RequestRow* needRequest(const Reading& reading) {
  if (reading.request.empty()) throw UsageError("is of an answer, and the step makes no request");
  return findRequest(reading.request);
}

std::string describeStatus(uint32_t status) {
  return fmt::format("{} ({})", status, statusName(status));
}

uint32_t statusOf(const Json& value) {
  if (!value.is_string())
    return static_cast<uint32_t>(numberOf(value, 0, std::numeric_limits<uint32_t>::max()));
  std::vector<std::string_view> names;
  for (const StatusRow& row : statusTable()) {
    if (row.name == textOf(value)) return row.status;
    names.push_back(row.name);
  }
  throw UsageError(fmt::format("there is no '{}'{}; there are {}", textOf(value),
                               didYouMean(textOf(value), names), fmt::join(names, ", ")));
}

Deed readStatus(const Json& value, Reading& reading) {
  const RequestRow* row = needRequest(reading);
  if (row != nullptr && row->bare_answer)
    throw UsageError(fmt::format("the answer to {} has none", row->command));
  return [expected = statusOf(value)](Play& play) {
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
  return [fields = readFields(owner, row != nullptr ? row->answer : Fields{}, value)](Play& play) {
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
  const UnsolicitedRow* row;
  std::vector<ExpectedField> fields;
  std::optional<Bytes> bytes;
};

const UnsolicitedRow& unsolicitedByName(const std::string& name) {
  std::vector<std::string_view> names;
  for (const UnsolicitedRow& row : unsolicitedTable()) {
    if (row.name == name) return row;
    names.push_back(row.name);
  }
  throw UsageError(fmt::format("there is no message '{}'{}; there are {}", name, didYouMean(name, names),
                               fmt::join(names, "; ")));
}

ExpectedMessage readExpectedMessage(const Json& value) {
  constexpr std::string_view kKeys[] = {"name", "fields", "bytes"};
  checkKeys(value, kKeys);
  if (!value.contains("name")) throw UsageError("needs a name");
  ExpectedMessage message{.row = &unsolicitedByName(textOf(value.at("name")))};
  if (value.contains("fields"))
    message.fields = readFields(std::string(message.row->name), message.row->payload, value.at("fields"));
  if (value.contains("bytes")) message.bytes = bytesIn(value.at("bytes"));
  return message;
}

std::vector<std::string> compareMessage(const ExpectedMessage& expected, const PlayedRecord& came) {
  if (!came.decoded.title.ends_with(fmt::format(": {}", expected.row->name)))
    return {fmt::format("expected {}, not {}", expected.row->name, came.decoded.title)};
  std::vector<std::string> wrong = compareFields(expected.fields, came.decoded, came.bytes);
  if (expected.bytes && *expected.bytes != came.bytes)
    wrong.push_back(difference(came.bytes, *expected.bytes));
  return wrong;
}

Deed readMessage(const Json& value, Reading& reading) {
  if (!reading.indicates) throw UsageError("comes of an indication, and the step has none");
  std::vector<ExpectedMessage> messages;
  for (const Json* message : eachOf(value))
    messages.push_back(readExpectedMessage(*message));
  return [messages](Play& play) {
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
  std::vector<std::string> texts;
  for (const Json* text : eachOf(value))
    texts.push_back(textOf(*text));
  return [texts](Play& play) {
    handset::Parent& process = play.station.process();
    for (const std::string& text : texts) {
      if (process.waitForLogSince(play.log_mark, text, kLogGrace)) continue;
      play.wrong.push_back(fmt::format("not logged: {}", text));
      const std::vector<std::string> lines = process.logsSince(play.log_mark);
      const size_t first = lines.size() - std::min(lines.size(), kLogLinesShown);
      for (size_t i = first; i < lines.size(); ++i)
        play.wrong.push_back(fmt::format("  logged: {}", lines[i]));
    }
  };
}

struct ExpectedQuestion {
  std::string written;
  const handset::MessageRow* row;
  std::optional<Bytes> body;  // filled up with zeros
};

ExpectedQuestion readQuestion(const std::string& line) {
  const std::vector<std::string> words = splitWords(line);
  if (words.empty() || words.size() > 2) throw UsageError("takes MESSAGE [BYTES]");
  ExpectedQuestion question{.written = line, .row = &messageByName(words[0]), .body = std::nullopt};
  if (words.size() == 1) return question;
  question.body = parseBytes("BYTES", words[1]);
  if (question.body->size() > question.row->request_size)
    throw UsageError(
        fmt::format("{} asks {} bytes, not {}", words[0], question.row->request_size, question.body->size()));
  question.body->resize(question.row->request_size);
  return question;
}

Deed readAsked(const Json& value, Reading&) {
  std::vector<ExpectedQuestion> questions;
  for (const Json* line : eachOf(value))
    questions.push_back(readQuestion(textOf(*line)));
  return [questions](Play& play) {
    const std::vector<handset::Received> received = play.station.modem().requests();
    if (questions.empty() && !received.empty())
      play.wrong.push_back(fmt::format("the modem was asked {} times", received.size()));
    for (const ExpectedQuestion& question : questions) {
      const bool found = std::any_of(received.begin(), received.end(), [&](const handset::Received& one) {
        return one.service == question.row->service && one.id == question.row->id &&
               (!question.body || one.body == *question.body);
      });
      if (!found) play.wrong.push_back(fmt::format("the modem was not asked: {}", question.written));
    }
  };
}

Deed readExit(const Json& value, Reading& reading) {
  if (!reading.ends_process) throw UsageError("is of a step that ends the process");
  constexpr int kLeast = -64;
  constexpr int kMost = 255;
  reading.exit_expected = static_cast<int>(numberOf(value, kLeast, kMost));
  return [](Play&) {};
}

Deed readFiles(const Json& value, Reading&) {
  std::vector<FileDescription> files;
  for (const Json* file : eachOf(value))
    files.push_back(readFileDescription(*file));
  return [files](Play& play) {
    for (const FileDescription& file : files)
      append(play.wrong, compareFile(play.station.folder(), file));
  };
}

Deed readExpectedProperties(const Json& value, Reading&) {
  return [properties = readPropertyTexts(value)](Play& play) {
    append(play.wrong, compareProperties(play.station.folder(), properties));
  };
}

Deed readDropbox(const Json& value, Reading&) {
  constexpr std::string_view kKeys[] = {"tag", "text"};
  std::vector<std::string> expected;
  for (const Json* entry : eachOf(value)) {
    checkKeys(*entry, kKeys);
    if (entry->size() != std::size(kKeys)) throw UsageError("needs a tag and a text");
    expected.push_back(fmt::format("{}: {}", textOf(entry->at("tag")), textOf(entry->at("text"))));
  }
  return [expected](Play& play) {
    std::vector<std::string> found;
    for (const handset::DropboxEntry& entry : play.station.folder().dropboxEntries())
      found.push_back(fmt::format("{}: {}", entry.tag, entry.text));
    found.erase(found.begin(),
                found.begin() + static_cast<ptrdiff_t>(std::min(found.size(), play.dropbox_mark)));
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
    {"log", R"("TEXT")", "what is logged in the step", readLog},
    {"asked", R"("MESSAGE [BYTES]")",
     "what the modem is asked in the step, with zeros behind what is given; [] for nothing", readAsked},
    {"exit", "N", "the status that the process ends with, or minus a signal; 0 when not given", readExit},
    {"file", kFileFormat, "files of the handset; with a size, the content is what it begins with", readFiles},
    {"properties", R"({"NAME": "VALUE" | null})", "system properties; null for one that is not there",
     readExpectedProperties},
    {"dropbox", R"({"tag": T, "text": T})",
     "what comes into the drop-box in the step, all of it; [] for nothing", readDropbox},
};

}  // namespace

std::span<const StepWord> expectationWords() {
  return kExpectations;
}

}  // namespace tools
