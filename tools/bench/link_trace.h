// What crosses the modem link, in words.
#pragma once

#include <string>
#include <vector>

#include "handset/modem.h"
#include "tools/records/decode.h"

namespace tools {

/// What became of a request: "success", "failure", "refused with code 90", "not answered"; "answered" where
/// the response does not tell.
std::string outcomeText(const handset::Crossing& crossing);

/// "rde-read: rde_index 10017 (0x2721), ...", and on a second line what became of it and what the response
/// has that the request had not; "indicates carrier-value: value 7" alone. Bytes that are zero are left out.
std::vector<std::string> traceLines(const handset::Crossing& crossing);

/// Request, or indication, and response field by field.
DecodedRecord decodeBody(const handset::Crossing& crossing);
DecodedRecord decodeResponse(const handset::Crossing& crossing);

/// An indication as words have it: "pfp"; "0x0123" for one that is not in the table.
std::string indicationName(uint16_t id);

/// The name of the message or of the indication.
std::string crossingName(const handset::Crossing& crossing);

}  // namespace tools
