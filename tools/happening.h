// What the process and the modem say beside the answers, in the order of time.
#pragma once

#include <string>
#include <variant>
#include <vector>

#include "handset/bytes.h"
#include "handset/line_reader.h"
#include "handset/timeout.h"
#include "tools/console.h"

namespace tools {

struct Happening {
  handset::Instant time;
  std::variant<std::string, handset::Bytes> what;  // a line of the log; an unsolicited message
};

using Happenings = std::vector<Happening>;

void append(Happenings& all, std::vector<handset::StampedLine> lines);
void sortByTime(Happenings& happenings);
void show(const Console& console, const Happening& happening);

}  // namespace tools
