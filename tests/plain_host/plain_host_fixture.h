#pragma once

#include <chrono>
#include <csignal>
#include <memory>
#include <thread>

#include <gmock/gmock.h>
#include <sys/stat.h>

#include "plain_host/host_process.h"
#include "store/contacts.h"
#include "store/import.h"

namespace orlocal::host {

namespace fs = std::filesystem;

inline constexpr uid_t kNobody = 65534;

inline constexpr const char* kItems = R"(BEGIN:VCALENDAR
VERSION:2.0
PRODID:-//Orlocal//Tests//EN
X-WR-CALNAME:Singing
BEGIN:VEVENT
UID:review@example.org
DTSTAMP:20261001T080000Z
DTSTART;TZID=Europe/Berlin:20261102T090000
DTEND;TZID=Europe/Berlin:20261102T100000
SUMMARY:Review
BEGIN:VALARM
ACTION:DISPLAY
TRIGGER:-PT15M
DESCRIPTION:Soon
END:VALARM
END:VEVENT
BEGIN:VEVENT
UID:choir@example.org
DTSTAMP:20261001T080000Z
DTSTART;TZID=Europe/Berlin:20261103T190000
DTEND;TZID=Europe/Berlin:20261103T210000
RRULE:FREQ=WEEKLY;COUNT=4
SUMMARY:Choir
END:VEVENT
BEGIN:VEVENT
UID:board@example.org
DTSTAMP:20261001T080000Z
DTSTART;TZID=Europe/Berlin:20261106T180000
DTEND;TZID=Europe/Berlin:20261106T190000
SUMMARY:Board
ORGANIZER:mailto:ann@example.org
ATTENDEE;CN=Cem Comes:mailto:cem@example.org
END:VEVENT
BEGIN:VTODO
UID:plants@example.org
DTSTAMP:20261001T080000Z
DUE;TZID=Europe/Berlin:20261103T120000
SUMMARY:Plants
BEGIN:VALARM
ACTION:DISPLAY
TRIGGER:-PT15M
DESCRIPTION:Soon
END:VALARM
END:VTODO
BEGIN:VTODO
UID:stamps@example.org
DTSTAMP:20261001T080000Z
SUMMARY:Stamps
END:VTODO
END:VCALENDAR
)";

inline constexpr const char* kContact =
    "BEGIN:VCARD\r\nVERSION:3.0\r\nN:Comes;Cem;;;\r\nFN:Cem Comes\r\nEMAIL:cem@example.org\r\n"
    "ADR:;;Elm Street 1;;;;\r\nEND:VCARD\r\n";

/// A store with a bit of everything in a folder of its own, and the plain C host on it.
class PlainHost : public testing::Test {
 protected:
  PlainHost() {
    std::signal(SIGPIPE, SIG_IGN);
    std::string pattern = (fs::temp_directory_path() / "orlocal-plain-host-XXXXXX").string();
    folder = ::mkdtemp(pattern.data());
    ::chmod(folder.c_str(), 0755);
  }
  ~PlainHost() override {
    std::error_code ignored;
    fs::remove_all(folder, ignored);
  }

  fs::path store() const { return folder / "store" / "calendar.db"; }

  std::unique_ptr<store::CalendarStore> opened() const {
    store::StoreOptions options;
    options.file = store();
    auto opened = store::CalendarStore::open(std::move(options));
    if (!opened) { throw std::runtime_error(opened.error().message); }
    return *std::move(opened);
  }

  void write(const fs::path& file, std::string_view text) const { std::ofstream(file, std::ios::binary) << text; }

  void makeStore() const {
    const auto made = opened();
    ASSERT_TRUE(store::importCalendarText(*made, kItems, "items.ics"));
    write(folder / "ann.vcf", kContact);
    ASSERT_TRUE(store::importContactsFile(*made, folder / "ann.vcf"));
    made->close();
    ::chmod(store().parent_path().c_str(), 0755);
    ::chmod(store().c_str(), 0644);
  }

  /// As another program does.
  void import(const std::string& text) const {
    const auto store = opened();
    const auto report = store::importCalendarText(*store, text, "more.ics");
    ASSERT_TRUE(report) << report.error().message;
    ASSERT_EQ(report->refused, 0U);
  }

  std::unique_ptr<HostProcess> host(const char* systemMinor) const {
    return std::make_unique<HostProcess>(
        std::vector<std::pair<std::string, std::string>>{
            {"ORLOCAL_STORE", store()}, {"ORLOCAL_SYSTEM_MINOR", systemMinor}, {"ORLOCAL_WAIT", "0"}},
        folder / "log");
  }

  /// A file that took another's place is noticed within ten milliseconds and a tick of the clock.
  static void waitForALook() { std::this_thread::sleep_for(std::chrono::milliseconds(30)); }

  fs::path folder;
};

}  // namespace orlocal::host
