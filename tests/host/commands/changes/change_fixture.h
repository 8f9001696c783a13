#pragma once

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "host/commands/store_command_fixture.h"

namespace orlocal::host {

/// Types commands that change calendars, with words about what they print.
class ChangeCommand : public StoreCommand {
 protected:
  /// What the command prints; it must be done.
  std::string typed(const std::vector<std::string>& words) {
    EXPECT_EQ(run(words), ExitStatus::kDone) << err;
    return out;
  }
  nlohmann::json typedJson(std::vector<std::string> words) {
    words.insert(words.begin(), "--json");
    return nlohmann::json::parse(typed(words), nullptr, false);
  }
  /// What is told on the error stream; the status must be `status`.
  std::string refused(const std::vector<std::string>& words, ExitStatus status = ExitStatus::kFailed) {
    EXPECT_EQ(run(words), status) << out << err;
    return err;
  }
  /// The whole store as it is exported.
  std::string exported() { return typed({"export"}); }
  /// The titles of the agenda's lines between two days, each with its day and time.
  std::vector<std::string> planned(const std::string& from, const std::string& to) {
    std::vector<std::string> lines;
    const auto agenda = typedJson({"agenda", "--from", from, "--to", to});
    for (const auto& event : agenda["events"]) {
      const std::string when = event["allDay"].get<bool>() ? event["firstDay"] : event["start"];
      lines.push_back(when.substr(0, 16) + " " + event["title"].get<std::string>());
    }
    return lines;
  }
  void answering(const std::string& text) {
    canBeAsked = true;
    input = text;
  }
};

}  // namespace orlocal::host
