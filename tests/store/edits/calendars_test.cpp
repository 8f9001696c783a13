#include <gmock/gmock.h>

#include "store/store_fixture.h"

namespace orlocal::store {
namespace {

using testing::ElementsAre;

constexpr const char* kNobodys = "00000000-0000-7000-8000-000000000000";

class Calendars : public StoreTest {
 protected:
  std::vector<std::string> titles(CalendarKind kind) {
    std::vector<std::string> found;
    const auto calendars = *store->calendars(kind);
    for (const Calendar& calendar : calendars) { found.push_back(calendar.title); }
    return found;
  }
  Calendar readOnlyCalendar() {
    Calendar calendar = madeCalendar("Fixed");
    calendar.readOnly = true;
    EXPECT_TRUE(store->saveCalendar(calendar));
    return calendar;
  }
};

TEST_F(Calendars, ComeBackAsTheyWereSaved) {
  Calendar calendar = madeCalendar("Work");
  calendar.color = Rgb{0.1, 0.2, 0.3};
  calendar.order = 7;
  calendar.subscribed = true;
  ASSERT_TRUE(store->saveCalendar(calendar));
  EXPECT_EQ(**store->calendar(calendar.identifier), calendar);
}

TEST_F(Calendars, TakeNothingAnyMoreWhenAnotherProgramMadeThemReadOnly) {
  const auto other = opened();
  Calendar calendar = madeCalendar("Work");
  Item item = event("Talk", berlin("2026-11-02 09:00"), berlin("2026-11-02 10:00"));
  item.calendar = calendar.id;
  Item next = item;
  ASSERT_TRUE(saveEvent(*other, item, std::nullopt, Span::kThis));
  calendar.readOnly = true;
  ASSERT_TRUE(store->saveCalendar(calendar));
  const auto status = saveEvent(*other, next, std::nullopt, Span::kThis);
  ASSERT_FALSE(status);
  EXPECT_EQ(status.error().code, ErrorCode::kReadOnly);
}

TEST_F(Calendars, HaveAGenerationThatSavedEventsLeaveAsItIs) {
  const auto other = opened();
  const auto ours = *store->calendarsGeneration(), theirs = *other->calendarsGeneration();
  saved(event("Talk", berlin("2026-11-02 09:00"), berlin("2026-11-02 10:00")));
  EXPECT_EQ(*store->calendarsGeneration(), ours);
  EXPECT_EQ(*other->calendarsGeneration(), theirs);
  madeCalendar("Work");
  EXPECT_NE(*store->calendarsGeneration(), ours);
  EXPECT_NE(*other->calendarsGeneration(), theirs);
  const auto later = *other->calendarsGeneration();
  madeCalendar("Tasks", CalendarKind::kReminders);
  EXPECT_NE(*other->calendarsGeneration(), later);
}

TEST_F(Calendars, ComeInTheirOrder) {
  Calendar last = madeCalendar("Last"), first = madeCalendar("First");
  last.order = 2;
  first.order = 1;
  ASSERT_TRUE(store->saveCalendar(last));
  ASSERT_TRUE(store->saveCalendar(first));
  EXPECT_THAT(titles(CalendarKind::kEvents), ElementsAre("Calendar", "First", "Last"));
}

TEST_F(Calendars, AreKeptApartByKind) {
  madeCalendar("Groceries", CalendarKind::kReminders);
  EXPECT_THAT(titles(CalendarKind::kEvents), ElementsAre("Calendar"));
  EXPECT_THAT(titles(CalendarKind::kReminders), ElementsAre("Reminders", "Groceries"));
}

TEST_F(Calendars, NeedATitle) {
  Calendar calendar;
  calendar.source = 1;
  const auto status = store->saveCalendar(calendar);
  ASSERT_FALSE(status);
  EXPECT_EQ(status.error().code, ErrorCode::kRefused);
}

TEST_F(Calendars, NeedASource) {
  Calendar calendar;
  calendar.title = "Work";
  EXPECT_FALSE(store->saveCalendar(calendar));
  calendar.source = 77;
  EXPECT_FALSE(store->saveCalendar(calendar));
  EXPECT_THAT(titles(CalendarKind::kEvents), ElementsAre("Calendar"));
}

TEST_F(Calendars, ThatAllowNoChangesAreNotSaved) {
  Calendar calendar = readOnlyCalendar();
  calendar.title = "Renamed";
  const auto status = store->saveCalendar(calendar);
  ASSERT_FALSE(status);
  EXPECT_EQ(status.error().code, ErrorCode::kReadOnly);
  EXPECT_EQ((*store->calendar(calendar.identifier))->title, "Fixed");
}

TEST_F(Calendars, ThatAreTheLastOfTheirKindStay) {
  for (const CalendarKind kind : {CalendarKind::kEvents, CalendarKind::kReminders}) {
    const auto status = store->removeCalendar((*store->calendars(kind))[0].identifier);
    ASSERT_FALSE(status);
    EXPECT_EQ(status.error().code, ErrorCode::kRefused);
    EXPECT_EQ((*store->calendars(kind)).size(), 1u);
  }
}

TEST_F(Calendars, TakeTheirItemsWithThem) {
  const Calendar work = madeCalendar("Work");
  Item item = event("review", berlin("2026-11-02 09:00"), berlin("2026-11-02 10:00"));
  item.calendar = work.id;
  item = saved(item);
  saved(event("kept", berlin("2026-11-02 09:00"), berlin("2026-11-02 10:00")));
  ASSERT_TRUE(store->removeCalendar(work.identifier));
  EXPECT_EQ(*store->item(item.id), nullptr);
  EXPECT_THAT(listed(std::nullopt, std::nullopt), ElementsAre("2026-11-02 09:00 kept"));
  EXPECT_FALSE(*store->calendar(work.identifier));
}

TEST_F(Calendars, TellOfEachEventOnceWhenTheyGo) {
  const Calendar work = madeCalendar("Work");
  Item series = event("review", berlin("2026-11-02 09:00"), berlin("2026-11-02 10:00"));
  series.calendar = work.id;
  series.recurrence.rules = {rule(RecurrenceRule::Frequency::kDaily, 3)};
  series = saved(series);
  Item changed = read(series.id);
  changed.title = "changed";
  ASSERT_TRUE(saveEvent(*store, changed, occurrences(std::nullopt, std::nullopt)[0], Span::kThis));
  auto other = opened();
  auto position = *other->newestChange();
  ASSERT_TRUE(store->removeCalendar(work.identifier));
  const auto outside = *other->outsideCommits(position);
  ASSERT_EQ(outside.size(), 1u);
  EXPECT_THAT(outside[0].events.deleted, ElementsAre(series.identifier));
  EXPECT_TRUE(outside[0].events.updated.empty());
}

TEST_F(Calendars, ThatAreGoneAreNotSaved) {
  Calendar calendar = madeCalendar("Work");
  ASSERT_TRUE(store->removeCalendar(calendar.identifier));
  const auto status = store->saveCalendar(calendar);
  ASSERT_FALSE(status);
  EXPECT_EQ(status.error().code, ErrorCode::kNotFound);
  EXPECT_EQ(status.error().message, "The calendar \"Work\" is no longer in the calendar store.");
  EXPECT_THAT(titles(CalendarKind::kEvents), ElementsAre("Calendar"));
}

TEST_F(Calendars, OfAnotherFileAreNotSavedOverTheOneWithTheirNumber) {
  madeCalendar("Work");
  Calendar other = (*store->calendars(CalendarKind::kEvents))[0];
  const std::string identifier = other.identifier;
  other.identifier = kNobodys;
  other.title = "Another";
  EXPECT_EQ(store->saveCalendar(other).error().code, ErrorCode::kNotFound);
  EXPECT_EQ((*store->calendar(identifier))->title, "Calendar");
}

TEST_F(Calendars, StayOneOfEventsOrOneOfReminders) {
  Calendar calendar = madeCalendar("Work");
  calendar.kind = CalendarKind::kReminders;
  EXPECT_EQ(store->saveCalendar(calendar).error().code, ErrorCode::kInvalid);
  EXPECT_THAT(titles(CalendarKind::kEvents), ElementsAre("Calendar", "Work"));
}

TEST_F(Calendars, ThatAreNotThereAreNoDefault) {
  for (const std::string& identifier : {std::string("nonsense"), std::string(kNobodys)}) {
    EXPECT_EQ(store->makeDefault(identifier, CalendarKind::kEvents).error().code, ErrorCode::kNotFound);
  }
}

TEST_F(Calendars, ThatCannotBeChangedAreNotRemoved) {
  Calendar calendar = madeCalendar("Holidays");
  calendar.immutable = true;
  ASSERT_TRUE(store->saveCalendar(calendar));
  const auto status = store->removeCalendar(calendar.identifier);
  ASSERT_FALSE(status);
  EXPECT_EQ(status.error().code, ErrorCode::kReadOnly);
  EXPECT_EQ(status.error().message, "The calendar \"Holidays\" may not be removed.");
  EXPECT_TRUE(*store->calendar(calendar.identifier));
}

TEST_F(Calendars, ThatAreNotThereCannotBeRemoved) {
  EXPECT_EQ(store->removeCalendar("nonsense").error().code, ErrorCode::kNotFound);
}

TEST_F(Calendars, ForNewItemsAreTheOldestThatAllowChanges) {
  Calendar first = (*store->calendars(CalendarKind::kEvents))[0];
  const Calendar second = madeCalendar("Second");
  EXPECT_EQ(defaultCalendar(), first.id);
  first.readOnly = true;
  ASSERT_TRUE(store->saveCalendar(first));
  EXPECT_EQ(defaultCalendar(), second.id);
}

TEST_F(Calendars, NeverReuseAnIdentifierOrARow) {
  const Calendar gone = madeCalendar("Gone");
  ASSERT_TRUE(store->removeCalendar(gone.identifier));
  const Calendar next = madeCalendar("Next");
  EXPECT_GT(next.id, gone.id);
  EXPECT_NE(next.identifier, gone.identifier);
}

TEST_F(Calendars, ASubscribedOneIsNotSaved) {
  Calendar calendar = madeCalendar("Feed");
  calendar.subscribed = true;
  ASSERT_TRUE(store->saveCalendar(calendar));
  calendar.title = "Mine";
  const auto status = store->saveCalendar(calendar);
  ASSERT_FALSE(status);
  EXPECT_EQ(status.error().code, ErrorCode::kReadOnly);
}

}  // namespace
}  // namespace orlocal::store
