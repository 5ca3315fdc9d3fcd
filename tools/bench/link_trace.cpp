#include "tools/bench/link_trace.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <chrono>
#include <map>
#include <utility>

#include "handset/message_table.h"
#include "tools/bench/console.h"
#include "tools/records/field_value.h"

namespace tools {

namespace {

using handset::ByteView;
using handset::Crossing;

/// Bytes, or characters of a text, that a field is shown with at most.
constexpr size_t kBytesShown = 32;
constexpr size_t kCharactersShown = 64;

using NumberName = std::pair<int32_t, std::string_view>;
constexpr NumberName kCodeNames[] = {{handset::kMalformed, "a request of the wrong size"},
                                     {handset::kNotPublished, "no such service"},
                                     {handset::kUnknownMessage, "an unknown message"}};
constexpr NumberName kElementErrors[] = {{handset::kRdeNoElement, "no such element"},
                                         {handset::kRdeBadLength, "lengths that do not fit"}};

/// "16 (no such element)".
std::string named(std::span<const NumberName> names, int32_t number) {
  for (const auto& [of, name] : names)
    if (of == number) return fmt::format("{} ({})", number, name);
  return fmt::format("{}", number);
}

/// An indication's fields, and what they leave.
std::vector<FieldSpec> bodyFields(const Crossing& crossing) {
  Fields fields;
  if (crossing.indication) {
    if (const auto* row = handset::findIndication(crossing.id)) fields = row->fields;
  } else if (const auto* row = handset::findMessage(crossing.service, crossing.id)) {
    fields = row->request;
  }
  std::vector<FieldSpec> all(fields.begin(), fields.end());
  all.push_back({fields.empty() ? "payload" : "more", kRest, FieldKind::bytes});
  return all;
}

Fields responseFields(const Crossing& crossing) {
  const auto* row = handset::findMessage(crossing.service, crossing.id);
  return row != nullptr ? row->response : Fields(kPlainPayload);
}

/// What a count does not cover, and without one the zeros at the end, is left out.
std::string bytesText(ByteView bytes, std::optional<size_t> count) {
  const size_t counted = std::min(count.value_or(0), bytes.size());
  ByteView shown = bytes.first(counted);
  if (!handset::isZero(bytes.subspan(counted))) shown = withoutZerosBehind(bytes);
  if (shown.size() > kBytesShown && handset::isZero(shown)) return fmt::format("{} zeros", shown.size());
  if (shown.size() <= kBytesShown) return handset::toHex(shown);
  return fmt::format("{} ... ({} bytes)", handset::toHex(shown.first(kBytesShown)), shown.size());
}

/// The value in words; empty for one that says nothing.
std::string traceValue(const FieldSpec& field, ByteView bytes, std::optional<size_t> count) {
  if (field.kind == FieldKind::bytes || field.kind == FieldKind::zeros) return bytesText(bytes, count);
  if (!isNumber(field.kind) && handset::isZero(bytes)) return "";
  std::string value = valueOf(field.kind, bytes);
  if (value.size() <= kCharactersShown) return value;
  return fmt::format("{}... ({} bytes)", value.substr(0, kCharactersShown), bytes.size());
}

/// The values of fields by their names.
using Values = std::map<std::string_view, std::string>;

/// "NAME VALUE, ..." without what is known already; what is told is known then.
std::string fieldsText(Fields fields, ByteView body, Values& known) {
  std::vector<std::string> parts;
  std::optional<size_t> count;
  for (const FieldSpec& field : fields) {
    const ByteView bytes = body.first(std::min(field.size, body.size()));
    body = body.subspan(bytes.size());
    if (bytes.empty()) continue;
    std::string value = traceValue(field, bytes, std::exchange(count, std::nullopt));
    if (field.when_absent == WhenAbsent::lengthOfRest) count = static_cast<size_t>(numberIn(bytes));
    if (value.empty() || known[field.name] == value) continue;
    known[field.name] = value;
    if (field.name == "error" && known.contains("rde_index"))
      value = named(kElementErrors, static_cast<int32_t>(numberIn(bytes)));
    parts.push_back(fmt::format("{} {}", field.name, value));
  }
  return fmt::format("{}", fmt::join(parts, ", "));
}

std::string withColon(const std::string& what, const std::string& fields) {
  return fields.empty() ? what : what + ": " + fields;
}

}  // namespace

std::string indicationName(uint16_t id) {
  const auto* row = handset::findIndication(id);
  return row != nullptr ? std::string(row->name) : fmt::format("0x{:04X}", id);
}

std::string crossingName(const Crossing& crossing) {
  return crossing.indication ? indicationName(crossing.id)
                             : handset::messageName(crossing.service, crossing.id);
}

std::string outcomeText(const Crossing& crossing) {
  if (!crossing.reply) return "not answered";
  if (crossing.reply->code != 0) return "refused with code " + named(kCodeNames, crossing.reply->code);
  const Fields fields = responseFields(crossing);
  const handset::MessageRow* row = handset::findMessage(crossing.service, crossing.id);
  if (row == nullptr || fields.front().name != "result") return "answered";
  const ByteView body = crossing.reply->body;
  const uint64_t result = numberIn(body.first(std::min(fields.front().size, body.size())));
  if (result == row->done) return "success";
  return result > 1 ? fmt::format("failure (result {})", result) : "failure";
}

std::vector<std::string> traceLines(const Crossing& crossing) {
  // The outcome tells the result, and that there was no error.
  Values known{{"error", "0"}};
  const std::string asked =
      withColon(crossingName(crossing), fieldsText(bodyFields(crossing), crossing.body, known));
  if (crossing.indication) return {"indicates " + asked};
  if (!crossing.reply) return {asked, outcomeText(crossing)};
  Fields fields = responseFields(crossing);
  ByteView body = crossing.reply->body;
  if (fields.front().name == "result") {
    body = body.subspan(std::min(fields.front().size, body.size()));
    fields = fields.subspan(1);
  }
  return {asked, withColon(fmt::format("{} in {:.1f} ms", outcomeText(crossing),
                                       tookMs(crossing.asked, crossing.done)),
                           fieldsText(fields, body, known))};
}

DecodedRecord decodeBody(const Crossing& crossing) {
  return decodePlain(crossingName(crossing), bodyFields(crossing), crossing.body);
}

DecodedRecord decodeResponse(const Crossing& crossing) {
  return decodePlain(outcomeText(crossing), responseFields(crossing),
                     crossing.reply ? ByteView(crossing.reply->body) : ByteView{});
}

}  // namespace tools
