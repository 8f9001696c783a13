#include "durability/changes.h"

#include "base/try.h"
#include "host/commands/command_line/output_file.h"
#include "store/backup.h"
#include "store/contacts.h"
#include "store/edits/edited_items.h"
#include "store/edits/item_writer.h"
#include "store/export.h"
#include "store/import.h"
#include "store/salvage.h"

namespace orlocal::test {
namespace {

using store::Calendar;
using store::CalendarKind;
using store::CalendarStore;
using store::Item;
using store::LocalTime;
using store::Occurrence;
using store::Span;

store::CalendarTime utc(int day, int hour) {
  return {store::CalendarTime::Kind::kUtc, LocalTime(2026, 11, day, hour), ""};
}

Failed notThere(std::string_view title) {
  return failure(ErrorCode::kNotFound, std::string(title) + " cannot be read.");
}

/// What it gave does not matter.
template <class T>
Status withoutValue(const Result<T>& result) {
  return result ? Status() : Status(tl::unexpected(result.error()));
}

/// The occurrence of that day.
Result<std::optional<Occurrence>> occurrenceOn(CalendarStore& store, const Item& item, std::optional<int> day) {
  if (!day) { return std::nullopt; }
  ORLOCAL_TRY(auto found, store.occurrenceAt(item, store::Zone().toMoment(LocalTime(2026, 11, *day, 8))));
  if (!found) { return notThere("The occurrence"); }
  return found;
}

/// Changes the item of that title as `edit` says.
template <class Edit>
Status changed(Session& session, const char* title, const std::optional<int>& day, Span span, Edit edit) {
  ORLOCAL_TRY(CalendarStore * store, session.store());
  const auto item = itemTitled(*store, title);
  if (item == nullptr) { return notThere(title); }
  ORLOCAL_TRY(const auto occurrence, occurrenceOn(*store, *item, day));
  auto opened = std::make_shared<Item>(*item);
  if (occurrence) { moveToOccurrence(*opened, *occurrence, session.options().viewer); }
  Item edited = *opened;
  ORLOCAL_CHECK(edit(*store, edited));
  const store::ItemEdit what = editBetween(std::move(opened), edited);
  return item->kind == store::ItemKind::kReminder ? withoutValue(store->saveReminder(what))
                                                  : withoutValue(store->saveEvent(what, occurrence, span));
}

Status removed(Session& session, const char* title, const std::optional<int>& day, Span span) {
  ORLOCAL_TRY(CalendarStore * store, session.store());
  const auto item = itemTitled(*store, title);
  if (item == nullptr) { return notThere(title); }
  ORLOCAL_TRY(const auto occurrence, occurrenceOn(*store, *item, day));
  return item->kind == store::ItemKind::kReminder ? store->removeReminder(*item)
                                                  : store->removeEvent(*item, occurrence, span);
}

Status moveAnHour(CalendarStore&, Item& item) {
  if (item.start) { item.start->local += 3600; }
  if (auto& last = item.endOrDue()) { last->local += 3600; }
  item.title = "later";
  return {};
}
Status complete(CalendarStore&, Item& item) {
  item.completed = store::Moment(std::chrono::seconds(1'793'606'400));
  return {};
}
template <CalendarKind kind>
Status moveToDefault(CalendarStore& store, Item& item) {
  ORLOCAL_TRY(const auto calendar, store.defaultCalendar(kind));
  if (!calendar) { return notThere("The default calendar"); }
  item.calendar = calendar->id;
  return {};
}

Status saveNew(Session& session) {
  ORLOCAL_TRY(CalendarStore * store, session.store());
  Item event;
  ORLOCAL_CHECK(moveToDefault<CalendarKind::kEvents>(*store, event));
  event.title = "new";
  event.start = event.end = utc(5, 9);
  return store::saveEvent(*store, event, std::nullopt, Span::kThis);
}
Status saveNewReminder(Session& session) {
  ORLOCAL_TRY(CalendarStore * store, session.store());
  Item reminder;
  reminder.kind = store::ItemKind::kReminder;
  ORLOCAL_CHECK(moveToDefault<CalendarKind::kReminders>(*store, reminder));
  reminder.title = "new";
  reminder.due = utc(5, 9);
  return store::saveReminder(*store, reminder);
}

/// Writes an export as the program does.
template <class Write>
Status exported(Session& session, const char* name, Write write) {
  ORLOCAL_TRY(const auto output, host::OutputFile::open(session.in(name).string()));
  ORLOCAL_CHECK(write([&](std::string_view text) { return output->write(text); }));
  return output->finish();
}
Status exportTo(Session& session, const char* name) {
  ORLOCAL_TRY(CalendarStore * store, session.store());
  ORLOCAL_TRY(const auto calendars, store->calendars(CalendarKind::kEvents));
  return exported(session, name, [&](const store::TextSink& sink) -> Status {
    return withoutValue(store::exportCalendars(*store, calendars, sink));
  });
}

Status open(Session& session) {
  ORLOCAL_TRY(CalendarStore * store, session.store());
  return withoutValue(store->defaultCalendar(CalendarKind::kEvents));
}

Status openInNewFolders(Session& session) {
  store::StoreOptions options = session.options();
  options.file = session.in("new/newer/calendar.db");
  ORLOCAL_TRY(const auto store, CalendarStore::open(options));
  return withoutValue(store->defaultCalendar(CalendarKind::kEvents));
}

Status importFile(Session& session, const char* name) {
  ORLOCAL_TRY(CalendarStore * store, session.store());
  return withoutValue(store::importCalendarFile(*store, session.in(name)));
}

Status backUpTo(Session& session, const char* name, store::ExistingFile existing) {
  return withoutValue(store::backUpStore(session.file(), session.in(name), existing, session.options().busyTimeout));
}

Status restore(Session& session) {
  return withoutValue(store::restoreStore(session.options(), session.in("backup.db")));
}

Status makeCalendar(Session& session) {
  ORLOCAL_TRY(CalendarStore * store, session.store());
  ORLOCAL_TRY(const auto sources, store->sources());
  Calendar calendar;
  calendar.title = "made";
  calendar.source = sources.front().id;
  return store->saveCalendar(calendar);
}

Result<Calendar> calendarTitled(CalendarStore& store, CalendarKind kind, std::string_view title) {
  ORLOCAL_TRY(const auto calendars, store.calendars(kind));
  for (const Calendar& calendar : calendars) {
    if (calendar.title == title) { return calendar; }
  }
  return notThere(title);
}

Status changeCalendar(Session& session) {
  ORLOCAL_TRY(CalendarStore * store, session.store());
  ORLOCAL_TRY(Calendar calendar, calendarTitled(*store, CalendarKind::kEvents, "Other"));
  calendar.title = "Renamed";
  calendar.notes = "noted";
  calendar.color = store::Rgb{0.5, 0.25, 0.125};
  calendar.order = 3;
  return store->saveCalendar(calendar);
}

Status removeCalendar(Session& session, CalendarKind kind, std::string_view title) {
  ORLOCAL_TRY(CalendarStore * store, session.store());
  ORLOCAL_TRY(const Calendar calendar, calendarTitled(*store, kind, title));
  return store->removeCalendar(calendar.identifier);
}

/// Whatever a writer can do that imports do not.
Status writeSource(Session& session) {
  ORLOCAL_TRY(CalendarStore * store, session.store());
  ORLOCAL_TRY(const auto writer, store->startWriting());
  store::Source source;
  source.type = store::Source::Type::kSubscription;
  source.title = "Somewhere";
  ORLOCAL_CHECK(writer->makeSource(source));
  Calendar calendar;
  calendar.title = "Holidays";
  calendar.source = source.id;
  calendar.readOnly = calendar.subscribed = true;
  ORLOCAL_CHECK(writer->makeCalendar(calendar));
  Item event;
  event.uid = "h";
  event.title = "holiday";
  event.start = utc(8, 0);
  std::vector<Item> none;
  ORLOCAL_CHECK(writer->put(calendar.id, event, none));
  return writer->commit();
}

Status salvaged(Session& session) {
  return exported(session, "export.ics", [&](const store::TextSink& sink) -> Status {
    ORLOCAL_TRY(const auto report, store::salvage(session.file(), {}, session.options().busyTimeout, sink));
    if (report.complete()) { return {}; }
    return failure(ErrorCode::kCorrupt, "Something was not salvaged.");
  });
}

using S = Session;
constexpr std::optional<int> kWhole = std::nullopt;

constexpr Change kChanges[] = {
    {"a new event", Given::kStore, &saveNew},
    {"an event changed", Given::kStore, [](S& s) { return changed(s, "before 0", kWhole, Span::kThis, &moveAnHour); }},
    {"an event moved to another calendar", Given::kStore,
     [](S& s) { return changed(s, "before 0", kWhole, Span::kThis, &moveToDefault<CalendarKind::kEvents>); }},
    {"an event removed", Given::kStore, [](S& s) { return removed(s, "before 0", kWhole, Span::kThis); }},
    {"one occurrence changed", Given::kStore, [](S& s) { return changed(s, "series", 5, Span::kThis, &moveAnHour); }},
    {"one occurrence moved to another calendar", Given::kStore,
     [](S& s) { return changed(s, "series", 5, Span::kThis, &moveToDefault<CalendarKind::kEvents>); }},
    {"one occurrence removed", Given::kStore, [](S& s) { return removed(s, "series", 5, Span::kThis); }},
    {"a series split", Given::kStore, [](S& s) { return changed(s, "series", 5, Span::kFuture, &moveAnHour); }},
    {"a series split into another calendar", Given::kStore,
     [](S& s) { return changed(s, "series", 5, Span::kFuture, &moveToDefault<CalendarKind::kEvents>); }},
    {"a series changed", Given::kStore, [](S& s) { return changed(s, "series", 5, Span::kAll, &moveAnHour); }},
    {"a series moved to another calendar", Given::kStore,
     [](S& s) { return changed(s, "series", 5, Span::kAll, &moveToDefault<CalendarKind::kEvents>); }},
    {"a series made one event", Given::kStore,
     [](S& s) {
       return changed(s, "series", 5, Span::kAll, [](CalendarStore&, Item& item) -> Status {
         item.recurrence.rules.clear();
         return {};
       });
     }},
    {"later occurrences removed", Given::kStore, [](S& s) { return removed(s, "series", 5, Span::kFuture); }},
    {"a series removed", Given::kStore, [](S& s) { return removed(s, "series", kWhole, Span::kAll); }},
    {"a new reminder", Given::kStore, &saveNewReminder},
    {"a reminder completed", Given::kStore, [](S& s) { return changed(s, "to do", kWhole, Span::kThis, &complete); }},
    {"a repeating reminder completed", Given::kStore,
     [](S& s) { return changed(s, "bins", kWhole, Span::kThis, &complete); }},
    {"a reminder moved to another list", Given::kStore,
     [](S& s) { return changed(s, "errand", kWhole, Span::kThis, &moveToDefault<CalendarKind::kReminders>); }},
    {"a reminder removed", Given::kStore, [](S& s) { return removed(s, "bins", kWhole, Span::kAll); }},
    {"a calendar made", Given::kStore, &makeCalendar},
    {"a calendar changed", Given::kStore, &changeCalendar},
    {"a calendar with its events removed", Given::kStore,
     [](S& s) { return removeCalendar(s, CalendarKind::kEvents, "Other"); }},
    {"a list with its reminders removed", Given::kStore,
     [](S& s) { return removeCalendar(s, CalendarKind::kReminders, "Errands"); }},
    {"60 events imported", Given::kStore, [](S& s) { return importFile(s, "more.ics"); }},
    {"known events imported again", Given::kStore, [](S& s) { return importFile(s, "again.ics"); }},
    {"a zone and its event imported", Given::kStore, [](S& s) { return importFile(s, "ship.ics"); }},
    {"contacts imported", Given::kStore,
     [](S& s) -> Status {
       ORLOCAL_TRY(CalendarStore * store, s.store());
       return withoutValue(store::importContactsFile(*store, s.in("cards.vcf")));
     }},
    {"a source and its calendar written", Given::kStore, &writeSource},
    {"a new event beside a log", Given::kLog, &saveNew},
    {"a new event that empties a log", Given::kFullLog, &saveNew},
    {"a log emptied by closing", Given::kLog,
     [](S& s) -> Status {
       ORLOCAL_TRY(CalendarStore * store, s.store());
       store->close();
       return {};
     }},
    {"a store made", Given::kNothing, &open},
    {"a store made in new folders", Given::kNothing, &openInNewFolders},
    {"a store made and imported into", Given::kNothing, [](S& s) { return importFile(s, "more.ics"); }},
    {"a store of an older format opened", Given::kOldFormat, &open},
    {"a store with older zones changed", Given::kOldZones, &saveNew},
    {"a backup made", Given::kStore, [](S& s) { return backUpTo(s, "copy.db", store::ExistingFile::kIsRefused); }},
    {"a backup made beside a log", Given::kLog,
     [](S& s) { return backUpTo(s, "copy.db", store::ExistingFile::kIsRefused); }},
    {"a backup replaced", Given::kBackup,
     [](S& s) { return backUpTo(s, "backup.db", store::ExistingFile::kIsReplaced); }},
    {"a backup restored", Given::kBackup, &restore},
    {"a backup restored where nothing is", Given::kBackupAlone, &restore},
    {"a backup restored over a damaged store", Given::kDamaged, &restore},
    {"an export written", Given::kStore, [](S& s) { return exportTo(s, "export.ics"); }, true},
    {"an export replaced", Given::kStore, [](S& s) { return exportTo(s, "old.ics"); }, true},
    {"a store salvaged", Given::kLog, &salvaged, true},
};

}  // namespace

std::span<const Change> changes() { return kChanges; }

}  // namespace orlocal::test
