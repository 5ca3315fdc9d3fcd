#include <fmt/format.h>

#include <memory>
#include <string>
#include <vector>

#include "tools/commands.h"
#include "tools/encode.h"
#include "tools/modem_control.h"
#include "tools/record_json.h"
#include "tools/reference.h"
#include "tools/station.h"

namespace tools {

namespace {

struct SendOptions {
  std::vector<std::string> words;
  std::vector<std::string> modem_lines;
  std::string root;
  int instance = 0;
  bool json = false;
  bool list = false;
};

void send(const SendOptions& options, const Common& common) {
  const handset::Bytes request = encodeWords(options.words);
  Station station({.executable = common.executable,
                   .root = options.root,
                   .instance_id = options.instance,
                   .share_modem = options.modem_lines.empty()});
  station.start();
  for (const std::string& line : options.modem_lines)
    commandModem(station.modem(), splitWords(line));
  const handset::Bytes answer = station.ask(request);
  station.end();
  if (options.json) {
    printJson({{"request", toJson(decodeRequest(request), request)},
               {"answer", toJson(decodeAnswer(request, answer), answer)}});
    return;
  }
  const Console console(common.colour);
  console.record("request", decodeRequest(request), request);
  console.record("answer", decodeAnswer(request, answer), answer);
}

}  // namespace

void addSendCommand(CLI::App& tool, Common& common) {
  CLI::App* command = tool.add_subcommand("send", "Sends one request and shows its answer");
  auto options = std::make_shared<SendOptions>();
  command->add_option("request", options->words,
                      "NAME [ARGUMENT ...]: a request by name, its arguments in order or as FIELD=VALUE, and "
                      "spc=CODE for a CDMA\nrequest; or raw HEX");
  command
      ->add_option("--root", options->root,
                   "a handset folder that is kept, with the modem that runs there, if one does; without it, "
                   "a fresh one")
      ->option_text("FOLDER");
  command
      ->add_option("--modem", options->modem_lines,
                   "tells the modem something first, such as 'fail rde-read 90'; may be given again")
      ->allow_extra_args(false)
      ->option_text("LINE");
  command->add_option("--instance", options->instance, "the process's instance id")->option_text("N");
  command->add_flag("--json", options->json, "for scripts: request and answer with their fields and bytes");
  command->add_flag("--list", options->list, "tells all requests, their ids and arguments");
  command->footer(
      "Bytes are hexadecimal digits, text:CHARACTERS or @FILE; numbers are decimal or 0x-hexadecimal.\n"
      "The status is 0 when an answer came, whatever it says; 2 when there is no such request.\n\n"
      "Examples:\n"
      "  hookctl send rde write 10017 0102030405\n"
      "  hookctl send nam write mdn=5551234560 min=6195551234 mcc=310 imsi11_12=12 spc=000000\n"
      "  hookctl send --json plmn 310 120\n"
      "  hookctl send --modem 'fail utility 90' sysinfo-filter 1");
  command->callback([&common, options] {
    if (options->list)
      fmt::print("{}", requestReference());
    else
      send(*options, common);
  });
}

}  // namespace tools
