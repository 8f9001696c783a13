#include <random>

#include <gmock/gmock.h>

#include "store/edits/item_writer.h"
#include "store/export.h"
#include "store/file/sqlite.h"
#include "store/icalendar/item_text.h"
#include "store/recurrence/rule_text.h"
#include "store/store_fixture.h"

namespace orlocal::store {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char* kGrace = "1000 grace";

class Undo : public StoreTest {
 protected:
  void command(const std::string& words) { store->beginCommand({kGrace, words}); }
  Status undone(std::optional<std::int64_t> number = std::nullopt) {
    const auto entry = store->undo(kGrace, number);
    if (!entry) { return failure(entry.error()); }
    return {};
  }
  /// The number of the last command.
  std::int64_t last() { return store->commandsOf(kGrace)->front().number; }
  std::string refusal(std::optional<std::int64_t> number = std::nullopt) {
    const auto status = undone(number);
    return status ? "" : status.error().message;
  }

  /// Everything that the store has, with rows and identifiers.
  std::string content() {
    std::string text;
    for (const CalendarKind kind : {CalendarKind::kEvents, CalendarKind::kReminders}) {
      const auto calendars = *store->calendars(kind);
      EXPECT_TRUE(exportCalendars(*store, calendars, [&](std::string_view piece) -> Status {
        text += piece;
        return {};
      }));
      for (const Calendar& calendar : calendars) {
        EXPECT_TRUE(store->forEachItem(calendar.id, [&](const Item& main, const std::vector<Item>& changed) -> Status {
          text += std::to_string(main.id) + ' ' + main.itemIdentifier + '\n';
          for (const Item& each : changed) {
            text += "  " + std::to_string(each.id) + ' ' + each.itemIdentifier + '\n';
          }
          return {};
        }));
      }
    }
    const auto found = occurrences(at("2026-10-01 00:00"), at("2027-03-01 00:00"));
    for (const Occurrence& each : found) { text += shown(each.start) + ' ' + std::to_string(each.item) + '\n'; }
    return text;
  }
  Item daily(const std::string& title) {
    Item item = event(title, berlin("2026-11-02 09:00"), berlin("2026-11-02 10:00"));
    item.recurrence.rules = {*parseRule("FREQ=DAILY;COUNT=20")};
    return item;
  }
  Occurrence occurrenceOf(const Item& series, std::size_t place) {
    EventQuery query = range(std::nullopt, std::nullopt);
    query.event = series.id;
    return (*store->occurrences(query))[place];
  }
  ItemEdit retitled(const Item& opened, const std::string& title) {
    ItemEdit edit{std::make_shared<const Item>(opened), opened, {ItemField::kTitle}, std::nullopt};
    edit.values.title = title;
    return edit;
  }
};

TEST_F(Undo, TakesBackWhatWasMade) {
  const std::string before = content();
  command("new");
  saved(plain("Lunch"));
  ASSERT_TRUE(undone());
  EXPECT_EQ(content(), before);
}

TEST_F(Undo, BringsBackWhatWasRemovedWithItsIdentifiers) {
  const Item lunch = saved(plain("Lunch"));
  const std::string before = content();
  command("remove");
  ASSERT_TRUE(store->removeEvent(lunch, std::nullopt, Span::kAll));
  ASSERT_TRUE(undone());
  EXPECT_EQ(content(), before);
  EXPECT_EQ((*store->event(lunch.identifier))->id, lunch.id);
  // Numbers go on where they were.
  EXPECT_GT(saved(plain("new")).id, lunch.id);
}

TEST_F(Undo, IsFollowedByTheSearch) {
  const auto found = [&](const std::string& text) {
    std::vector<ItemId> rows;
    SearchQuery query;
    query.text = text;
    const auto calendars = *store->calendars(CalendarKind::kEvents);
    for (const Calendar& calendar : calendars) { query.calendars.push_back(calendar.id); }
    const auto hits = store->search(query);
    EXPECT_TRUE(hits) << hits.error().message;
    for (const SearchHit& hit : *hits) { rows.push_back(hit.item); }
    return rows;
  };
  const Item lunch = saved(plain("Lunch"));
  command("edit");
  ASSERT_TRUE(store->saveEvent(retitled(lunch, "Supper"), std::nullopt, Span::kAll));
  EXPECT_THAT(found("lunch"), IsEmpty());
  EXPECT_THAT(found("supper"), testing::ElementsAre(lunch.id));
  ASSERT_TRUE(undone());
  EXPECT_THAT(found("supper"), IsEmpty());
  EXPECT_THAT(found("lunch"), testing::ElementsAre(lunch.id));
  command("remove");
  ASSERT_TRUE(store->removeEvent(read(lunch.id), std::nullopt, Span::kAll));
  EXPECT_THAT(found("lunch"), IsEmpty());
  ASSERT_TRUE(undone());
  EXPECT_THAT(found("lunch"), testing::ElementsAre(lunch.id));
}

TEST_F(Undo, PutsBothHalvesOfASplitSeriesTogether) {
  const Item series = saved(daily("Standup"));
  ASSERT_TRUE(store->saveEvent(retitled(series, "Long standup"), occurrenceOf(series, 12), Span::kThis));
  const std::string before = content();
  command("edit");
  ASSERT_TRUE(store->saveEvent(retitled(read(series.id), "Other"), occurrenceOf(series, 5), Span::kFuture));
  EXPECT_NE(content(), before);
  ASSERT_TRUE(undone());
  EXPECT_EQ(content(), before);
}

TEST_F(Undo, TakesTheKeptCopyOfACompletedReminderAway) {
  Item milk = reminder("Milk", berlin("2026-11-02 18:00"));
  milk.recurrence.rules = {*parseRule("FREQ=WEEKLY")};
  milk = saved(milk);
  const std::string before = content();
  command("done");
  ItemEdit edit{std::make_shared<const Item>(milk), milk, {ItemField::kCompleted}, std::nullopt};
  edit.values.completed = at("2026-11-02 19:00");
  ASSERT_TRUE(store->saveReminder(edit));
  EXPECT_NE(content(), before);
  ASSERT_TRUE(undone());
  EXPECT_EQ(content(), before);
}

TEST_F(Undo, MovesBackToTheCalendarBefore) {
  const Calendar other = madeCalendar("Other");
  const Item series = saved(daily("Standup"));
  ASSERT_TRUE(store->saveEvent(retitled(series, "Long standup"), occurrenceOf(series, 3), Span::kThis));
  const std::string before = content();
  command("move");
  ItemEdit edit{std::make_shared<const Item>(read(series.id)), read(series.id), {ItemField::kCalendar}, std::nullopt};
  edit.values.calendar = other.id;
  ASSERT_TRUE(store->saveEvent(edit, occurrenceOf(series, 0), Span::kAll));
  ASSERT_TRUE(undone());
  EXPECT_EQ(content(), before);
}

TEST_F(Undo, OfAnUndoDoesItAgain) {
  command("new");
  saved(plain("Lunch"));
  const std::string after = content();
  ASSERT_TRUE(undone());
  ASSERT_TRUE(undone(last()));
  EXPECT_EQ(content(), after);
  // And the first one counts again.
  ASSERT_TRUE(undone());
  EXPECT_THAT(refusal(), HasSubstr("no command of yours left"));
}

TEST_F(Undo, OfWhatWasUndoneNamesTheUndo) {
  command("new");
  saved(plain("Lunch"));
  const std::int64_t made = last();
  ASSERT_TRUE(undone());
  EXPECT_EQ(refusal(made), "The command " + std::to_string(made) + " (new) was undone already; `undo " +
                               std::to_string(last()) + "` does it again.");
}

TEST_F(Undo, BringsBackAChangedOccurrenceWithoutItsSeries) {
  Item stray = plain("Lunch");
  stray.uid = "lunches";
  stray.recurrenceId = floating("2026-11-01 09:00");
  std::vector<Item> none;
  const auto writer = *store->startWriting();
  ASSERT_TRUE(writer->put(stray.calendar, stray, none));
  ASSERT_TRUE(writer->commit());
  const std::string before = content();
  command("remove");
  ASSERT_TRUE(store->removeEvent(read(stray.id), std::nullopt, Span::kThis));
  ASSERT_NE(content(), before);
  ASSERT_TRUE(undone());
  EXPECT_EQ(content(), before);
  EXPECT_EQ(occurrences(std::nullopt, std::nullopt).front().originalStart, at("2026-11-01 09:00"));
}

TEST_F(Undo, GoesBackCommandByCommandOverOneItem) {
  const std::string empty = content();
  command("new");
  Item lunch = saved(plain("Lunch"));
  const std::string made = content();
  command("edit");
  ASSERT_TRUE(store->saveEvent(retitled(lunch, "Dinner"), std::nullopt, Span::kThis));
  ASSERT_TRUE(undone());
  EXPECT_EQ(content(), made);
  ASSERT_TRUE(undone());
  EXPECT_EQ(content(), empty);
}

TEST_F(Undo, TakesAllCommitsOfACommandBackAtOnce) {
  const Item one = saved(plain("One")), two = saved(plain("Two"));
  const std::string before = content();
  command("remove two things");
  ASSERT_TRUE(store->removeEvent(one, std::nullopt, Span::kAll));
  ASSERT_TRUE(store->removeEvent(two, std::nullopt, Span::kAll));
  EXPECT_EQ(store->commandsOf(kGrace)->size(), 1U);
  ASSERT_TRUE(undone());
  EXPECT_EQ(content(), before);
}

TEST_F(Undo, IsRefusedWhenSomethingElseTouchedTheItem) {
  command("new");
  Item lunch = saved(plain("Lunch"));
  const auto other = opened();
  ASSERT_TRUE(other->saveEvent(retitled(lunch, "Dinner"), std::nullopt, Span::kThis));
  const std::string before = content();
  EXPECT_THAT(refusal(), HasSubstr("\"Dinner\" was changed since by something else"));
  EXPECT_EQ(content(), before);
}

TEST_F(Undo, OfAnOlderCommandNamesTheNewerOneOnTheSameItem) {
  command("new Lunch");
  Item lunch = saved(plain("Lunch"));
  const std::int64_t first = last();
  command("edit Lunch");
  ASSERT_TRUE(store->saveEvent(retitled(lunch, "Dinner"), std::nullopt, Span::kThis));
  EXPECT_THAT(refusal(first), HasSubstr("undo that first (orlocal undo " + std::to_string(last()) + ")"));
}

TEST_F(Undo, IsRefusedWhereTheOrderWouldBeLost) {
  command("new");
  Item lunch = saved(plain("Lunch"));
  const std::int64_t made = last();
  command("edit");
  ASSERT_TRUE(store->saveEvent(retitled(lunch, "Dinner"), std::nullopt, Span::kThis));
  ASSERT_TRUE(undone());
  const std::int64_t undoOfEdit = last();
  ASSERT_TRUE(undone(made));
  // The edit cannot be done again to what is not there any more.
  EXPECT_NE(refusal(undoOfEdit), "");
}

TEST_F(Undo, IsRefusedWhenTheCalendarIsGone) {
  const Calendar other = madeCalendar("Other");
  Item lunch = plain("Lunch");
  lunch.calendar = other.id;
  lunch = saved(lunch);
  command("remove");
  ASSERT_TRUE(store->removeEvent(lunch, std::nullopt, Span::kAll));
  ASSERT_TRUE(store->removeCalendar(other.identifier));
  EXPECT_THAT(refusal(), HasSubstr("calendar"));
}

TEST_F(Undo, IsAnybodysOwn) {
  command("new");
  saved(plain("Lunch"));
  EXPECT_FALSE(store->undo("1001 ada", std::nullopt));
  EXPECT_FALSE(store->undo("1001 ada", last()));
}

TEST_F(Undo, KeepsNothingOfWhatNobodyAskedFor) {
  saved(plain("Lunch"));
  EXPECT_THAT(*store->commandsOf(kGrace), IsEmpty());
}

TEST_F(Undo, KeepsTheLastHundredCommands) {
  for (int i = 0; i < 105; ++i) {
    command("new " + std::to_string(i));
    saved(plain("Lunch"));
  }
  const auto kept = *store->commandsOf(kGrace);
  ASSERT_EQ(kept.size(), 100U);
  EXPECT_EQ(kept.back().command.words, "new 5");
}

TEST_F(Undo, LetsOthersSeeWhatCameBack) {
  const Item lunch = saved(plain("Lunch"));
  const auto other = opened();
  EXPECT_EQ(titlesIn(*other), std::vector<std::string>{"Lunch"});
  command("remove");
  ASSERT_TRUE(store->removeEvent(lunch, std::nullopt, Span::kAll));
  EXPECT_THAT(titlesIn(*other), IsEmpty());
  auto position = *other->newestChange();
  ASSERT_TRUE(undone());
  EXPECT_EQ(titlesIn(*other), std::vector<std::string>{"Lunch"});
  const auto commits = *other->outsideCommits(position);
  ASSERT_EQ(commits.size(), 1U);
  EXPECT_EQ(commits[0].events.inserted, std::vector<std::string>{lunch.identifier});
}

TEST_F(Undo, ARehearsalWritesNothing) {
  const std::string before = content();
  store->rehearse();
  command("new");
  const auto made = store->saveEvent({nullptr, plain("Lunch"), {}, std::nullopt}, std::nullopt, Span::kThis);
  ASSERT_TRUE(made);
  EXPECT_EQ(made->title, "Lunch");
  EXPECT_EQ(content(), before);
  EXPECT_THAT(*store->commandsOf(kGrace), IsEmpty());
}

/// Random commands on random items; each can be taken back, and all of them one after the other.
class RandomUndo : public Undo, public testing::WithParamInterface<unsigned> {
 protected:
  std::mt19937 random{GetParam()};
  std::vector<Calendar> others;

  std::size_t below(std::size_t count) { return random() % count; }
  std::vector<Item> mains(ItemKind kind) {
    std::vector<Item> all;
    const auto calendars = keptCalendars(kind);
    for (const Calendar& calendar : *calendars) {
      EXPECT_TRUE(store->forEachItem(calendar.id, [&](const Item& main, const std::vector<Item>&) -> Status {
        if (main.kind == kind) { all.push_back(main); }
        return {};
      }));
    }
    return all;
  }
  std::shared_ptr<std::vector<Calendar>> keptCalendars(ItemKind kind) {
    return std::make_shared<std::vector<Calendar>>(*store->calendars(calendarKindOf(kind)));
  }
  std::optional<Occurrence> anyOccurrence(const Item& main) {
    EventQuery query = range(std::nullopt, at("2027-02-01 00:00"));
    query.event = main.id;
    const auto found = store->occurrences(query);
    if (!found || found->empty()) { return std::nullopt; }
    return (*found)[below(found->size())];
  }
  std::shared_ptr<const Item> rowOf(const Item& main, const std::optional<Occurrence>& occurrence) {
    return occurrence ? *store->item(occurrence->item) : std::make_shared<const Item>(main);
  }

  void makeSomething() {
    if (below(3) == 0) {
      Item made = reminder("Task", berlin("2026-11-03 18:00"));
      if (below(2) == 0) { made.recurrence.rules = {*parseRule("FREQ=WEEKLY;COUNT=4")}; }
      saved(made);
      return;
    }
    Item made = event("Event", berlin("2026-11-02 09:00"), berlin("2026-11-02 10:00"));
    made.calendar = (*keptCalendars(ItemKind::kEvent))[below(2)].id;
    if (below(2) == 0) { made.recurrence.rules = {*parseRule("FREQ=DAILY;COUNT=9")}; }
    saved(made);
  }
  void changeSomething() {
    const auto events = mains(ItemKind::kEvent);
    if (events.empty()) { return; }
    const Item& main = events[below(events.size())];
    const auto occurrence = anyOccurrence(main);
    const Span span = static_cast<Span>(below(3));
    const auto row = rowOf(main, occurrence);
    switch (below(4)) {
      case 0:
        (void)store->removeEvent(*row, occurrence, span);
        return;
      case 1:
        (void)store->saveEvent(retitled(*row, "Title " + std::to_string(below(100))), occurrence, span);
        return;
      case 2: {
        ItemEdit edit{row, *row, {ItemField::kCalendar}, std::nullopt};
        edit.values.calendar = (*keptCalendars(ItemKind::kEvent))[below(2)].id;
        (void)store->saveEvent(edit, occurrence, span);
        return;
      }
      default: {
        ItemEdit edit{row, *row, {ItemField::kStart, ItemField::kEnd}, shownTimes(*row, occurrence, berlinZone())};
        *edit.times->start += std::chrono::hours(below(30));
        *edit.times->end += std::chrono::hours(31);
        (void)store->saveEvent(edit, occurrence, span);
      }
    }
  }
  void completeSomething() {
    const auto reminders = mains(ItemKind::kReminder);
    if (reminders.empty()) { return; }
    const Item& one = reminders[below(reminders.size())];
    if (below(4) == 0) {
      (void)store->removeReminder(one);
      return;
    }
    ItemEdit edit{std::make_shared<const Item>(one), one, {ItemField::kCompleted}, std::nullopt};
    edit.values.completed = one.completed ? std::nullopt : std::optional(at("2026-11-04 12:00"));
    (void)store->saveReminder(edit);
  }
};

TEST_P(RandomUndo, LeadsBackThroughEverythingThatWas) {
  SCOPED_TRACE("seed " + std::to_string(GetParam()));
  madeCalendar("Other");
  std::vector<std::string> states{content()};
  for (int i = 0; i < 30; ++i) {
    const std::size_t kept = store->commandsOf(kGrace)->size();
    command("command " + std::to_string(i));
    const std::size_t what = below(6);
    what < 2 ? makeSomething() : what < 5 ? changeSomething() : completeSomething();
    // What changed nothing, or was refused, is no command.
    if (store->commandsOf(kGrace)->size() == kept) { continue; }
    states.push_back(content());
    if (below(3) == 0) {
      ASSERT_TRUE(undone()) << refusal();
      ASSERT_EQ(content(), states[states.size() - 2]);
      ASSERT_TRUE(undone(last()));
      ASSERT_EQ(content(), states.back());
    }
  }
  while (states.size() > 1) {
    states.pop_back();
    const auto status = undone();
    ASSERT_TRUE(status) << status.error().message;
    ASSERT_EQ(content(), states.back());
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomUndo, testing::Range(1U, 13U));

TEST_F(StoreTest, DefaultCalendarsAreThoseThatWereChosen) {
  const Calendar work = madeCalendar("Work"), home = madeCalendar("Home");
  ASSERT_TRUE(store->makeDefault(home.identifier, CalendarKind::kEvents));
  EXPECT_EQ(defaultCalendar(), home.id);
  EXPECT_NE(defaultCalendar(CalendarKind::kReminders), home.id);
  EXPECT_FALSE(store->makeDefault(home.identifier, CalendarKind::kReminders));
  const auto other = opened();
  EXPECT_EQ((*other->defaultCalendar(CalendarKind::kEvents))->id, home.id);
  const std::uint64_t generation = *other->calendarsGeneration();
  ASSERT_TRUE(store->makeDefault(work.identifier, CalendarKind::kEvents));
  EXPECT_NE(*other->calendarsGeneration(), generation);
  EXPECT_EQ((*other->defaultCalendar(CalendarKind::kEvents))->id, work.id);
}

TEST_F(StoreTest, DefaultCalendarsThatAreGoneOrReadOnlyMakeWayForTheOldest) {
  const CalendarId oldest = defaultCalendar();
  Calendar work = madeCalendar("Work"), home = madeCalendar("Home");
  ASSERT_TRUE(store->makeDefault(work.identifier, CalendarKind::kEvents));
  ASSERT_TRUE(store->removeCalendar(work.identifier));
  EXPECT_EQ(defaultCalendar(), oldest);
  ASSERT_TRUE(store->makeDefault(home.identifier, CalendarKind::kEvents));
  home.readOnly = true;
  ASSERT_TRUE(store->saveCalendar(home));
  EXPECT_EQ(defaultCalendar(), oldest);
  EXPECT_FALSE(store->makeDefault(home.identifier, CalendarKind::kEvents));
}

/// What a command did, in words.
std::vector<std::string> told(CalendarStore& store, std::int64_t number) {
  std::vector<std::string> lines;
  const auto changes = store.changesBy(number);
  EXPECT_TRUE(changes);
  for (const CommandChange& change : *changes) {
    const char* what = change.what == CommandChange::What::kMade      ? "made "
                       : change.what == CommandChange::What::kChanged ? "changed "
                                                                      : "removed ";
    lines.push_back(what + (change.item ? change.item->title.value_or("") : "what is gone"));
  }
  return lines;
}

TEST_F(Undo, TellsWhatACommandDid) {
  command("new A");
  const Item a = saved(plain("A"));
  const auto made = last();
  command("edit A");
  ASSERT_TRUE(store->saveEvent(retitled(a, "B"), std::nullopt, Span::kThis));
  const auto changed = last();
  command("remove B");
  ASSERT_TRUE(store->removeEvent(read(a.id), std::nullopt, Span::kAll));
  const auto removed = last();
  EXPECT_THAT(told(*store, made), testing::ElementsAre("made what is gone"));
  EXPECT_THAT(told(*store, changed), testing::ElementsAre("changed A"));
  EXPECT_THAT(told(*store, removed), testing::ElementsAre("removed B"));
  EXPECT_TRUE(undone());
  EXPECT_THAT(told(*store, last()), testing::ElementsAre("made B"));
  EXPECT_THAT(told(*store, removed), testing::ElementsAre("removed B"));
  EXPECT_THAT(told(*store, 9'999), IsEmpty());
}

TEST_F(Undo, TellsOfAnOccurrenceAsItsSeries) {
  const Item series = saved(daily("Series"));
  command("edit Series");
  ASSERT_TRUE(store->removeEvent(series, occurrenceOf(series, 2), Span::kThis));
  EXPECT_THAT(told(*store, last()), testing::ElementsAre("changed Series"));
}

TEST_F(Undo, TakesBackWhatWasRemovedInOneTurn) {
  for (int i = 0; i < 20; ++i) { saved(plain("E" + std::to_string(i))); }
  saved(daily("Series"));
  const std::string before = content();
  command("purge");
  auto writer = *store->startWriting();
  std::vector<ItemId> ids;
  for (ItemId id = 1; id < 100; ++id) {
    if (const auto whole = writer->read(id); whole && *whole) { ids.push_back(id); }
  }
  EXPECT_EQ(ids.size(), 21U);
  for (const ItemId id : ids) { EXPECT_TRUE(writer->remove(id)); }
  EXPECT_TRUE(writer->commit());
  writer.reset();
  EXPECT_EQ(told(*store, last()).size(), 21U);
  EXPECT_NE(content(), before);
  EXPECT_TRUE(undone());
  EXPECT_EQ(content(), before);
}

TEST_F(Undo, IsRefusedWhereTheLogNoLongerTellsWhatHappenedSince) {
  command("new");
  saved(plain("Lunch"));
  const auto other = opened();
  for (int i = 0; i < 3; ++i) {
    Item talk = plain("Talk");
    ASSERT_TRUE(saveEvent(*other, talk, std::nullopt, Span::kThis));
  }
  ASSERT_TRUE(Database::open(file, std::chrono::seconds(1))
                  ->execute("DELETE FROM changes WHERE seq < (SELECT max(seq) FROM changes)"));
  EXPECT_THAT(refusal(), HasSubstr("so much was changed since"));
  EXPECT_EQ(titlesIn(*store).size(), 4U);
}

TEST_F(Undo, NamesWhatIsGoneAsItWasBeforeTheCommand) {
  Item lunch = saved(plain("Lunch"));
  command("edit");
  ASSERT_TRUE(store->saveEvent(retitled(lunch, "Dinner"), std::nullopt, Span::kThis));
  const auto other = opened();
  ASSERT_TRUE(other->removeEvent(lunch, std::nullopt, Span::kThis));
  EXPECT_THAT(refusal(), HasSubstr("\"Lunch\" was changed since by something else"));
}

}  // namespace
}  // namespace orlocal::store
