#include <algorithm>
#include <iostream>
#include <sstream>

#include <gmock/gmock.h>

#include "durability/faulty_files.h"
#include "durability/saving_process.h"
#include "store/edited_items.h"
#include "store/export.h"
#include "store/import.h"
#include "store/sqlite.h"

// Each call of every changing operation to the system fails, one after the other: the operation is then whole or not at
// all, as it says, and the store goes on.
namespace orlocal::test {
namespace {

using store::CalendarKind;
using store::CalendarStore;
using store::Item;
using store::Span;
using store::Status;

struct Change {
  const char* name;
  Status (*make)(CalendarStore& store);
};

std::shared_ptr<const Item> itemTitled(CalendarStore& store, std::string_view title) {
  std::shared_ptr<const Item> found;
  for (const CalendarKind kind : {CalendarKind::kEvents, CalendarKind::kReminders})
    for (const store::Calendar& calendar : store.calendars(kind).value_or(std::vector<store::Calendar>()))
      (void)store.forEachItem(calendar.id, [&](const Item& main, const std::vector<Item>&) -> Status {
        if (main.title == title) found = std::make_shared<const Item>(main);
        return {};
      });
  return found;
}

Status notThere() { return store::failure(store::ErrorCode::kNotFound, "The item to change cannot be read."); }

Status saveNew(CalendarStore& store) {
  const auto calendar = store.defaultCalendar(CalendarKind::kEvents);
  if (!calendar) return tl::unexpected(calendar.error());
  Item event;
  event.calendar = (*calendar)->id;
  event.title = "new";
  event.start = event.end = store::CalendarTime{store::CalendarTime::Kind::kUtc, store::LocalTime(2026, 11, 5, 9), ""};
  return store::saveEvent(store, event, std::nullopt, Span::kThis);
}

/// The series from its fourth occurrence on.
store::Result<std::optional<store::Occurrence>> fourth(CalendarStore& store, const Item& series) {
  return store.occurrenceAt(series, store::Zone().toMoment(store::LocalTime(2026, 11, 5, 8)));
}

Status split(CalendarStore& store) {
  const auto series = itemTitled(store, "series");
  if (series == nullptr) return notThere();
  const auto occurrence = fourth(store, *series);
  if (!occurrence) return tl::unexpected(occurrence.error());
  Item edited = *series;
  edited.title = "later";
  edited.start->local = store::LocalTime(2026, 11, 5, 10);
  edited.end->local = store::LocalTime(2026, 11, 5, 11);
  return store::saveEvent(store, edited, *occurrence, Span::kFuture);
}

Status removeOne(CalendarStore& store) {
  const auto series = itemTitled(store, "series");
  if (series == nullptr) return notThere();
  const auto occurrence = fourth(store, *series);
  if (!occurrence) return tl::unexpected(occurrence.error());
  return store.removeEvent(*series, *occurrence, Span::kThis);
}

Status removeAll(CalendarStore& store) {
  const auto series = itemTitled(store, "series");
  return series == nullptr ? notThere() : store.removeEvent(*series, std::nullopt, Span::kAll);
}

Status complete(CalendarStore& store) {
  const auto reminder = itemTitled(store, "to do");
  if (reminder == nullptr) return notThere();
  Item edited = *reminder;
  edited.completed = store::Moment(std::chrono::seconds(1'793'606'400));
  return store::saveReminder(store, edited);
}

Status makeCalendar(CalendarStore& store) {
  const auto sources = store.sources();
  if (!sources) return tl::unexpected(sources.error());
  store::Calendar calendar;
  calendar.title = "made";
  calendar.source = sources->front().id;
  return store.saveCalendar(calendar);
}

Status removeCalendar(CalendarStore& store) {
  const auto calendars = store.calendars(CalendarKind::kEvents);
  if (!calendars) return tl::unexpected(calendars.error());
  for (const store::Calendar& calendar : *calendars)
    if (calendar.title == "Other") return store.removeCalendar(calendar.identifier);
  return notThere();
}

std::string fileOf(int events) {
  std::ostringstream text;
  text << "BEGIN:VCALENDAR\r\nX-WR-CALNAME:Other\r\n";
  for (int i = 0; i < events; ++i)
    text << "BEGIN:VEVENT\r\nUID:i" << i << "\r\nDTSTART:20261101T090000Z\r\nSUMMARY:imported " << i
         << "\r\nDESCRIPTION:" << std::string(200, 'd') << "\r\nEND:VEVENT\r\n";
  text << "END:VCALENDAR\r\n";
  return text.str();
}

Status import(CalendarStore& store) {
  const auto report = store::importCalendarText(store, fileOf(60), "more.ics");
  return report ? Status() : Status(tl::unexpected(report.error()));
}

constexpr Change kChanges[] = {{"save", &saveNew},
                               {"split", &split},
                               {"remove one", &removeOne},
                               {"remove a series", &removeAll},
                               {"complete", &complete},
                               {"make a calendar", &makeCalendar},
                               {"remove a calendar", &removeCalendar},
                               {"import", &import}};

struct Kind {
  const char* name;
  FaultyFiles::Fault fault;
};

const Kind kKinds[] = {{"open", {.call = FileCall::kOpen, .error = EMFILE}},
                       {"write", {.call = FileCall::kWrite, .error = ENOSPC}},
                       {"write in part", {.call = FileCall::kWrite, .error = ENOSPC, .cutShort = true}},
                       {"write, broken", {.call = FileCall::kWrite, .error = EIO}},
                       {"sync", {.call = FileCall::kSync, .error = EIO}},
                       {"truncate", {.call = FileCall::kTruncate, .error = EIO}},
                       {"shared memory", {.call = FileCall::kSharedMemory, .error = ENOSPC}}};

class EachFault : public testing::TestWithParam<Change> {
 protected:
  void SetUp() override {
    auto store = openStore(folder.file());
    ASSERT_TRUE(store::importCalendarText(*store, fileOf(5), "before.ics"));
    ASSERT_TRUE(store::importCalendarText(
        *store,
        "BEGIN:VEVENT\r\nUID:s\r\nSUMMARY:series\r\nDTSTART:20261102T080000Z\r\nDTEND:20261102T090000Z\r\n"
        "RRULE:FREQ=DAILY;COUNT=9\r\nEND:VEVENT\r\nBEGIN:VTODO\r\nUID:t\r\nSUMMARY:to do\r\nDUE:20261103T080000Z\r\n"
        "END:VTODO\r\n",
        "series.ics"));
    store->close();
  }

  /// What the store holds, as lines in an order that hangs on nothing else; why it cannot be read otherwise.
  static std::vector<std::string> contentOf(CalendarStore& store) {
    std::string text;
    for (const CalendarKind kind : {CalendarKind::kEvents, CalendarKind::kReminders}) {
      const auto calendars = store.calendars(kind);
      if (!calendars) return {calendars.error().message};
      const auto written = store::exportCalendars(store, *calendars, [&](std::string_view piece) -> Status {
        text += piece;
        return {};
      });
      if (!written) return {written.error().message};
    }
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
      for (const char* told : {"SUMMARY", "DTSTART", "RRULE", "EXDATE", "X-WR-CALNAME", "STATUS"})
        if (line.starts_with(told)) lines.push_back(line);
    std::sort(lines.begin(), lines.end());
    return lines;
  }
  /// A copy of the store in a place of its own.
  std::filesystem::path copy() {
    const auto place =
        std::filesystem::path(folder.file()).parent_path() / ("copy-" + std::to_string(++m_copies) + ".db");
    std::filesystem::copy_file(folder.file(), place);
    return place;
  }
  static std::string integrityOf(const std::filesystem::path& file) {
    auto database = store::Database::open(file, std::chrono::seconds(1));
    if (!database) return database.error().message;
    auto check = database->prepare("PRAGMA integrity_check");
    const auto row = check->step();
    return row && *row ? std::string(check->text(0)) : "it cannot be checked";
  }

  TemporaryStore folder;

 private:
  int m_copies = 0;
};

TEST_P(EachFault, LeavesAWholeStoreThatGoesOn) {
  FaultyFiles files;
  const auto clean = copy();
  std::vector<std::string> before, after;
  {
    auto store = openStore(clean);
    before = contentOf(*store);
    ASSERT_TRUE(GetParam().make(*store));
    after = contentOf(*store);
    ASSERT_NE(before, after);
  }
  int tried = 0;
  for (const Kind& kind : kKinds) {
    for (const bool once : {true, false}) {
      for (int n = 0;; ++n) {
        const auto place = copy();
        SCOPED_TRACE(testing::Message() << kind.name << (once ? ", once" : "") << ", after " << n);
        const int failedBefore = files.failed();
        bool done = false;
        {
          auto store = openStore(place);
          FaultyFiles::Fault fault = kind.fault;
          fault.once = once;
          fault.after = n;
          files.fail(fault);
          done = GetParam().make(*store).has_value();
          files.heal();
          const auto now = contentOf(*store);
          EXPECT_EQ(now, done ? after : before);
          EXPECT_TRUE(saveNew(*store)) << "the store did not go on";
        }
        EXPECT_EQ(integrityOf(place), "ok");
        auto again = openStore(place);
        const auto kept = contentOf(*again);
        EXPECT_EQ(std::count(kept.begin(), kept.end(), "SUMMARY:new\r"),
                  std::count(after.begin(), after.end(), "SUMMARY:new\r") * (done ? 1 : 0) + 1);
        again->close();
        std::filesystem::remove(place);
        if (HasFailure()) return;
        if (files.failed() == failedBefore) break;
        ++tried;
      }
    }
  }
  std::cout << "           " << tried << " faults\n";
  EXPECT_GT(tried, 0);
}

INSTANTIATE_TEST_SUITE_P(Of, EachFault, testing::ValuesIn(kChanges), [](const auto& tested) {
  std::string name = tested.param.name;
  std::replace(name.begin(), name.end(), ' ', '_');
  return name;
});

}  // namespace
}  // namespace orlocal::test
