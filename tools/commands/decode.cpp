#include <fmt/format.h>
#include <fmt/ranges.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <memory>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "handset/hook_records.h"
#include "tools/bench/record_json.h"
#include "tools/commands/commands.h"
#include "tools/log/log_dumps.h"
#include "tools/log/log_lines.h"
#include "tools/records/encode.h"
#include "tools/records/field_value.h"
#include "tools/text/hex_text.h"
#include "tools/text/input_lines.h"
#include "tools/text/usage_error.h"

namespace tools {

namespace {

using handset::Bytes;

constexpr FieldSpec kDigitsSoFar[] = {{"digits", kRest, FieldKind::bytes}};

constexpr const char* kDecodeFooter =
    R"(Standard input is a record on each line, as hexadecimal digits in any grouping, with blanks, commas, colons,
dashes, brackets, quotes, 0x and \x; or what hexdump -C, xxd, xxd -p, xxd -i, od -A x -t x1 or od -An -t x1
print, whose rows go on as long as their offsets or commas do, or while they are full; with --blocks a
record goes on until an empty line. A '#' begins a comment. Or it is a log, in any form of logcat: from the
first line with a priority and a tag on, only the "HexDump: Data ..." lines count. What such a dump is, the
line before it tells; where that is missing, its bytes do.

Without --as the bytes tell the kind: the one that they parse as. What an answer is made of, its id tells;
only the answer to data-plmn has no header, so that needs --request data-plmn.

With --json each record is an object on a line of its own: what 'send --json' has, "kind", "line" and
"may_be", the kind that it could be as well. Where a record does not parse, "problem" and "problem_offset"
tell from which byte on, or from which character on when kind is "text".

The status is 1 when a record did not parse, or none was there.

Examples:
  hookctl decode BD000002 04000000 00000000 000000000000 1E000000
  adb logcat -d | hookctl decode
  xxd answer.bin | hookctl decode --as answer
  hookctl decode --request data-plmn < plmn.hex)";

struct DecodeOptions {
  std::vector<std::string> words;
  std::optional<RecordKind> as;
  std::string request;
  bool blocks = false;
  bool json = false;
};

/// What was made of a text.
struct Interpretation {
  std::string_view kind;
  std::optional<RecordKind> other;
  Bytes bytes;
  DecodedRecord decoded;
};

/// Why the rest of a line is no bytes, where it is none.
std::optional<RecordProblem> problemIn(const HexRow& row, std::string_view line) {
  if (!row.wrong) return std::nullopt;
  const Bytes wrong = handset::bytesOf(line.substr(*row.wrong, 1));
  return RecordProblem{*row.wrong, fmt::format("in the text, {} is no hexadecimal digit", quoted(wrong))};
}

Bytes wholeBytes(std::string_view digits) {
  return handset::hex(digits.substr(0, std::min(digits.size(), HexText::kMost) / 2 * 2));
}

/// The request that an answer is read by: its bytes, or its header by name.
Bytes requestOf(const std::string& line) {
  const HexRow row = HexText().read(line);
  if (!row.wrong && row.digits.size() % 2 == 0) return wholeBytes(row.digits);
  const std::vector<std::string> words = splitWords(line);
  Words left = words;
  const RequestRow& request = takeRequestName(left);
  if (!left.empty()) throw UsageError(fmt::format("--request takes {} without arguments", request.command));
  return request.family == Family::cdma ? handset::cdmaRequest(request.id)
                                        : handset::genericRequest(request.id);
}

class Decoder {
 public:
  Decoder(const DecodeOptions& options, const Common& common)
      : options_(options), console_(common.colour), as_(options.as) {
    if (options.request.empty()) return;
    if (as_.value_or(RecordKind::answer) != RecordKind::answer)
      throw UsageError("--request tells what an answer answers; leave out --as or say --as answer");
    as_ = RecordKind::answer;
    request_ = requestOf(options.request);
  }

  /// Takes a line; `number` is its place in the input, 0 for none.
  void take(std::string& line, size_t number);
  /// Shows what is left.
  void finish();
  [[nodiscard]] bool allParsed() const { return all_parsed_; }
  [[nodiscard]] bool hasShown() const { return shown_; }

 private:
  void takeRow(std::string_view line, size_t number);
  void show(const Interpretation& reading, size_t line);
  [[nodiscard]] Interpretation read(const Bytes& bytes) const {
    const KindGuess guess = as_ ? KindGuess{*as_} : guessKind(bytes);
    return {nameOf(guess.kind), guess.other, bytes, decodeAs(guess.kind, bytes, request_)};
  }
  [[nodiscard]] bool parses(const std::string& digits) const {
    return digits.size() % 2 == 0 && !read(wholeBytes(digits)).decoded.problem;
  }
  void print(const Interpretation& reading, size_t line) const {
    if (line != 0) console_.step(fmt::format("line {}", line));
    const bool unsolicited = reading.kind == nameOf(RecordKind::unsolicited);
    console_.record(unsolicited ? "message" : reading.kind, reading.decoded, reading.bytes);
    if (reading.other)
      console_.note(fmt::format("taken as {}; it can be {} as well, as which --as {} takes it", reading.kind,
                                nameOf(*reading.other), nameOf(*reading.other)));
  }
  static void printObject(const Interpretation& reading, size_t line) {
    nlohmann::ordered_json object{{"kind", reading.kind}};
    if (reading.other) object["may_be"] = nameOf(*reading.other);
    if (line != 0) object["line"] = line;
    object.update(toJson(reading.decoded, reading.bytes));
    printJson(object, true);
  }

  const DecodeOptions& options_;
  Console console_;
  std::optional<RecordKind> as_;
  Bytes request_;
  LogReader log_;
  bool in_log_ = false;
  const DumpAnnouncement* announced_ = nullptr;
  HexText text_;
  size_t text_line_ = 0;
  std::optional<RecordProblem> text_problem_;
  size_t text_end_ = 0;  // of its last line
  bool shown_ = false;
  bool all_parsed_ = true;
};

void Decoder::show(const Interpretation& reading, size_t line) {
  shown_ = true;
  all_parsed_ = all_parsed_ && !reading.decoded.problem;
  if (options_.json)
    printObject(reading, line);
  else
    print(reading, line);
  flushOutput();
}

void Decoder::take(std::string& line, size_t number) {
  const std::optional<LogLine> own = log_.read(line);
  const std::string_view said = own ? own->text : line;
  const std::optional<std::string_view> dump = dumpOn(said);
  const DumpAnnouncement* announced = announcementOn(said);
  in_log_ = in_log_ || own || dump || announced != nullptr;
  if (!in_log_) return takeRow(line, number);
  finish();
  if (dump) takeRow(*dump, number);
  finish();
  if (isUnshownDump(said)) announced_ = nullptr;
  if (announced != nullptr) announced_ = announced;
}

void Decoder::takeRow(std::string_view line, size_t number) {
  if (line.starts_with("unsigned ")) return finish();  // around what xxd -i prints
  const HexRow row = text_.read(line);
  if (line == "*" && text_.isDump()) return text_.squeeze();
  if (row.wrong && isLogLine(line)) {
    in_log_ = true;
    return finish();
  }
  const bool blank = row.offset.empty() && row.digits.empty() && !row.wrong;
  if (blank && line.find('#') != std::string_view::npos) return;
  const bool apart = text_.isDump() || !row.offset.empty() || parses(row.digits);
  if (blank || (apart && !options_.blocks && !text_.goesOn(row))) finish();
  if (blank) return;
  if (text_.empty()) text_line_ = number;
  text_.add(row);
  text_problem_ = problemIn(row, line);
  text_end_ = line.size();
  const auto* plain = std::ranges::find(HexText::kPlainRows, row.digits.size());
  const bool full = plain != std::end(HexText::kPlainRows) && !parses(text_.digits());
  const bool more = options_.blocks || text_.isOpen() || (text_.isDump() ? !row.digits.empty() : full);
  if (row.wrong || !more) finish();
}

void Decoder::finish() {
  if (text_.empty()) return;
  const DumpAnnouncement* announced = std::exchange(announced_, nullptr);
  const std::string& digits = text_.digits();
  const Bytes bytes = wholeBytes(digits);
  if (!text_problem_ && digits.size() > HexText::kMost)
    text_problem_ = {HexText::kMost, "in the text, more follows than any record has"};
  if (!text_problem_ && digits.size() % 2 != 0)
    text_problem_ = {text_end_, "in the text, the last byte lacks its second digit"};
  Interpretation reading = read(bytes);
  if (text_problem_) {
    reading = {"text", std::nullopt, bytes, decodePlain("text that is no record", kDigitsSoFar, bytes)};
    reading.decoded.problem = text_problem_;
  } else if (announced != nullptr) {
    reading = {announced->fields.empty() ? nameOf(RecordKind::answer) : "data", std::nullopt, bytes,
               decodeDump(*announced, bytes)};
  }
  show(reading, text_line_);
  text_ = {};
}

}  // namespace

void addDecodeCommand(CLI::App& tool, Common& common) {
  CLI::App* command =
      tool.add_subcommand("decode", "Names what records or a log's dumps say, field by field");
  auto options = std::make_shared<DecodeOptions>();
  command->add_option("HEX", options->words,
                      "one record as hexadecimal digits, in any number of words; standard input without any");
  command
      ->add_option("--as", options->as,
                   "request, answer or unsolicited: what the bytes are, where no log says so")
      ->option_text("KIND")
      ->transform(oneOf({"request", "answer", "unsolicited"}));
  command->add_option("--request", options->request,
                      "HEX or NAME of the request that is answered; --as answer goes without saying");
  command->add_flag("--blocks", options->blocks, "a record goes on until an empty line");
  command->add_flag("--json", options->json, "for scripts: each record with its fields and bytes");
  command->footer(kDecodeFooter);
  command->callback([&common, options] {
    Decoder decoder(*options, common);
    size_t number = 0;
    std::string line;
    std::istringstream words(fmt::format("{}", fmt::join(options->words, " ")));
    while (std::getline(words, line))
      decoder.take(line, 0);
    if (options->words.empty()) {
      if (isatty(STDIN_FILENO) == 1) complain("Type or paste records, each on a line; Ctrl-D ends.");
      for (InputLines input(STDIN_FILENO); input.next(line, HexText::kMost + 1);)
        decoder.take(line, ++number);
    }
    decoder.finish();
    if (!decoder.hasShown())
      throw std::runtime_error(fmt::format(
          "there is no record: {} lines of standard input, none of them hexadecimal digits or with "
          "\"HexDump: Data\"; hookctl decode --help tells what is read",
          number));
    common.status = decoder.allParsed() ? kStatusGood : kStatusWrong;
  });
}

}  // namespace tools
