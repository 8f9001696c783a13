#include "store/damaged_file.h"

#include <csignal>
#include <cstdlib>

#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include "base/text.h"
#include "store/edits/item_writer.h"
#include "store/export.h"
#include "store/import.h"
#include "store/salvage.h"

namespace orlocal::store {
namespace {

constexpr unsigned kSecondsForAll = 30;
constexpr int kBrokenText = 3, kNoSentence = 4;

constexpr const char* kContent =
    "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//test//EN\r\n"
    "BEGIN:VTIMEZONE\r\nTZID:Moon\r\nBEGIN:STANDARD\r\nDTSTART:19700101T000000\r\nTZOFFSETFROM:+0117\r\n"
    "TZOFFSETTO:+0117\r\nEND:STANDARD\r\nEND:VTIMEZONE\r\n"
    "BEGIN:VEVENT\r\nUID:single\r\nDTSTAMP:20261101T000000Z\r\nSUMMARY:Talk\r\nLOCATION:Room\r\nDESCRIPTION:Long\r\n"
    "URL:https://example.org/\r\nDTSTART;TZID=Europe/Berlin:20261102T090000\r\nDTEND;TZID=Europe/Berlin:20261102T1000"
    "00\r\nCREATED:20261001T000000Z\r\nLAST-MODIFIED:20261002T000000Z\r\nPRIORITY:5\r\nSEQUENCE:2\r\nX-KEPT:1\r\n"
    "ORGANIZER;CN=Ada:mailto:ada@example.org\r\n"
    "ATTENDEE;CN=Bob;PARTSTAT=ACCEPTED;ROLE=CHAIR;CUTYPE=ROOM;X-P=1:mailto:bob@example.org\r\n"
    "BEGIN:VALARM\r\nACTION:AUDIO\r\nTRIGGER:-PT15M\r\nATTACH:Bell\r\nEND:VALARM\r\n"
    "BEGIN:VALARM\r\nACTION:DISPLAY\r\nTRIGGER;VALUE=DATE-TIME:20261102T070000Z\r\nDESCRIPTION:x\r\nEND:VALARM\r\n"
    "END:VEVENT\r\n"
    "BEGIN:VEVENT\r\nUID:series\r\nDTSTAMP:20261101T000000Z\r\nSUMMARY:Series\r\nDTSTART;TZID=Europe/Berlin:20260105T"
    "090000\r\nDTEND;TZID=Europe/Berlin:20260105T100000\r\n"
    "RRULE:FREQ=MONTHLY;INTERVAL=1;UNTIL=20301231T000000Z;WKST=SU;BYDAY=1MO,2TU;BYMONTH=1,3,11;BYSETPOS=1,2;BYHOUR=9;"
    "BYMINUTE=0;BYSECOND=0\r\n"
    "RDATE;TZID=Europe/Berlin:20261117T090000\r\nEXDATE;TZID=Europe/Berlin:20270104T090000\r\n"
    "EXRULE:FREQ=YEARLY;COUNT=2;BYMONTH=3\r\nEND:VEVENT\r\n"
    "BEGIN:VEVENT\r\nUID:series\r\nDTSTAMP:20261101T000000Z\r\nSUMMARY:Changed\r\nRECURRENCE-ID;TZID=Europe/Berlin:202"
    "61102T090000\r\nDTSTART;TZID=Europe/Berlin:20261103T090000\r\nDTEND;TZID=Europe/Berlin:20261103T100000\r\n"
    "END:VEVENT\r\n"
    "BEGIN:VEVENT\r\nUID:stray\r\nDTSTAMP:20261101T000000Z\r\nSUMMARY:Stray\r\nRECURRENCE-ID:20261105T090000Z\r\n"
    "DTSTART:20261105T090000Z\r\nDTEND:20261105T100000Z\r\nEND:VEVENT\r\n"
    "BEGIN:VEVENT\r\nUID:birthday\r\nDTSTAMP:20261101T000000Z\r\nSUMMARY:Birthday\r\nDTSTART;VALUE=DATE:19800229\r\n"
    "DTEND;VALUE=DATE:19800301\r\nRRULE:FREQ=YEARLY;RSCALE=HEBREW;SKIP=FORWARD\r\nEND:VEVENT\r\n"
    "BEGIN:VEVENT\r\nUID:yearly\r\nDTSTAMP:20261101T000000Z\r\nSUMMARY:Yearly\r\nDTSTART;VALUE=DATE:19800203\r\n"
    "DTEND;VALUE=DATE:19800204\r\nRRULE:FREQ=YEARLY\r\nEND:VEVENT\r\n"
    "BEGIN:VEVENT\r\nUID:private\r\nDTSTAMP:20261101T000000Z\r\nSUMMARY:Private\r\nDTSTART;TZID=Moon:"
    "20261104T090000\r\n"
    "DTEND;TZID=Moon:20261104T100000\r\nEND:VEVENT\r\n"
    "BEGIN:VTODO\r\nUID:due\r\nDTSTAMP:20261101T000000Z\r\nSUMMARY:Due\r\nDUE;TZID=Europe/Berlin:20261110T090000\r\n"
    "RRULE:FREQ=DAILY;COUNT=3\r\nEND:VTODO\r\n"
    "BEGIN:VTODO\r\nUID:whenever\r\nDTSTAMP:20261101T000000Z\r\nSUMMARY:Whenever\r\nEND:VTODO\r\n"
    "BEGIN:VTODO\r\nUID:wall\r\nDTSTAMP:20261101T000000Z\r\nSUMMARY:Wall\r\nDUE;VALUE=DATE:20261111\r\nEND:VTODO\r\n"
    "BEGIN:VTODO\r\nUID:done\r\nDTSTAMP:20261101T000000Z\r\nSUMMARY:Done\r\nDUE:20261109T090000Z\r\nSTATUS:"
    "COMPLETED\r\n"
    "COMPLETED:20261108T090000Z\r\nEND:VTODO\r\nEND:VCALENDAR\r\n";

/// Ends the process where a text would reach a caller broken, or a failure has no sentence.
class Caller {
 public:
  template <class T>
  std::optional<T> taken(Result<T> result) {
    if (!result) {
      if (!m_first) { m_first = result.error(); }
      if (result.error().message.size() < 10 || !isUtf8(result.error().message)) { ::_exit(kNoSentence); }
      return std::nullopt;
    }
    return *std::move(result);
  }
  void taken(const Status& status) {
    if (!status) { static_cast<void>(taken(Result<int>(tl::unexpected(status.error())))); }
  }
  void text(std::string_view text) const {
    if (!isUtf8(text)) { ::_exit(kBrokenText); }
  }
  void text(const std::string& text) const { this->text(std::string_view(text)); }
  void text(const std::optional<std::string>& text) const {
    if (text) { this->text(std::string_view(*text)); }
  }
  void item(const Item& item) const {
    for (const auto* each : {&item.title, &item.notes, &item.location, &item.url}) { text(*each); }
    text(item.uid);
    text(item.extra);
    text(item.identifier);
    for (const Alarm& alarm : item.alarms) { text(alarm.url), text(alarm.emailAddress), text(alarm.soundName); }
    for (const Attendee& attendee : item.attendees) { text(attendee.address), text(attendee.name); }
  }
  const std::optional<Failure>& first() const { return m_first; }

 private:
  std::optional<Failure> m_first;
};

void readAll(CalendarStore& store, Caller& caller, std::vector<ItemId>& ids) {
  (void)store.generation();
  if (const auto sources = caller.taken(store.sources())) {
    for (const Source& source : *sources) { caller.text(source.title); }
  }
  std::vector<Calendar> all;
  std::vector<CalendarId> numbers;
  for (const CalendarKind kind : {CalendarKind::kEvents, CalendarKind::kReminders}) {
    if (const auto calendars = caller.taken(store.calendars(kind))) {
      for (const Calendar& calendar : *calendars) {
        caller.text(calendar.title);
        caller.text(calendar.notes);
        all.push_back(calendar);
        numbers.push_back(calendar.id);
      }
    }
    caller.taken(store.defaultCalendar(kind));
  }
  const auto ask = [&](std::optional<Moment> from, std::optional<Moment> to) {
    if (const auto found = caller.taken(store.occurrences(EventQuery{from, to, numbers}))) {
      for (const Occurrence& occurrence : *found) { ids.push_back(occurrence.item); }
    }
    if (const auto found = caller.taken(store.reminders({ReminderQuery::Status::kAny, from, to, numbers}))) {
      ids.insert(ids.end(), found->begin(), found->end());
    }
  };
  ask(at("2026-01-01 00:00"), at("2027-01-01 00:00"));
  ask(std::nullopt, std::nullopt);
  for (ItemId id = 1; id <= 14; ++id) { ids.push_back(id); }
  std::sort(ids.begin(), ids.end());
  ids.erase(std::unique(ids.begin(), ids.end()), ids.end());
  for (const ItemId id : ids) {
    const auto item = caller.taken(store.item(id));
    if (!item || *item == nullptr) { continue; }
    caller.item(**item);
    if ((*item)->kind != ItemKind::kEvent) { continue; }
    caller.taken(store.firstOccurrence(**item));
    caller.taken(store.occurrenceAt(**item, at("2026-11-02 09:00")));
    caller.taken(store.event((*item)->identifier));
  }
  for (const Calendar& calendar : all) {
    caller.taken(store.forEachItem(calendar.id, [&](const Item& main, const std::vector<Item>& changed) -> Status {
      caller.item(main);
      for (const Item& each : changed) { caller.item(each); }
      return {};
    }));
  }
  caller.taken(exportCalendars(store, all, [&](std::string_view text) -> Status {
    caller.text(text);
    return {};
  }));
  if (const auto address = caller.taken(store.addressOf("ada@example.org"))) { caller.text(*address); }
  for (const char* text : {"a", "talk", "series ada"}) {
    SearchQuery query;
    query.text = text;
    query.calendars = numbers;
    if (const auto hits = caller.taken(store.search(query))) {
      for (const SearchHit& hit : *hits) { caller.taken(store.item(hit.item)); }
    }
  }
  LogPosition position{.row = 0, .file = 1};
  caller.taken(store.outsideCommits(position));
  if (const auto zone = caller.taken(store.privateZone("Moon"))) { caller.text(*zone); }
}

void changeAll(CalendarStore& store, Caller& caller, const std::vector<ItemId>& ids) {
  caller.taken(store.rebuildSearch());
  Item made;
  made.calendar = 1;
  made.title = "New";
  made.start = berlin("2026-11-02 09:00");
  made.end = berlin("2026-11-02 10:00");
  caller.taken(saveEvent(store, made, std::nullopt, Span::kThis));
  if (auto writer = caller.taken(store.startWriting())) {
    Contact contact{"ada", "Ada", {"ada@example.com"}, "Street 2"};
    caller.taken((*writer)->putContact(contact));
    caller.taken((*writer)->commit());
  }
  caller.taken(importCalendarText(store, kContent, "content.ics", {}));
  std::string changed = kContent;
  for (std::size_t at = 0; (at = changed.find("SUMMARY:", at)) != std::string::npos; at += 9) {
    changed.insert(at + 8, "x");
  }
  caller.taken(importCalendarText(store, changed, "changed.ics", {}));
  for (const ItemId id : ids) {
    const auto item = caller.taken(store.item(id));
    if (!item || *item == nullptr) { continue; }
    Item edited = **item;
    edited.title = "Edited";
    if (edited.kind == ItemKind::kReminder) {
      caller.taken(saveReminder(store, edited));
      continue;
    }
    const auto occurrence = caller.taken(store.firstOccurrence(edited)).value_or(std::nullopt);
    caller.taken(saveEvent(store, edited, occurrence, Span::kThis));
    caller.taken(saveEvent(store, edited, occurrence, Span::kFuture));
    caller.taken(store.removeEvent(edited, occurrence, Span::kThis));
  }
  if (const auto some = caller.taken(store.calendars(CalendarKind::kEvents)); some && !some->empty()) {
    Calendar calendar = some->back();
    calendar.title = "Renamed";
    caller.taken(store.saveCalendar(calendar));
    caller.taken(store.removeCalendar(calendar.identifier));
  }
}

}  // namespace

void DamagedFile::SetUp() {
  StoreTest::SetUp();
  madeCalendar("Second");
  const auto imported = importCalendarText(*store, kContent, "content.ics", {});
  ASSERT_TRUE(imported) << imported.error().message;
  ASSERT_EQ(imported->refused, 0U) << imported->problems.front().message;
  ImportOptions subscription;
  subscription.subscription = true;
  subscription.calendarTitle = "Holidays";
  ASSERT_TRUE(importCalendarText(*store,
                                 "BEGIN:VCALENDAR\r\nBEGIN:VEVENT\r\nUID:h\r\nDTSTART;VALUE=DATE:20261225\r\n"
                                 "SUMMARY:H\r\nEND:VEVENT\r\nEND:VCALENDAR\r\n",
                                 "h.ics", subscription));
  std::unique_ptr<ItemWriter> writer = store->startWriting().value();
  Contact contact{"ada", "Ada", {"ada@example.org"}, "Street 1"};
  ASSERT_TRUE(writer->putContact(contact));
  ASSERT_TRUE(writer->commit());
  writer.reset();
  SearchQuery query;
  query.text = "Talk";
  query.calendars = {1, 2, 3, 4};
  ASSERT_TRUE(store->search(query));
  store->close();
}

void DamagedFile::execute(const std::filesystem::path& damaged, const std::string& sql) {
  sqlite3* database = nullptr;
  ASSERT_EQ(sqlite3_open_v2(damaged.c_str(), &database, SQLITE_OPEN_READWRITE, nullptr), SQLITE_OK);
  char* reason = nullptr;
  const int result = sqlite3_exec(database, sql.c_str(), nullptr, nullptr, &reason);
  // The number of a row is a number in any file.
  EXPECT_TRUE(result == SQLITE_OK || result == SQLITE_MISMATCH) << sql << ": " << (reason != nullptr ? reason : "");
  sqlite3_free(reason);
  sqlite3_close(database);
}

std::filesystem::path DamagedFile::copied() const {
  const auto copy = folder / "damaged.db";
  for (const char* suffix : {"-wal", "-shm", "-bell"}) { std::filesystem::remove(copy.string() + suffix); }
  std::filesystem::copy_file(file, copy, std::filesystem::copy_options::overwrite_existing);
  return copy;
}

StoreOptions DamagedFile::optionsFor(const std::filesystem::path& damaged) const {
  StoreOptions own = options();
  own.file = damaged;
  own.busyTimeout = std::chrono::milliseconds(200);
  return own;
}

std::optional<Failure> DamagedFile::firstFailure(const std::filesystem::path& damaged) const {
  auto opened = CalendarStore::open(optionsFor(damaged));
  if (!opened) { return opened.error(); }
  Caller caller;
  std::vector<ItemId> ids;
  readAll(**opened, caller, ids);
  return caller.first();
}

std::string DamagedFile::usedInAChild(const std::filesystem::path& damaged) const {
  const pid_t child = fork();
  if (child == 0) {
    ::alarm(kSecondsForAll);
    Caller caller;
    {
      if (const auto opened = caller.taken(CalendarStore::open(optionsFor(damaged)))) {
        std::vector<ItemId> ids;
        readAll(**opened, caller, ids);
        changeAll(**opened, caller, ids);
        ids.clear();
        readAll(**opened, caller, ids);
      }
    }
    caller.taken(salvage(damaged, {}, std::chrono::milliseconds(200), [&](std::string_view text) -> Status {
      caller.text(text);
      return {};
    }));
    ::_exit(0);
  }
  int status = 0;
  if (::waitpid(child, &status, 0) != child) { return "the child was lost"; }
  if (WIFSIGNALED(status)) {
    return WTERMSIG(status) == SIGALRM ? "it never ended" : "died by signal " + std::to_string(WTERMSIG(status));
  }
  switch (WEXITSTATUS(status)) {
    case 0:
      return "";
    case kBrokenText:
      return "a broken text reached the caller";
    case kNoSentence:
      return "a failure had no sentence";
    default:
      return "ended with " + std::to_string(WEXITSTATUS(status));
  }
}

}  // namespace orlocal::store
