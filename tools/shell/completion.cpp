#include "tools/shell/completion.h"

#include <algorithm>
#include <set>

#include "tools/bench/modem_control.h"
#include "tools/records/encode.h"
#include "tools/records/record_table.h"
#include "tools/text/usage_error.h"
#include "tools/text/words.h"

namespace tools {

namespace {

using Candidates = std::set<std::string>;

/// How many words of `phrase` the line begins with, when that is all of them; 0 otherwise.
size_t wordsMatched(std::string_view phrase, Words line) {
  const std::vector<std::string> words = splitWords(phrase);
  const bool matches = words.size() <= line.size() && std::equal(words.begin(), words.end(), line.begin());
  return matches ? words.size() : 0;
}

/// The next word of a phrase that the line is at the beginning of.
void offerPhrase(std::string_view phrase, Words line, Candidates& into) {
  const std::vector<std::string> words = splitWords(phrase);
  if (line.size() < words.size() && std::equal(line.begin(), line.end(), words.begin()))
    into.insert(words[line.size()]);
}

void offerArguments(Fields fields, Words given, Candidates& into) {
  for (const std::string_view name : argumentNames(fields)) {
    const std::string argument = std::string(name) + '=';
    const auto isThis = [&](const std::string& word) { return word.starts_with(argument); };
    if (std::none_of(given.begin(), given.end(), isThis)) into.insert(argument);
  }
}

void offerRequest(const RequestRow& row, Words given, Candidates& into) {
  offerArguments(row.request, given, into);
  if (row.family == Family::cdma) offerArguments({&kSpcField, 1}, given, into);
}

void offerIndication(Words given, Candidates& into) {
  for (const PackageRow& row : packageTable())
    offerPhrase(row.name, given, into);
  for (const handset::IndicationRow& row : handset::indicationTable()) {
    offerPhrase(row.name, given, into);
    if (wordsMatched(row.name, given) > 0) offerArguments(row.fields, given.subspan(1), into);
  }
}

void offerAlternatives(std::string_view alternatives, Candidates& into) {
  while (!alternatives.empty()) {
    const size_t end = std::min(alternatives.find('|'), alternatives.size());
    into.emplace(alternatives.substr(0, end));
    alternatives.remove_prefix(std::min(end + 1, alternatives.size()));
  }
}

void offerRequests(Words line, Candidates& into) {
  for (const RequestRow& row : requestTable()) {
    offerPhrase(row.command, line, into);
    if (const size_t matched = wordsMatched(row.command, line))
      offerRequest(row, line.subspan(matched), into);
  }
}

void offerTopics(std::span<const Syntax> commands, Words line, Candidates& into) {
  for (const Syntax& command : commands)
    offerPhrase(command.name, line, into);
  for (const std::string_view request : requestNames())
    offerPhrase(request, line, into);
}

template <typename Rows>
void offerCommands(const Rows& rows, Words line, Candidates& into);

/// The next word of what one of the commands takes.
void offerNext(std::span<const Syntax> commands, std::string_view arguments, Words given, Candidates& into) {
  const std::vector<std::string> takes = splitWords(arguments);
  if (takes.empty()) return;
  if (takes.front() == "REQUEST") return offerRequests(given, into);
  if (takes.front() == "COMMAND") return offerCommands(modemCommandTable(), given, into);
  if (takes.front() == "INDICATION") return offerIndication(given, into);
  if (takes.front() == "[TOPIC]") return offerTopics(commands, given, into);
  if (given.size() >= takes.size()) return;
  const std::string& next = takes[given.size()];
  if (next == "MESSAGE")
    for (const std::string_view name : messageNames())
      into.emplace(name);
  if (next.find('|') != std::string::npos) offerAlternatives(next, into);
}

template <typename Rows>
void offerCommands(const Rows& rows, Words line, Candidates& into) {
  std::vector<Syntax> commands;
  for (const auto& row : rows)
    commands.push_back({row.name, row.arguments});
  for (const Syntax& command : commands) {
    offerPhrase(command.name, line, into);
    if (const size_t matched = wordsMatched(command.name, line))
      offerNext(commands, command.arguments, line.subspan(matched), into);
  }
}

std::string commonStart(const std::vector<std::string>& words) {
  std::string common = words.front();
  for (const std::string& word : words) {
    const auto differ = std::mismatch(common.begin(), common.end(), word.begin(), word.end());
    common.erase(differ.first, common.end());
  }
  return common;
}

}  // namespace

std::vector<std::string> candidates(std::span<const Syntax> commands, Words before, std::string_view word) {
  Candidates all;
  offerRequests(before, all);
  offerCommands(commands, before, all);
  std::erase_if(all, [word](const std::string& candidate) { return !candidate.starts_with(word); });
  return {all.begin(), all.end()};
}

Completion complete(std::span<const Syntax> commands, std::string_view line) {
  std::vector<std::string> words;
  try {
    words = splitWords(line);
  } catch (const UsageError&) {
    return {};
  }
  std::string word;
  if (!line.empty() && line.back() != ' ' && line.back() != '\t') {
    if (words.empty()) return {};
    word = words.back();
    words.pop_back();
  }
  // What stands there with quotes is not what a candidate could be put behind.
  if (!line.ends_with(word)) return {};
  Completion completion{.candidates = candidates(commands, words, word)};
  if (completion.candidates.empty()) return {};
  completion.insertion = commonStart(completion.candidates).substr(word.size());
  const bool certain = completion.candidates.size() == 1 && !completion.candidates.front().ends_with('=');
  if (certain) completion.insertion += ' ';
  return completion;
}

}  // namespace tools
