// The files that belong to the tool, found from where the tool itself is: its folder may have been moved.
#pragma once

#include <optional>
#include <string>

namespace tools {

/// A file or folder of the tool's own. It is beside the tool, as in the build tree, or where it is installed.
struct OwnFile {
  const char* name;
  const char* folder;   // that it is installed in, from the tool's
  const char* instead;  // what to do without it
};

inline constexpr OwnFile kProcess{"qmi_kesext_hook", HOOKCTL_PROCESS_FOLDER,
                                  "--executable FILE takes it from elsewhere"};
inline constexpr OwnFile kTour{"scenarios/tour", HOOKCTL_DATA_FOLDER,
                               "hookctl play FOLDER plays a tour from elsewhere"};

/// Where it is; nothing when it is in neither place.
std::optional<std::string> find(const OwnFile& file);

/// The same, but throws UsageError, with the places, when it is in neither.
std::string need(const OwnFile& file);

}  // namespace tools
