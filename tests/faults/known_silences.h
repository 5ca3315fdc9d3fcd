// What may come of a fault without a line that says so. docs/proof.md has the reasons.
#pragma once

#include <algorithm>
#include <iterator>
#include <string_view>

namespace faults {

struct KnownSilence {
  std::string_view fault;  // how the class's name begins
  std::string_view what;   // how the words for what differs begin
};

inline constexpr KnownSilence kKnownSilences[] = {
    {"file", "no /properties/"},
    {"file", "left /properties/#"},
    {"file", "left /data/adam/"},
    {"file", "left /dropbox/#"},
    {"memory", "modem indicate pfp"},
    {"link-short", "modem indicate "},
    {"", "restart without 13 "},
    {"", "modem indicate rf-save without 13 "},
    {"", "nv26 read"},
    {"", "spc validate"},
    {"", "coverage"},
};

inline bool isKnownSilence(std::string_view fault, std::string_view what) {
  return std::any_of(std::begin(kKnownSilences), std::end(kKnownSilences), [&](const KnownSilence& known) {
    return fault.starts_with(known.fault) && what.starts_with(known.what);
  });
}

}  // namespace faults
