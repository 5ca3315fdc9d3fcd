// What the process and the modem say beside the answers, in the order of time.
#pragma once

#include <string>
#include <variant>
#include <vector>

#include "handset/bytes.h"
#include "handset/line_reader.h"
#include "handset/modem.h"
#include "handset/timeout.h"
#include "tools/bench/console.h"

namespace tools {

struct Happening {
  handset::Instant time;
  /// A line of the log; an unsolicited message; what crossed the modem link.
  std::variant<std::string, handset::Bytes, handset::Crossing> what;
};

using Happenings = std::vector<Happening>;

void append(Happenings& all, std::vector<handset::StampedLine> lines);
void append(Happenings& all, std::vector<handset::Crossing> crossings);
void sortByTime(Happenings& happenings);
void show(const Console& console, const Happening& happening);

}  // namespace tools
