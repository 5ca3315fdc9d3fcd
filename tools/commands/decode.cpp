#include <fmt/format.h>
#include <fmt/ranges.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "handset/hook_records.h"
#include "tools/bench/record_json.h"
#include "tools/commands/commands.h"
#include "tools/log/log_dumps.h"
#include "tools/records/encode.h"
#include "tools/records/field_value.h"
#include "tools/records/record_kind.h"
#include "tools/text/input_lines.h"
#include "tools/text/usage_error.h"

namespace tools {

namespace {

using handset::Bytes;

/// Far above any record's digits; keeps what is held of a log small.
constexpr size_t kTextMax = size_t{128} * 1024;  // characters

constexpr FieldSpec kDigitsSoFar[] = {{"digits", kRest, FieldKind::bytes}};

constexpr const char* kFooter =
    "Standard input is hexadecimal digits, a record on each line, or several lines a record with --blocks; "
    "blanks do not\n"
    "matter. Or it is a log: from the first line with a priority and a tag on (\"E RIL-KESEXT: ...\"), only "
    "the\n"
    "\"HexDump: Data ...\" lines count. What such a dump is, the line before it tells; where that is "
    "missing, "
    "its bytes do.\n\n"
    "Without --as the bytes tell the kind: ids, lengths and zeros stand elsewhere in each. What an answer is "
    "made of, its\n"
    "id tells; only the answer to data-plmn has no header, so that needs --request data-plmn.\n\n"
    "With --json each record is an object on a line of its own: what 'send --json' has, \"kind\", \"line\" "
    "and "
    "\"may_be\", the\n"
    "kind that it could be as well. Where a record does not parse, \"problem\" and \"problem_offset\" tell "
    "from which byte on,\n"
    "or from which character on when kind is \"text\".\n\n"
    "The status is 1 when a record did not parse, or none was there.\n\n"
    "Examples:\n"
    "  hookctl decode BD000002 04000000 00000000 000000000000 1E000000\n"
    "  adb logcat -d | hookctl decode\n"
    "  xxd -p answer.bin | hookctl decode --blocks --as answer\n"
    "  hookctl decode --request data-plmn < plmn.hex";

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

/// The bytes of hexadecimal digits up to where they are none.
std::pair<Bytes, std::optional<RecordProblem>> readDigits(std::string_view text) {
  constexpr std::string_view kDigits = "0123456789abcdefABCDEF";
  constexpr std::string_view kBlanks = " \t\r\n";
  const size_t size = std::min(text.size(), kTextMax);
  std::string digits;
  for (size_t at = 0; at < size; ++at) {
    if (kBlanks.find(text[at]) != std::string_view::npos) continue;
    if (kDigits.find(text[at]) == std::string_view::npos) {
      const Bytes wrong = handset::bytesOf(text.substr(at, 1));
      digits.resize(digits.size() / 2 * 2);
      return {handset::hex(digits),
              RecordProblem{at, "in the text, " + quoted(wrong) + " is no hexadecimal digit"}};
    }
    digits += text[at];
  }
  const bool odd = digits.size() % 2 != 0;
  if (odd) digits.pop_back();
  if (text.size() > kTextMax)
    return {handset::hex(digits), RecordProblem{kTextMax, "in the text, more follows than any record has"}};
  if (odd)
    return {handset::hex(digits), RecordProblem{size, "in the text, the last byte lacks its second digit"}};
  return {handset::hex(digits), std::nullopt};
}

/// The request that an answer is read by: its bytes, or its header by name.
Bytes requestOf(const std::string& text) {
  auto [bytes, problem] = readDigits(text);
  if (!problem) return bytes;
  const std::vector<std::string> words = splitWords(text);
  Words left = words;
  const RequestRow& row = takeRequestName(left);
  if (!left.empty()) throw UsageError(fmt::format("--request takes {} without arguments", row.command));
  return row.family == Family::cdma ? handset::cdmaRequest(row.id) : handset::genericRequest(row.id);
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

  /// Shows what a text is; `line` is its first in the input, 0 for none.
  void show(std::string_view text, size_t line, const DumpAnnouncement* announced) {
    const Interpretation reading = read(text, announced);
    ++shown_;
    all_parsed_ = all_parsed_ && !reading.decoded.problem;
    if (options_.json)
      printObject(reading, line);
    else
      print(reading, line);
    flushOutput();
  }
  void showInput();
  [[nodiscard]] bool allParsed() const { return all_parsed_; }

 private:
  [[nodiscard]] Interpretation read(std::string_view text, const DumpAnnouncement* announced) const {
    auto [bytes, problem] = readDigits(text);
    Interpretation reading{.bytes = std::move(bytes)};
    if (problem) {
      reading.kind = "text";
      reading.decoded = decodePlain("text that is no record", kDigitsSoFar, reading.bytes);
      reading.decoded.problem = problem;
    } else if (announced != nullptr) {
      reading.kind = announced->fields.empty() ? nameOf(RecordKind::answer) : "data";
      reading.decoded = decodeDump(*announced, reading.bytes);
    } else {
      const KindGuess guess = as_ ? KindGuess{*as_} : guessKind(reading.bytes);
      reading.kind = nameOf(guess.kind);
      reading.other = guess.other;
      reading.decoded = decodeAs(guess.kind, reading.bytes, request_);
    }
    return reading;
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
    printJsonLine(object);
  }

  const DecodeOptions& options_;
  Console console_;
  std::optional<RecordKind> as_;
  Bytes request_;
  size_t shown_ = 0;
  bool all_parsed_ = true;
};

void Decoder::showInput() {
  InputLines input(STDIN_FILENO);
  std::string line;
  std::string block;
  size_t block_line = 0;
  bool in_log = false;
  const DumpAnnouncement* announced = nullptr;
  const auto endBlock = [&] {
    if (block_line != 0) show(block, block_line, nullptr);
    block_line = 0;
    block.clear();
  };
  size_t number = 0;
  while (input.next(line, kTextMax + 1)) {
    ++number;
    const std::optional<std::string_view> dump = dumpOn(line);
    in_log = in_log || dump || isLogLine(line);
    const bool blank = line.find_first_not_of(" \t") == std::string::npos;
    if (in_log || blank) endBlock();
    if (in_log) {
      if (dump) show(*dump, number, std::exchange(announced, nullptr));
      if (isUnshownDump(line)) announced = nullptr;
      if (const DumpAnnouncement* found = announcementOn(line)) announced = found;
    } else if (!blank && !options_.blocks) {
      show(line, number, nullptr);
    } else if (!blank) {
      if (block_line == 0) block_line = number;
      if (block.size() <= kTextMax) block += (block.empty() ? "" : "\n") + line;
    }
  }
  endBlock();
  if (shown_ == 0)
    throw std::runtime_error(
        fmt::format("standard input has no record: {} lines, none of them hexadecimal digits or with "
                    "\"HexDump: Data\"; hookctl decode --help tells what is read",
                    number));
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
  command->footer(kFooter);
  command->callback([&common, options] {
    Decoder decoder(*options, common);
    if (!options->words.empty()) {
      decoder.show(fmt::format("{}", fmt::join(options->words, " ")), 0, nullptr);
    } else {
      if (isatty(STDIN_FILENO) == 1) complain("Type or paste records, each on a line; Ctrl-D ends.");
      decoder.showInput();
    }
    common.status = decoder.allParsed() ? kStatusGood : kStatusWrong;
  });
}

}  // namespace tools
