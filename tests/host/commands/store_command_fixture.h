#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/commands/all_commands.h"
#include "store/calendar_store.h"

namespace orlocal::host {

/// Runs commands on a store of their own in a temporary folder. The zone is Europe/Berlin, the time 2026-11-02 09:00.
class StoreCommand : public testing::Test {
 protected:
  StoreCommand() {
    std::string pattern = (std::filesystem::temp_directory_path() / "orlocal-XXXXXX").string();
    folder = ::mkdtemp(pattern.data());
    ::setenv("ORLOCAL_STORE", (folder / "calendar.db").c_str(), 1);
  }
  ~StoreCommand() override {
    ::unsetenv("ORLOCAL_STORE");
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
  }

  ExitStatus run(const std::vector<std::string>& words) {
    std::istringstream in(input);
    std::ostringstream outText, errText;
    CommandLine line(Streams{in, outText, errText, canBeAsked, onTerminal, onTerminal});
    registerAllCommands(line);
    const ExitStatus status = line.run("orlocal", words);
    out = outText.str();
    err = errText.str();
    return status;
  }

  /// The store with nothing but its two calendars.
  void makeStore() const {
    store::StoreOptions options;
    options.file = folder / "calendar.db";
    ASSERT_TRUE(store::CalendarStore::open(std::move(options)));
  }

  /// A file in the test's folder.
  std::string file(const std::string& name, const std::string& text) {
    const auto path = folder / name;
    std::ofstream(path, std::ios::binary) << text;
    return path.string();
  }
  static std::string textOf(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
  }

  /// A calendar file named `name` with these components.
  static std::string calendar(const std::string& name, const std::string& components) {
    return "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Example//Tests//EN\r\n" +
           (name.empty() ? "" : "X-WR-CALNAME:" + name + "\r\n") + components + "END:VCALENDAR\r\n";
  }
  static std::string event(const std::string& uid, const std::string& title, const std::string& lines) {
    return "BEGIN:VEVENT\r\nUID:" + uid + "\r\nDTSTAMP:20260101T000000Z\r\nSUMMARY:" + title + "\r\n" + lines +
           "END:VEVENT\r\n";
  }
  static std::string todo(const std::string& uid, const std::string& title, const std::string& lines) {
    return "BEGIN:VTODO\r\nUID:" + uid + "\r\nDTSTAMP:20260101T000000Z\r\nSUMMARY:" + title + "\r\n" + lines +
           "END:VTODO\r\n";
  }
  void imported(const std::string& text) {
    ASSERT_EQ(run({"import", file("given.ics", text)}), ExitStatus::kDone) << err;
  }

  std::filesystem::path folder;
  std::string input;
  bool canBeAsked = false;
  bool onTerminal = false;
  std::string out, err;
};

}  // namespace orlocal::host
