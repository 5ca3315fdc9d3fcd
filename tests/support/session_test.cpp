#include "support/session_test.h"

#include <algorithm>
#include <istream>
#include <iterator>
#include <map>
#include <set>
#include <sstream>
#include <stdexcept>

namespace kesext_test {

namespace {

std::string readWord(std::istream& words) {
  std::string word;
  if (!(words >> word)) throw std::invalid_argument("a word is missing");
  return word;
}

uint32_t readId(std::istream& words) {
  return static_cast<uint32_t>(std::stoul(readWord(words), nullptr, 16));
}

uint32_t readNumber(std::istream& words) {
  return static_cast<uint32_t>(std::stoul(readWord(words)));
}

Bytes readBytes(std::istream& words) {
  constexpr std::string_view kText = "text:";
  Bytes bytes;
  for (std::string word; words >> word;) {
    const size_t star = word.find('*');
    const std::string unit = word.substr(0, star);
    const size_t times = star == std::string::npos ? 1 : std::stoul(word.substr(star + 1));
    if (unit == "pattern")
      bytes = concat(bytes, pattern(times));
    else if (unit.starts_with(kText))
      bytes = concat(bytes, handset::bytesOf(word.substr(kText.size())));
    else
      for (size_t i = 0; i < times; ++i)
        bytes = concat(bytes, hex(unit));
  }
  return bytes;
}

/// A message of a service.
struct MessageName {
  Service service;
  uint16_t id;
};

MessageName readMessage(std::istream& words) {
  const std::string name = readWord(words);
  for (const Service service : handset::kServices)
    if (handset::serviceName(service) == name) return {service, static_cast<uint16_t>(readId(words))};
  throw std::invalid_argument("no such service: " + name);
}

Bytes withCode(Bytes request) {
  constexpr std::string_view kCode = "654321";
  std::copy(kCode.begin(), kCode.end(), request.begin() + 12);
  return request;
}

}  // namespace

void SessionTest::Play(const std::string& name, const std::vector<std::string>& only) {
  for (const std::string& line : GoldenLines(name)) {
    if (!line.starts_with("$ ") && !line.starts_with("#")) continue;
    record_.push_back(line);
    std::istringstream words(line.substr(1));
    if (line.front() == '$') Do(words, only);
  }
  ExpectGolden(record_, name);
}

void SessionTest::Refuse(std::istream& words) {
  const auto id = static_cast<uint16_t>(readId(words));
  const Bytes refusal = handset::refusal(*handset::findMessage(Service::vendor, id), 9).value();
  const std::set<uint32_t> indexes{std::istream_iterator<uint32_t>(words), {}};
  modem_.handle(Service::vendor, id, [this, id, refusal, indexes](handset::ByteView body) {
    if (indexes.contains(handset::getLe<uint32_t>(body, 0))) return handset::Reply{0, refusal};
    return modem_.ownReply(Service::vendor, id, body);
  });
}

void SessionTest::Do(std::istream& words, const std::vector<std::string>& only) {
  const std::map<std::string, std::function<void()>> verbs = {
      {"element",
       [&] {
         const uint32_t index = readNumber(words);
         const Bytes data = readBytes(words);
         modem_.change([index](handset::ModemState& state) { state.elements.erase({index, 0}); });
         if (!data.empty()) modem_.setElement(index, data);
       }},
      {"answer",
       [&] {
         const MessageName message = readMessage(words);
         const size_t size = handset::findMessage(message.service, message.id)->response_size;
         modem_.answer(message.service, message.id, sized(readBytes(words), size));
       }},
      {"fail",
       [&] {
         const MessageName message = readMessage(words);
         modem_.fail(message.service, message.id, static_cast<int32_t>(readNumber(words)));
       }},
      {"refuse", [&] { Refuse(words); }},
      {"restore",
       [&] {
         const MessageName message = readMessage(words);
         modem_.restore(message.service, message.id);
       }},
      {"cdma",
       [&] {
         const uint32_t id = readId(words);
         RecordAnswer(withCode(cdmaRequest(id, readBytes(words))), only);
       }},
      {"generic",
       [&] {
         const uint32_t id = readId(words);
         RecordAnswer(genericRequest(id, readBytes(words)), only);
       }},
      {"raw", [&] { RecordAnswer(readBytes(words), only); }},
      {"indicate",
       [&] {
         const auto id = static_cast<uint16_t>(readId(words));
         RecordIndication(id, readBytes(words));
       }},
  };
  verbs.at(readWord(words))();
}

}  // namespace kesext_test
