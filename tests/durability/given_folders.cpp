#include "durability/given_folders.h"

#include <fstream>
#include <stdexcept>
#include <string>

#include <sys/wait.h>
#include <unistd.h>

#include "durability/session.h"
#include "store/backup.h"
#include "store/contacts.h"
#include "store/edits/edited_items.h"
#include "store/file/sqlite.h"
#include "store/import.h"

namespace orlocal::test {
namespace {

namespace fs = std::filesystem;
using store::CalendarStore;

constexpr const char* kZone =
    "BEGIN:VTIMEZONE\r\nTZID:Ship\r\nBEGIN:STANDARD\r\nDTSTART:19700101T000000\r\nTZOFFSETFROM:+0100\r\n"
    "TZOFFSETTO:+0130\r\nEND:STANDARD\r\nEND:VTIMEZONE\r\n";

std::string calendarOf(const std::string& name, const std::string& items) {
  return "BEGIN:VCALENDAR\r\nX-WR-CALNAME:" + name + "\r\n" + items + "END:VCALENDAR\r\n";
}

std::string eventsOf(int events, const char* word) {
  std::string text;
  for (int i = 0; i < events; ++i) {
    text += "BEGIN:VEVENT\r\nUID:i" + std::to_string(i) + "\r\nDTSTART:20261101T090000Z\r\nSUMMARY:" + word + " " +
            std::to_string(i) + "\r\nDESCRIPTION:" + std::string(200, 'd') + "\r\nEND:VEVENT\r\n";
  }
  return text;
}

/// A series with a time that was taken out and one that was changed.
std::string seriesOf(const char* changed) {
  return std::string(
             "BEGIN:VEVENT\r\nUID:s\r\nSUMMARY:series\r\nDTSTART;TZID=Europe/Berlin:20261102T090000\r\n"
             "DTEND;TZID=Europe/Berlin:20261102T100000\r\nRRULE:FREQ=DAILY;COUNT=9\r\n"
             "EXDATE;TZID=Europe/Berlin:20261103T090000\r\nEND:VEVENT\r\n"
             "BEGIN:VEVENT\r\nUID:s\r\nSUMMARY:") +
         changed +
         "\r\nRECURRENCE-ID;TZID=Europe/Berlin:20261107T090000\r\nDTSTART;TZID=Europe/Berlin:20261107T150000\r\n"
         "DTEND;TZID=Europe/Berlin:20261107T160000\r\nEND:VEVENT\r\n";
}

std::string remindersOf() {
  return "BEGIN:VTODO\r\nUID:t\r\nSUMMARY:to do\r\nDUE:20261103T080000Z\r\nEND:VTODO\r\n"
         "BEGIN:VTODO\r\nUID:b\r\nSUMMARY:bins\r\nDUE;TZID=Europe/Berlin:20261103T070000\r\nRRULE:FREQ=WEEKLY\r\n"
         "END:VTODO\r\n";
}

template <class T>
T orThrow(Result<T> result) {
  if (!result) { throw std::runtime_error(result.error().message); }
  if constexpr (!std::is_void_v<T>) { return *std::move(result); }
}

void import(CalendarStore& store, std::string text, const store::ImportOptions& options = {}) {
  const auto report = orThrow(store::importCalendarText(store, std::move(text), "given.ics", options));
  if (report.refused != 0) { throw std::runtime_error("a given item was refused"); }
}

void writeFiles(const fs::path& folder) {
  std::ofstream(folder / "more.ics") << calendarOf("Other", eventsOf(60, "imported"));
  std::ofstream(folder / "again.ics") << calendarOf("Other", eventsOf(3, "newer") + seriesOf("changed again"));
  std::ofstream(folder / "ship.ics") << calendarOf(
      "Ship", std::string(kZone) +
                  "BEGIN:VEVENT\r\nUID:z\r\nSUMMARY:at sea\r\nDTSTART;TZID=Ship:20261104T090000\r\nEND:VEVENT\r\n");
  std::ofstream(folder / "cards.vcf") << "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:c1\r\nFN:Noor\r\nEMAIL:noor@example.org\r\n"
                                         "ADR:;;Quay 2;Beirut;;;\r\nEND:VCARD\r\nBEGIN:VCARD\r\nVERSION:3.0\r\nUID:c2"
                                         "\r\nFN:Emi\r\nEMAIL:emi@example.org\r\nEND:VCARD\r\n";
}

void writeStore(const fs::path& folder) {
  writeFiles(folder);
  Session session(folder);
  CalendarStore& store = *orThrow(session.store());
  import(store, calendarOf("Other", eventsOf(5, "before") + seriesOf("changed")));
  import(store, remindersOf());
  store::ImportOptions list;
  list.listTitle = "Errands";
  import(store, "BEGIN:VTODO\r\nUID:e\r\nSUMMARY:errand\r\nEND:VTODO\r\n", list);
  session.close();
  std::ofstream(folder / "old.ics") << calendarOf("Old", "");
}

/// Of a store of its own.
void writeBackup(const fs::path& folder) {
  const auto elsewhere = folder / "elsewhere";
  fs::create_directory(elsewhere);
  Session session(elsewhere);
  import(*orThrow(session.store()), calendarOf("Restored", eventsOf(7, "restored")));
  session.close();
  orThrow(store::backUpStore(session.file(), folder / "backup.db", store::ExistingFile::kIsRefused,
                             std::chrono::seconds(1)));
  fs::remove_all(elsewhere);
}

void execute(const fs::path& file, const char* sql) {
  auto database = orThrow(store::Database::open(file, std::chrono::seconds(1)));
  orThrow(database.execute(sql));
}

/// In whole pages of the store; a header goes with each.
std::uintmax_t pagesOfLog(const fs::path& folder) {
  std::error_code none;
  const auto bytes = fs::file_size(folder / "calendar.db-wal", none);
  return none ? 0 : bytes / (4096 + 24);
}

/// A process that ends without letting go, when its changes fill so many pages or a few more.
void leaveLog(const fs::path& folder, std::uintmax_t pages) {
  const pid_t child = ::fork();
  if (child == 0) {
    Session session(folder);
    const auto store = session.store();
    bool saved = store.has_value();
    for (int i = 0; saved && pagesOfLog(folder) < pages; ++i) {
      const auto event = itemTitled(**store, "before 0");
      store::Item edited = *event;
      edited.notes = std::string(500, 'n') + std::to_string(i);
      saved = store::saveEvent(**store, edited, std::nullopt, store::Span::kThis).has_value();
    }
    ::_exit(saved ? 0 : 1);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  if (status != 0) { throw std::runtime_error("no log was left"); }
}

void writeOldStore(const fs::path& file) {
  std::ifstream stream(ORLOCAL_TEST_DATA "/../store/data/format_2.sql");
  const std::string sql{std::istreambuf_iterator<char>(stream), {}};
  std::ofstream(file).close();
  execute(file, sql.c_str());
}

void damage(const fs::path& file) {
  std::fstream stream(file, std::ios::in | std::ios::out | std::ios::binary);
  stream << std::string(200, '\x7f');
}

}  // namespace

fs::path givenIn(const fs::path& folder, Given given) {
  return folder / ("given-" + std::to_string(static_cast<int>(given)));
}

void makeGivens(const fs::path& folder) {
  // The commit that brings it to a thousand pages empties the log; a change of an event takes two, a new one four.
  constexpr std::uintmax_t kShortLog = 3, kLogNearlyFull = 997;
  for (int i = 0; i < kGivens; ++i) {
    const auto given = static_cast<Given>(i);
    const auto place = givenIn(folder, given);
    fs::create_directory(place);
    if (given == Given::kNothing) {
      writeFiles(place);
    } else if (given != Given::kBackupAlone && given != Given::kOldFormat) {
      writeStore(place);
    }
    const auto file = place / "calendar.db";
    if (given == Given::kLog) { leaveLog(place, kShortLog); }
    if (given == Given::kFullLog) { leaveLog(place, kLogNearlyFull); }
    if (given == Given::kOldFormat) { writeOldStore(file); }
    if (given == Given::kOldZones) {
      execute(
          file,
          "UPDATE timeline SET \"start\" = \"start\" - 3600, \"end\" = \"end\" - 3600, original = original - 3600 "
          "WHERE slot < 100; UPDATE items SET slot_start = slot_start - 3600, original = original - 3600 WHERE slot "
          "< 100; UPDATE properties SET value = '1999a' WHERE name = 'zone_data'");
    }
    if (given == Given::kBackup || given == Given::kBackupAlone || given == Given::kDamaged) { writeBackup(place); }
    if (given == Given::kDamaged) { damage(file); }
  }
}

}  // namespace orlocal::test
