#include "tools/commands/commands.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <utility>

namespace tools {

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

}  // namespace tools
