// A session of the shell written down as a scenario: what was typed, and what came of it as expectations.
#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "handset/bytes.h"
#include "handset/modem.h"

namespace tools {

/// The file is whole after each step. Whatever adds one throws UsageError when it cannot be written.
class Recording {
 public:
  /// `instance` is the process's.
  Recording(std::string path, int instance);
  /// Throws UsageError when a line could not stand in a scenario.
  static void needText(std::string_view line);

  /// What the next step is called.
  void entitle(std::string_view title) { title_ = title; }
  /// "start", "restart" or "end", and the exit status of a process that ended.
  void addProcess(std::string_view what, std::optional<int> exit,
                  const std::vector<handset::Received>& asked);
  /// Something that the modem was told; several in a row are one step.
  void addModem(std::string_view words);
  /// What the modem indicated, with all messages that came of it.
  void addIndication(std::string_view words, const std::vector<handset::Bytes>& messages,
                     const std::vector<handset::Received>& asked);
  /// Nothing is expected of a request whose answer was not waited for.
  void addRequest(std::string_view words, handset::ByteView request,
                  const std::optional<handset::Bytes>& answer, const std::vector<handset::Received>& asked);

 private:
  void add(const char* action, std::string_view words, nlohmann::ordered_json expect);
  void write() const;

  std::string path_;
  int instance_;
  std::string title_;
  nlohmann::ordered_json steps_ = nlohmann::ordered_json::array();
};

}  // namespace tools
