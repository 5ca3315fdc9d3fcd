// What the lines of the process's log mean: the one table that a log's story is told by.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace tools {

enum class LineKind : uint8_t {
  quiet,  // nothing to tell

  // start and end of the process
  started,
  waits,       // for a service of the modem
  connected,   // to all of them
  notStarted,  // the process ends; its words tell why
  ready,       // for the next request
  ended,

  // a request, from its first line to the next that says ready
  received,
  identified,
  detail,     // its words tell what was read, written or said
  element,    // which one is meant until the next such line
  transfer,   // of an element, one of several maybe
  dumpAhead,  // the next dump is told, by what this line says of it
  dump,
  asks,       // the modem; it has not answered unless a line says so
  answers,    // that question; the words as in detail
  succeeded,  // the answer says success
  unserved,   // nothing serves the request
  failed,     // the answer says failure; its words tell why
  zeros,      // the modem failed, and the answer says success all the same

  trouble,  // something went wrong, whatever was going on

  // what the modem does by itself, on threads of their own
  indication,
  report,         // what came of it
  reportTrouble,  // what went wrong with it
  modemLog,       // what became of a modem log
  logTrouble,     // what went wrong with it
};

/// A line's text: literal parts and the places %d, %u, %x, %X and %s; the last takes all up to the next
/// literal part, or to the end. Blanks at the end do not matter.
///
/// In the words {N} stands for the N-th place, {*} for the element that is meant and {#} for the last dump.
/// A letter behind N tells what it is: e an errno, c a result of sending, n an element,
/// b the digits of bytes.
struct LineRow {
  std::string_view pattern;
  LineKind kind = LineKind::quiet;
  std::string_view words = {};
};

inline constexpr size_t kPlacesMax = 10;
using Places = std::array<std::string_view, kPlacesMax>;

/// The table in three: start, end and what every request has; the requests' own; what the modem does by
/// itself. Of rows with the same beginning the first that matches counts, so that those for all the rest come
/// last.
std::span<const LineRow> processLines();
std::span<const LineRow> serviceLines();
std::span<const LineRow> modemLines();

/// The first row of the table that a line's text is of, with what stands in its places; null when the line is
/// not known.
const LineRow* findLine(std::string_view text, Places& places);

/// What the words of a row need beside the line's places.
struct LineContext {
  std::string element;
  std::string dump;
  bool bench = false;  // the results of sending are the workstation's
};

/// The words of a row.
std::string inWords(std::string_view words, const Places& places, const LineContext& context);

/// Whether a result of sending among the places that the words name is the workstation's for no answer in
/// time.
bool tellsTimeOut(std::string_view words, const Places& places);

/// The first of the digits of many bytes, and how many bytes there are.
std::string shortened(std::string_view digits);

}  // namespace tools
