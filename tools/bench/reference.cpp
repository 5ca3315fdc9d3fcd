#include "tools/bench/reference.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "tools/bench/modem_control.h"
#include "tools/records/encode.h"
#include "tools/records/record_table.h"
#include "tools/text/window.h"

namespace tools {

namespace {

/// Of what stands behind a request's name.
constexpr size_t kIndent = 32;

std::string idOf(const RequestRow& row) {
  return row.family == Family::cdma ? fmt::format("0x{:08X}", row.id) : fmt::format("0x{:06X}", row.id);
}

/// Whether `name` is the whole of a command's name or its first words.
bool namedBy(std::string_view command, std::string_view name) {
  return name.empty() || command == name || command.starts_with(std::string(name) + ' ');
}

}  // namespace

std::string requestReference(std::string_view name) {
  std::string text;
  for (const RequestRow& row : requestTable()) {
    if (!namedBy(row.command, name)) continue;
    text += fmt::format("  {:<10} {:<18} {}", idOf(row), row.command,
                        wrapped(atBlanks(row.name), kIndent).substr(kIndent));
    text += wrapped(argumentHelp(row), kIndent);
  }
  return text;
}

std::string modemReference() {
  std::string text;
  for (const ModemCommandRow& row : modemCommandTable())
    text += fmt::format("  {:<42} {}\n", fmt::format("{} {}", row.name, row.arguments), row.help);
  return text;
}

std::string modemNamesReference() {
  std::string text = "An INDICATION is one of\n";
  for (const handset::IndicationRow& row : handset::indicationTable()) {
    text += fmt::format("  {:<14} {}\n", row.name, row.help);
    text += wrapped(argumentHelp(row.fields), 17);
  }
  for (const PackageRow& row : packageTable())
    text += fmt::format("  {:<14} {}\n  {:<14} PACKAGE BYTES\n", row.name, row.help, "");
  text += "  0x0110         any other, by its id, and bytes\n";
  text += "A MESSAGE is one of\n";
  for (const std::string_view name : messageNames())
    text += fmt::format("  {}\n", name);
  return text;
}

}  // namespace tools
