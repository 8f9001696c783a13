#include "store/core/outside_commits.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "store/edits/item_writer.h"
#include "store/file/change_log.h"
#include "store/file/schema.h"
#include "store/store_fixture.h"

namespace orlocal::store {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr std::int64_t kTheirs = 7;
constexpr std::int64_t kOurs = 8;

/// Rows of the log as somebody wrote them, read back as a listener does.
class OutsideCommits : public testing::Test {
 protected:
  struct Row {
    Operation operation;
    Uuid uuid;
    Subject subject = Subject::kEvent;
    std::optional<ItemId> series = std::nullopt;
  };

  OutsideCommits() {
    std::string pattern = (std::filesystem::temp_directory_path() / "orlocal-log-XXXXXX").string();
    m_folder = mkdtemp(pattern.data());
    m_database = openStoreFile(m_folder / "calendar.db", std::chrono::seconds(10), m_uuids).value();
  }
  ~OutsideCommits() override { std::filesystem::remove_all(m_folder); }

  Uuid made() { return m_uuids.next(); }

  void commit(const std::vector<Row>& rows, std::int64_t writer = kTheirs) {
    ChangeLog log(m_database, writer);
    auto transaction = Transaction::write(m_database).value();
    ASSERT_TRUE(log.startCommit());
    for (const Row& row : rows) { ASSERT_TRUE(log.record(row.operation, row.subject, 1, row.series, row.uuid)); }
    ASSERT_TRUE(log.finishCommit());
    ASSERT_TRUE(transaction.commit());
  }

  std::vector<OutsideCommit> heard() {
    ChangeLog log(m_database, kOurs);
    const auto snapshot = Transaction::read(m_database).value();
    return outsideCommitsAfter(log, position).value();
  }

  void forgetTheLog() { ASSERT_TRUE(m_database.execute("DELETE FROM changes")); }

  std::int64_t position = 0;

 private:
  std::filesystem::path m_folder;
  UuidMaker m_uuids;
  Database m_database;
};

TEST_F(OutsideCommits, AreNoneInANewStore) { EXPECT_THAT(heard(), IsEmpty()); }

TEST_F(OutsideCommits, TellWhatACommitInsertedUpdatedAndDeleted) {
  const Uuid a = made(), b = made(), c = made();
  commit({{Operation::kDeleted, c}, {Operation::kInserted, a}, {Operation::kUpdated, b}});
  const auto commits = heard();
  ASSERT_THAT(commits, SizeIs(1));
  EXPECT_THAT(commits[0].events.inserted, ElementsAre(a.text()));
  EXPECT_THAT(commits[0].events.updated, ElementsAre(b.text()));
  EXPECT_THAT(commits[0].events.deleted, ElementsAre(c.text()));
}

TEST_F(OutsideCommits, KeepTheOrderOfTouchingInsideACommit) {
  const Uuid a = made(), b = made(), c = made();
  commit({{Operation::kInserted, c}, {Operation::kInserted, a}, {Operation::kInserted, b}});
  EXPECT_THAT(heard().at(0).events.inserted, ElementsAre(c.text(), a.text(), b.text()));
}

TEST_F(OutsideCommits, ComeInTheOrderOfCommitting) {
  const Uuid a = made(), b = made();
  commit({{Operation::kInserted, b}});
  commit({{Operation::kInserted, a}});
  const auto commits = heard();
  ASSERT_THAT(commits, SizeIs(2));
  EXPECT_THAT(commits[0].events.inserted, ElementsAre(b.text()));
  EXPECT_THAT(commits[1].events.inserted, ElementsAre(a.text()));
}

TEST_F(OutsideCommits, LeaveOutOnesOwn) {
  const Uuid theirs = made();
  commit({{Operation::kInserted, made()}}, kOurs);
  commit({{Operation::kInserted, theirs}});
  commit({{Operation::kInserted, made()}}, kOurs);
  const auto commits = heard();
  ASSERT_THAT(commits, SizeIs(1));
  EXPECT_THAT(commits[0].events.inserted, ElementsAre(theirs.text()));
}

TEST_F(OutsideCommits, StayApartWhenOneOfOnesOwnLiesBetween) {
  commit({{Operation::kInserted, made()}});
  commit({{Operation::kInserted, made()}}, kOurs);
  commit({{Operation::kInserted, made()}});
  EXPECT_THAT(heard(), SizeIs(2));
}

TEST_F(OutsideCommits, TellAnEventOnceHoweverOftenItWasTouched) {
  const Uuid a = made();
  commit({{Operation::kUpdated, a}, {Operation::kUpdated, a}});
  EXPECT_THAT(heard().at(0).events.updated, ElementsAre(a.text()));
}

TEST_F(OutsideCommits, TellAnEventThatWasInsertedAndUpdatedAsInserted) {
  const Uuid a = made();
  commit({{Operation::kInserted, a}, {Operation::kUpdated, a}});
  const auto commits = heard();
  EXPECT_THAT(commits.at(0).events.inserted, ElementsAre(a.text()));
  EXPECT_THAT(commits.at(0).events.updated, IsEmpty());
}

TEST_F(OutsideCommits, TellAnEventThatWasUpdatedAndDeletedAsDeleted) {
  const Uuid a = made();
  commit({{Operation::kUpdated, a}, {Operation::kDeleted, a}});
  const auto commits = heard();
  EXPECT_THAT(commits.at(0).events.deleted, ElementsAre(a.text()));
  EXPECT_THAT(commits.at(0).events.updated, IsEmpty());
}

TEST_F(OutsideCommits, DoNotTellAnEventThatCameAndWent) {
  const Uuid a = made(), b = made();
  commit({{Operation::kInserted, a}, {Operation::kInserted, b}, {Operation::kDeleted, a}});
  EXPECT_THAT(heard().at(0).events.inserted, ElementsAre(b.text()));
}

TEST_F(OutsideCommits, LeaveOutACommitOfWhichNothingRemains) {
  const Uuid a = made();
  commit({{Operation::kInserted, a}, {Operation::kDeleted, a}});
  EXPECT_THAT(heard(), IsEmpty());
}

TEST_F(OutsideCommits, TellAnEventThatCameAndWentInTwoCommitsTwice) {
  const Uuid a = made();
  commit({{Operation::kInserted, a}});
  commit({{Operation::kDeleted, a}});
  const auto commits = heard();
  ASSERT_THAT(commits, SizeIs(2));
  EXPECT_THAT(commits[0].events.inserted, ElementsAre(a.text()));
  EXPECT_THAT(commits[1].events.deleted, ElementsAre(a.text()));
}

TEST_F(OutsideCommits, TellAChangedOccurrenceAsAnUpdateOfItsSeries) {
  const Uuid series = made();
  for (const Operation operation : {Operation::kInserted, Operation::kUpdated, Operation::kDeleted}) {
    commit({{operation, series, Subject::kEvent, 1}});
    const auto commits = heard();
    ASSERT_THAT(commits, SizeIs(1));
    EXPECT_THAT(commits[0].events.updated, ElementsAre(series.text()));
    EXPECT_THAT(commits[0].events.inserted, IsEmpty());
    EXPECT_THAT(commits[0].events.deleted, IsEmpty());
  }
}

TEST_F(OutsideCommits, KeepRemindersAndCalendarsApartFromEvents) {
  const Uuid event = made(), reminder = made(), calendar = made(), list = made();
  commit({{Operation::kInserted, reminder, Subject::kReminder},
          {Operation::kInserted, event},
          {Operation::kDeleted, calendar, Subject::kCalendar},
          {Operation::kUpdated, list, Subject::kReminderList}});
  const auto commits = heard();
  ASSERT_THAT(commits, SizeIs(1));
  EXPECT_THAT(commits[0].events.inserted, ElementsAre(event.text()));
  EXPECT_THAT(commits[0].reminders.inserted, ElementsAre(reminder.text()));
  EXPECT_THAT(commits[0].calendars.deleted, ElementsAre(calendar.text()));
  EXPECT_THAT(commits[0].reminderLists.updated, ElementsAre(list.text()));
}

TEST_F(OutsideCommits, LeaveOutZonesAndContacts) {
  commit({{Operation::kInserted, made(), Subject::kZone}, {Operation::kInserted, made(), Subject::kContact}});
  EXPECT_THAT(heard(), IsEmpty());
}

TEST_F(OutsideCommits, AreToldOnce) {
  commit({{Operation::kInserted, made()}});
  EXPECT_THAT(heard(), SizeIs(1));
  EXPECT_THAT(heard(), IsEmpty());
  commit({{Operation::kInserted, made()}});
  EXPECT_THAT(heard(), SizeIs(1));
}

TEST_F(OutsideCommits, MoveThePositionOverOnesOwnToo) {
  commit({{Operation::kInserted, made()}}, kOurs);
  heard();
  EXPECT_EQ(position, 1);
}

TEST_F(OutsideCommits, BeginAnewWhenTheFileWasPutBackFromACopy) {
  for (int i = 0; i < 3; ++i) { commit({{Operation::kInserted, made()}}); }
  heard();
  forgetTheLog();
  EXPECT_THAT(heard(), IsEmpty());
  const Uuid a = made();
  commit({{Operation::kInserted, a}});
  EXPECT_THAT(heard().at(0).events.inserted, ElementsAre(a.text()));
}

/// The same through two stores on one file.
class OutsideCommitsOfAStore : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    listener = opened();
    position = listener->newestChange().value();
  }
  void TearDown() override {
    listener.reset();
    StoreTest::TearDown();
  }

  std::vector<OutsideCommit> heard() { return listener->outsideCommits(position).value(); }

  Item weeklySeries() {
    Item series = event("Weekly", berlin("2026-11-02 09:00"), berlin("2026-11-02 10:00"));
    series.recurrence.rules = {rule(RecurrenceRule::Frequency::kWeekly)};
    return saved(series);
  }

  std::unique_ptr<CalendarStore> listener;
  LogPosition position;
};

TEST_F(OutsideCommitsOfAStore, TellAnEventsLife) {
  Item item = saved(event("Review", berlin("2026-11-02 09:00"), berlin("2026-11-02 10:00")));
  item.title = "Review again";
  saved(item);
  ASSERT_TRUE(store->removeEvent(item, std::nullopt, Span::kThis));
  const auto commits = heard();
  ASSERT_THAT(commits, SizeIs(3));
  EXPECT_THAT(commits[0].events.inserted, ElementsAre(item.identifier));
  EXPECT_THAT(commits[1].events.updated, ElementsAre(item.identifier));
  EXPECT_THAT(commits[2].events.deleted, ElementsAre(item.identifier));
}

TEST_F(OutsideCommitsOfAStore, NameAnEventThatOpensInTheListenersStore) {
  saved(event("Review", berlin("2026-11-02 09:00"), berlin("2026-11-02 10:00")));
  const auto found = listener->event(heard().at(0).events.inserted.at(0));
  ASSERT_TRUE(found && *found);
  EXPECT_EQ((*found)->title, "Review");
}

TEST_F(OutsideCommitsOfAStore, TellAChangedOccurrenceAsAnUpdateOfItsSeries) {
  const Item series = weeklySeries();
  heard();
  const auto second = occurrences(at("2026-11-09 00:00"), at("2026-11-10 00:00")).at(0);
  Item changed = series;
  changed.title = "Later this once";
  changed.start = berlin("2026-11-09 11:00");
  changed.end = berlin("2026-11-09 12:00");
  ASSERT_TRUE(saveEvent(*store, changed, second, Span::kThis));
  const auto commits = heard();
  ASSERT_THAT(commits, SizeIs(1));
  EXPECT_THAT(commits[0].events.updated, ElementsAre(series.identifier));
  EXPECT_THAT(commits[0].events.inserted, IsEmpty());
}

TEST_F(OutsideCommitsOfAStore, TellARemovedOccurrenceAsAnUpdateOfItsSeries) {
  const Item series = weeklySeries();
  heard();
  const auto second = occurrences(at("2026-11-09 00:00"), at("2026-11-10 00:00")).at(0);
  ASSERT_TRUE(store->removeEvent(series, second, Span::kThis));
  EXPECT_THAT(heard().at(0).events.updated, ElementsAre(series.identifier));
}

TEST_F(OutsideCommitsOfAStore, TellASplitSeriesAsOneUpdatedAndOneInserted) {
  const Item series = weeklySeries();
  heard();
  const auto second = occurrences(at("2026-11-09 00:00"), at("2026-11-10 00:00")).at(0);
  Item later = series;
  later.title = "From now on";
  later.start = berlin("2026-11-09 09:00");
  later.end = berlin("2026-11-09 10:00");
  ASSERT_TRUE(saveEvent(*store, later, second, Span::kFuture));
  const auto commits = heard();
  ASSERT_THAT(commits, SizeIs(1));
  EXPECT_THAT(commits[0].events.updated, ElementsAre(series.identifier));
  EXPECT_THAT(commits[0].events.inserted, ElementsAre(later.identifier));
}

TEST_F(OutsideCommitsOfAStore, TellASeriesThatIsRemovedWithItsChangedOccurrencesAsDeleted) {
  const Item series = weeklySeries();
  const auto second = occurrences(at("2026-11-09 00:00"), at("2026-11-10 00:00")).at(0);
  Item changed = series;
  changed.title = "Once";
  changed.start = berlin("2026-11-09 11:00");
  changed.end = berlin("2026-11-09 12:00");
  ASSERT_TRUE(saveEvent(*store, changed, second, Span::kThis));
  heard();
  const auto first = occurrences(at("2026-11-02 00:00"), at("2026-11-03 00:00")).at(0);
  ASSERT_TRUE(store->removeEvent(series, first, Span::kFuture));
  const auto commits = heard();
  ASSERT_THAT(commits, SizeIs(1));
  EXPECT_THAT(commits[0].events.deleted, ElementsAre(series.identifier));
  EXPECT_THAT(commits[0].events.updated, IsEmpty());
}

TEST_F(OutsideCommitsOfAStore, TellTheEventsOfARemovedCalendarAsDeleted) {
  const Calendar work = madeCalendar("Work");
  Item item = event("Review", berlin("2026-11-02 09:00"), berlin("2026-11-02 10:00"));
  item.calendar = work.id;
  item = saved(item);
  heard();
  ASSERT_TRUE(store->removeCalendar(work.identifier));
  const auto commits = heard();
  ASSERT_THAT(commits, SizeIs(1));
  EXPECT_THAT(commits[0].events.deleted, ElementsAre(item.identifier));
  EXPECT_THAT(commits[0].calendars.deleted, ElementsAre(work.identifier));
}

TEST_F(OutsideCommitsOfAStore, TellRemindersAsReminders) {
  const Item item = saved(reminder("Water the plants"));
  const auto commits = heard();
  ASSERT_THAT(commits, SizeIs(1));
  EXPECT_TRUE(commits[0].events.empty());
  EXPECT_THAT(commits[0].reminders.inserted, ElementsAre(item.itemIdentifier));
}

TEST_F(OutsideCommitsOfAStore, TellAnImportAsOneCommit) {
  auto writer = store->startWriting().value();
  std::vector<std::string> identifiers;
  for (int i = 0; i < 3; ++i) {
    Item item = event("Imported", utc("2026-11-02 09:00"), utc("2026-11-02 10:00"));
    item.uid = "imported-" + std::to_string(i);
    std::vector<Item> none;
    ASSERT_TRUE(writer->put(writer->defaultCalendar(CalendarKind::kEvents).value()->id, item, none));
    identifiers.push_back(item.identifier);
  }
  ASSERT_TRUE(writer->commit());
  writer.reset();
  const auto commits = heard();
  ASSERT_THAT(commits, SizeIs(1));
  EXPECT_EQ(commits[0].events.inserted, identifiers);
}

TEST_F(OutsideCommitsOfAStore, DoNotTellWhatWasNotCommitted) {
  {
    auto writer = store->startWriting().value();
    Item item = event("Given up", utc("2026-11-02 09:00"), utc("2026-11-02 10:00"));
    item.uid = "given-up";
    std::vector<Item> none;
    ASSERT_TRUE(writer->put(writer->defaultCalendar(CalendarKind::kEvents).value()->id, item, none));
  }
  EXPECT_THAT(heard(), IsEmpty());
}

TEST_F(OutsideCommitsOfAStore, LeaveOutWhatTheListenerItselfSaves) {
  Item item = event("Mine", berlin("2026-11-02 09:00"), berlin("2026-11-02 10:00"));
  ASSERT_TRUE(saveEvent(*listener, item, std::nullopt, Span::kThis));
  EXPECT_THAT(heard(), IsEmpty());
}

}  // namespace
}  // namespace orlocal::store
