#include "tools/scenario/steps.h"

#include <fmt/format.h>

namespace tools {

namespace {

std::string describe(std::span<const StepWord> words, std::string_view indent) {
  std::string lines;
  for (const StepWord& word : words)
    lines += fmt::format("{0}\"{1}\": {2}\n{0}    {3}\n", indent, word.name, word.takes, word.help);
  return lines;
}

}  // namespace

Play::Play(Station& at)
    : station(at),
      log_mark(at.started() ? at.process().logMark() : 0),
      dropbox_mark(at.folder().dropboxEntries().size()) {
  at.modem().takeRequests();
}

std::string scenarioFormat() {
  return "A scenario is {\"title\": T, \"about\": T, \"steps\": [STEP, ...]}. A STEP is an object with\n"
         "  \"title\": T\n"
         "    optional, for the reader\n"
         "and one of these, which it does; where there can be several of what follows, [..., ...] holds "
         "them:\n" +
         describe(actionWords(), "  ") +
         "  \"expect\": {...}\n"
         "    what has to be so then; alone, it is a step as well:\n" +
         describe(expectationWords(), "    ");
}

}  // namespace tools
