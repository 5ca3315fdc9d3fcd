// Requests put together from the words that a person types: NAME [ARGUMENT ...] [spc=CODE]. An argument is
// FIELD=VALUE, or the value alone for the next field that has to be given.
#pragma once

#include <string>
#include <vector>

#include "handset/bytes.h"
#include "tools/records/record_table.h"
#include "tools/text/words.h"

namespace tools {

/// The request that the first words name; takes them off. Throws UsageError, with the nearest names, when
/// there is none.
const RequestRow& takeRequestName(Words& words);

/// A field's bytes in a record for a value as a person writes it: filled up with zeros, never cut. Throws
/// UsageError.
handset::Bytes encodeField(const FieldSpec& field, std::string_view value);

/// The fields' bytes, one after the other, as `command` is given them. Throws UsageError when an argument is
/// missing, unknown or out of range.
handset::Bytes encodeFields(std::string_view command, Fields fields, Words arguments);

/// Before a request, lets its fields of digits be anything.
inline constexpr std::string_view kForce = "force";

/// The record of what the words say, or of the bytes behind "raw".
handset::Bytes encodeWords(Words words);

/// "mcc (0 to 65535)", "mnc (0 to 65535)": what fields are given as, for help and errors.
std::vector<std::string> argumentHelp(Fields fields);
std::vector<std::string> argumentHelp(const RequestRow& row);

/// What "NAME=" may begin an argument for these fields.
std::vector<std::string_view> argumentNames(Fields fields);

/// The names of all requests.
std::vector<std::string_view> requestNames();

}  // namespace tools
