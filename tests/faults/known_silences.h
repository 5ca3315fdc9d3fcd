// What may come of a fault without a line that says so. docs/proof.md has the reasons.
#pragma once

#include <algorithm>
#include <iterator>
#include <string_view>

namespace faults {

struct KnownSilence {
  std::string_view fault;  // how the class's name begins
  std::string_view what;   // and the name of what differs: a file of the handset, or a step by its words
};

inline constexpr KnownSilence kKnownSilences[] = {
    {"file", "/properties/"},
    {"file", "/data/adam/.000"},
    {"file", "/data/adam/#"},
    {"file", "/data/adam/~adam"},
    {"file", "/dropbox/#"},
    {"memory", "modem indicate pfp"},
    {"link-short", ""},
    {"", "restart"},
    {"", "modem indicate rf-save"},
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
