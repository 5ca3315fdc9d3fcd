#include "tools/commands/commands.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <memory>
#include <utility>

#include "tools/commands/own_files.h"
#include "tools/text/usage_error.h"
#include "tools/text/words.h"

namespace tools {

std::string Common::process() const {
  return executable.empty() ? need(kProcess) : executable;
}

CLI::Validator oneOf(std::vector<std::string> names) {
  return {[names = std::move(names)](std::string& word) -> std::string {
            const auto found = std::find(names.begin(), names.end(), word);
            if (found == names.end())
              return fmt::format("takes one of {}, not '{}'", fmt::join(names, ", "), word);
            word = std::to_string(found - names.begin());
            return "";
          },
          ""};
}

CLI::App& findCommand(const CLI::App& tool, const std::string& name) {
  std::vector<std::string_view> names;
  for (const CLI::App* command : tool.get_subcommands({})) {
    if (command->get_name() == name) return *tool.get_subcommand(name);
    names.push_back(command->get_name());
  }
  throw UsageError(fmt::format("there is no command '{}'{}; hookctl --help tells what there is", name,
                               didYouMean(name, names)));
}

void addShared(CLI::App& command, const SharedOptions& options) {
  if (options.root != nullptr)
    command
        .add_option("--root", *options.root,
                    "a handset folder, made when missing and kept; a fresh one when not given")
        ->envname("HOOKCTL_ROOT")
        ->option_text("FOLDER");
  if (options.instance != nullptr)
    command.add_option("--instance", *options.instance, "the process's instance id")->option_text("N");
  if (options.trace != nullptr)
    command.add_flag("--trace", *options.trace,
                     "also what the modem is asked and answers, and what it indicates");
  if (options.times != nullptr)
    command.add_flag("--times", *options.times,
                     "what is shown begins with its time: seconds since the start");
}

void addHelpCommand(CLI::App& tool, Common& /*common*/) {
  auto name = std::make_shared<std::string>();
  tool.add_subcommand("help",
                      "The same as --help behind a command's name; without one, of hookctl as a whole")
      ->callback([&tool, name] {
        const CLI::App& command = name->empty() ? tool : findCommand(tool, *name);
        const std::string called = name->empty() ? "hookctl" : "hookctl " + *name;
        fmt::print("{}", tool.get_formatter()->make_help(&command, called, CLI::AppFormatMode::Normal));
      })
      ->add_option("command", *name, "which");
}

}  // namespace tools
