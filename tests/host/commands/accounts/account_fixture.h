#pragma once

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>
#include <unistd.h>

#include "host/commands/accounts/calendar_server_fixture.h"
#include "host/commands/store_command_fixture.h"

namespace orlocal::host {

/// A user with a store and settings of their own, beside a calendar server that has the calendar "Team".
class AccountCommand : public StoreCommand {
 protected:
  AccountCommand() {
    ::setenv("XDG_CONFIG_HOME", folder.c_str(), 1);
    ::unsetenv("CREDENTIALS_DIRECTORY");
    team = server.content().addCalendar("team", {.displayName = "Team"});
    password = file("password", "secret\n");
    std::filesystem::permissions(password, std::filesystem::perms::owner_read);
  }
  ~AccountCommand() override { ::unsetenv("XDG_CONFIG_HOME"); }

  ExitStatus add(const std::string& name) {
    return run({"account", "add", server.url(), "--user", "alice", "--name", name, "--password-file", password});
  }
  void added(const std::string& name) { ASSERT_EQ(add(name), ExitStatus::kDone) << err; }
  void synced() { ASSERT_EQ(run({"sync"}), ExitStatus::kDone) << out << err; }

  /// What a command lists.
  nlohmann::json listed(std::vector<std::string> words) {
    words.insert(words.begin(), "--json");
    run(words);
    return nlohmann::json::parse(out, nullptr, false);
  }
  nlohmann::json account(const std::string& name) {
    for (auto& each : listed({"account", "list"})) {
      if (each["name"] == name) { return each; }
    }
    return nullptr;
  }
  std::vector<std::string> titles() {
    std::vector<std::string> all;
    for (auto& each : listed({"calendars"})) { all.push_back(each["title"]); }
    return all;
  }
  void importedInto(const std::string& title, const std::string& components) {
    ASSERT_EQ(run({"import", file("given.ics", calendar("", components)), "--calendar", title}), ExitStatus::kDone)
        << err;
  }
  static std::string meeting(const std::string& title, const std::string& place = "Room 1") {
    return event("meeting", title, "LOCATION:" + place + "\r\nDTSTART:20261104T090000Z\r\nDTEND:20261104T100000Z\r\n");
  }

  CalendarServerOnLoopback server;
  std::string password;
  std::string team;  ///< its address there
};

}  // namespace orlocal::host
