#include "store/edits/item_writer.h"

#include <random>

#include <fmt/format.h>
#include <gmock/gmock.h>

#include "store/file/sqlite.h"
#include "store/store_fixture.h"

namespace orlocal::store {
namespace {

using Frequency = RecurrenceRule::Frequency;
using testing::ElementsAre;
using testing::IsEmpty;

class Writer : public StoreTest {
 protected:
  Item single(const std::string& uid = "one") {
    Item item = event(uid, berlin("2026-11-02 09:00"), berlin("2026-11-02 10:00"));
    item.uid = uid;
    return item;
  }
  Item series() {
    Item item = single("series");
    item.recurrence.rules = {rule(Frequency::kDaily, 4)};
    return item;
  }
  Item changed(const std::string& title, CalendarTime original, CalendarTime start) {
    Item item = event(title, start, start);
    item.end->local += 3600;
    item.uid = "series";
    item.recurrenceId = std::move(original);
    return item;
  }
  PutOutcome put(Item& main, std::vector<Item> others = {}) {
    auto writer = std::move(*store->startWriting());
    const auto outcome = writer->put(main.calendar, main, others);
    EXPECT_TRUE(outcome) << (outcome ? "" : outcome.error().message);
    EXPECT_TRUE(writer->commit());
    return outcome.value_or(PutOutcome::kUnchanged);
  }
  std::vector<std::string> everything() { return listed(std::nullopt, std::nullopt); }
};

TEST_F(Writer, SaysWhatBecameOfAnItem) {
  Item item = single();
  EXPECT_EQ(put(item), PutOutcome::kNew);
  const Item first = item;
  EXPECT_EQ(put(item), PutOutcome::kUnchanged);
  item.title = "other";
  EXPECT_EQ(put(item), PutOutcome::kUpdated);
  EXPECT_EQ(item.id, first.id);
  EXPECT_EQ(item.identifier, first.identifier);
  EXPECT_THAT(everything(), ElementsAre("2026-11-02 09:00 other"));
}

TEST_F(Writer, TakesMomentsAsACalendarTextHasThemForTheStoredOnes) {
  Item item = single();
  item.created = item.modified = item.stamped = at("2026-11-01 10:00") + std::chrono::microseconds(123456);
  put(item);
  Item text = item;
  text.created = text.modified = text.stamped = at("2026-11-01 10:00");
  EXPECT_EQ(put(text), PutOutcome::kUnchanged);
  EXPECT_EQ(read(item.id).modified, item.modified);
  text.modified = at("2026-11-01 10:01");
  EXPECT_EQ(put(text), PutOutcome::kUpdated);
}

TEST_F(Writer, TakesNoOtherFractionOfASecondForTheStoredOne) {
  Item item = single();
  item.modified = at("2026-11-01 10:00") + std::chrono::microseconds(123456);
  put(item);
  item.modified = at("2026-11-01 10:00") + std::chrono::microseconds(123457);
  EXPECT_EQ(put(item), PutOutcome::kUpdated);
}

TEST_F(Writer, LeavesNoTraceWithoutACommit) {
  {
    auto writer = std::move(*store->startWriting());
    Item item = single();
    std::vector<Item> none;
    ASSERT_TRUE(writer->put(item.calendar, item, none));
    Calendar calendar;
    calendar.title = "Made";
    ASSERT_TRUE(writer->makeCalendar(calendar));
  }
  EXPECT_THAT(everything(), IsEmpty());
  EXPECT_EQ((*store->calendars(CalendarKind::kEvents)).size(), 1u);
  Item item = single();
  EXPECT_EQ(put(item), PutOutcome::kNew);
}

TEST_F(Writer, FindsWhatHasItsIdentifierForItsUid) {
  const Item made = saved(event("made here", berlin("2026-11-02 09:00"), berlin("2026-11-02 10:00")));
  ASSERT_EQ(made.uid, made.identifier);
  const Calendar work = madeCalendar("Work");
  auto writer = std::move(*store->startWriting());
  std::vector<Item> none;
  for (int i = 0; i < 20; ++i) {
    Item other = single(fmt::format("other {}", i));
    ASSERT_EQ(*writer->put(other.calendar, other, none), PutOutcome::kNew);
  }
  Item again = single(made.uid), elsewhere = single(made.uid);
  EXPECT_EQ(*writer->put(made.calendar, again, none), PutOutcome::kUpdated);
  EXPECT_EQ(again.id, made.id);
  EXPECT_EQ(*writer->put(work.id, elsewhere, none), PutOutcome::kNew);
  Item there = single(made.uid);
  EXPECT_EQ(*writer->put(work.id, there, none), PutOutcome::kUnchanged);
  EXPECT_EQ(there.id, elsewhere.id);
}

TEST_F(Writer, KeepsTheSameUidApartByCalendar) {
  const Calendar work = madeCalendar("Work");
  Item here = single(), there = single();
  there.calendar = work.id;
  put(here);
  EXPECT_EQ(put(there), PutOutcome::kNew);
  EXPECT_NE(here.identifier, there.identifier);
  EXPECT_EQ(everything().size(), 2u);
}

TEST_F(Writer, PutsChangedOccurrencesInPlaceOfTheOriginals) {
  Item main = series();
  const Item other = changed("moved", utc("2026-11-03 08:00"), berlin("2026-11-03 15:00"));
  EXPECT_EQ(put(main, {other}), PutOutcome::kNew);
  EXPECT_THAT(everything(), ElementsAre("2026-11-02 09:00 series", "2026-11-03 15:00 moved", "2026-11-04 09:00 series",
                                        "2026-11-05 09:00 series"));
  EXPECT_EQ(put(main, {other}), PutOutcome::kUnchanged);
  EXPECT_EQ(occurrences(std::nullopt, std::nullopt)[1].originalStart, at("2026-11-03 09:00"));
}

TEST_F(Writer, MatchesChangedOccurrencesWrittenAsDates) {
  Item main = series();
  put(main, {changed("moved", day("2026-11-03"), berlin("2026-11-03 15:00"))});
  EXPECT_EQ(everything().size(), 4u);
}

TEST_F(Writer, RemovesChangedOccurrencesThatAreNoLongerGiven) {
  Item main = series();
  put(main, {changed("moved", berlin("2026-11-03 09:00"), berlin("2026-11-03 15:00"))});
  EXPECT_EQ(put(main), PutOutcome::kUpdated);
  EXPECT_THAT(everything(), ElementsAre("2026-11-02 09:00 series", "2026-11-03 09:00 series", "2026-11-04 09:00 series",
                                        "2026-11-05 09:00 series"));
}

TEST_F(Writer, TakesTheLaterOfTwoChangesOfOneOccurrence) {
  Item main = series();
  put(main, {changed("first", berlin("2026-11-03 09:00"), berlin("2026-11-03 15:00")),
             changed("second", berlin("2026-11-03 09:00"), berlin("2026-11-03 16:00"))});
  EXPECT_EQ(everything().size(), 4u);
  EXPECT_EQ(everything()[1], "2026-11-03 16:00 second");
}

TEST_F(Writer, KeepsAChangedOccurrenceWithoutItsSeries) {
  Item stray = changed("stray", berlin("2026-11-03 09:00"), berlin("2026-11-03 15:00"));
  EXPECT_EQ(put(stray), PutOutcome::kNew);
  EXPECT_EQ(put(stray), PutOutcome::kUnchanged);
  EXPECT_THAT(everything(), ElementsAre("2026-11-03 15:00 stray"));
  EXPECT_EQ(occurrences(std::nullopt, std::nullopt)[0].originalStart, at("2026-11-03 09:00"));
  EXPECT_NE(*store->event(stray.identifier), nullptr);
  stray.title = "another";
  EXPECT_EQ(put(stray), PutOutcome::kUpdated);
  EXPECT_THAT(everything(), ElementsAre("2026-11-03 15:00 another"));
}

TEST_F(Writer, ComesAfterAPlaceFromWhichTheLogTellsEverything) {
  const LogPosition before = (*store->startWriting())->position();
  for (const char* uid : {"one", "two", "three"}) {
    Item item = single(uid);
    put(item);
  }
  const auto comesAfter = [&] { return (*store->startWriting())->comesAfter(before).value(); };
  EXPECT_TRUE(comesAfter());
  const auto forget = [&](std::int64_t upTo) {
    ASSERT_TRUE(Database::open(file, std::chrono::seconds(1))
                    ->execute(("DELETE FROM changes WHERE seq <= " + std::to_string(upTo)).c_str()));
  };
  forget(before.row);
  EXPECT_TRUE(comesAfter());
  forget(before.row + 1);
  EXPECT_FALSE(comesAfter()) << "what came first after it is not known any more";
}

TEST_F(Writer, LeavesAStrayOneWhenItIsSaved) {
  Item stray = changed("stray", berlin("2026-11-03 09:00"), berlin("2026-11-03 15:00"));
  put(stray);
  Item opened = read(stray.id);
  opened.title = "renamed";
  ASSERT_TRUE(saveEvent(*store, opened, std::nullopt, Span::kThis));
  EXPECT_THAT(everything(), ElementsAre("2026-11-03 15:00 renamed"));
  EXPECT_EQ(occurrences(std::nullopt, std::nullopt)[0].originalStart, at("2026-11-03 09:00"));
  EXPECT_EQ(read(stray.id).recurrenceId, berlin("2026-11-03 09:00"));
}

TEST_F(Writer, GivesAStrayToItsSeriesWhenThatComes) {
  Item stray = changed("stray", berlin("2026-11-03 09:00"), berlin("2026-11-03 15:00"));
  put(stray);
  Item main = series();
  put(main, {changed("stray", berlin("2026-11-03 09:00"), berlin("2026-11-03 15:00"))});
  EXPECT_EQ(everything().size(), 4u);
  EXPECT_EQ(read(stray.id).series, main.id);
  EXPECT_EQ(read(stray.id).identifier, main.identifier);
  EXPECT_EQ(read(stray.id).itemIdentifier, stray.itemIdentifier);
}

TEST_F(Writer, LetsAChangedOccurrenceJoinASeriesThatIsThere) {
  Item main = series();
  put(main);
  Item late = changed("late", berlin("2026-11-03 09:00"), berlin("2026-11-03 15:00"));
  EXPECT_EQ(put(late), PutOutcome::kNew);
  EXPECT_EQ(late.series, main.id);
  EXPECT_EQ(everything().size(), 4u);
}

TEST_F(Writer, ReplacesTheOnlyOccurrenceOfASingleEvent) {
  Item main = single("series");
  const Item other = changed("moved", berlin("2026-11-02 09:00"), berlin("2026-11-02 15:00"));
  put(main, {other});
  EXPECT_THAT(everything(), ElementsAre("2026-11-02 15:00 moved"));
  EXPECT_EQ(put(main, {other}), PutOutcome::kUnchanged);
  put(main);
  EXPECT_THAT(everything(), ElementsAre("2026-11-02 09:00 series"));
}

TEST_F(Writer, RefusesItemsOfTheWrongKind) {
  auto writer = std::move(*store->startWriting());
  Item item = single();
  std::vector<Item> none;
  const auto refused = writer->put(defaultCalendar(CalendarKind::kReminders), item, none);
  ASSERT_FALSE(refused);
  EXPECT_EQ(refused.error().code, ErrorCode::kInvalid);
  EXPECT_FALSE(writer->put(99, item, none));
}

TEST_F(Writer, RefusesEventsWithoutAStart) {
  Item item = single();
  item.start.reset();
  {
    auto writer = std::move(*store->startWriting());
    std::vector<Item> none;
    const auto refused = writer->put(item.calendar, item, none);
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().message, "An event needs a start.");
    ASSERT_TRUE(writer->commit());
  }
  EXPECT_THAT(everything(), IsEmpty());
}

TEST_F(Writer, SeesCalendarsAsItChangedThem) {
  Calendar list = madeCalendar("Chores", CalendarKind::kReminders);
  auto writer = std::move(*store->startWriting());
  Item item = single();
  std::vector<Item> none;
  EXPECT_EQ(writer->put(list.id, item, none).error().message, "\"Chores\" holds no events.");
  list.title = "Duties";
  ASSERT_TRUE(writer->updateCalendar(list));
  EXPECT_EQ(writer->put(list.id, item, none).error().message, "\"Duties\" holds no events.");
  ASSERT_TRUE(writer->removeCalendar(list.id));
  EXPECT_EQ(writer->put(list.id, item, none).error().message, "The calendar is not in the store.");
}

TEST_F(Writer, RefusesARuleThatCannotBeFollowedAndGoesOn) {
  auto writer = std::move(*store->startWriting());
  Item absurd = single("absurd"), fine = single("fine");
  absurd.recurrence.rules = {rule(Frequency::kSecondly, 1'000'000'000)};
  absurd.recurrence.rules[0].byMinute = {1, 7};
  absurd.recurrence.rules[0].bySecond = {3};
  absurd.recurrence.rules[0].bySetPosition = {1};
  std::vector<Item> none;
  const auto refused = writer->put(absurd.calendar, absurd, none);
  ASSERT_FALSE(refused);
  EXPECT_EQ(refused.error().code, ErrorCode::kRefused);
  EXPECT_TRUE(writer->put(fine.calendar, fine, none));
  ASSERT_TRUE(writer->commit());
}

TEST_F(Writer, FindsAndMakesCalendars) {
  auto writer = std::move(*store->startWriting());
  EXPECT_FALSE(*writer->calendarTitled(CalendarKind::kEvents, "Work"));
  Calendar calendar;
  calendar.title = "Work";
  calendar.readOnly = true;
  ASSERT_TRUE(writer->makeCalendar(calendar));
  EXPECT_EQ(*writer->calendarTitled(CalendarKind::kEvents, "Work"), calendar);
  EXPECT_FALSE(*writer->calendarTitled(CalendarKind::kReminders, "Work"));
}

TEST_F(Writer, WritesIntoCalendarsThatAllowNoChanges) {
  auto writer = std::move(*store->startWriting());
  Calendar calendar;
  calendar.title = "Feed";
  calendar.readOnly = calendar.subscribed = true;
  ASSERT_TRUE(writer->makeCalendar(calendar));
  Item item = single();
  std::vector<Item> none;
  EXPECT_TRUE(writer->put(calendar.id, item, none));
}

TEST_F(Writer, KeepsContactsAndFindsThemWithoutCase) {
  auto writer = std::move(*store->startWriting());
  Contact contact{"c1", "Ärne", {"Arne@Example.org", "ÄRNE@example.org"}, "Weg 1, Ort"};
  EXPECT_EQ(*writer->putContact(contact), PutOutcome::kNew);
  EXPECT_EQ(*writer->putContact(contact), PutOutcome::kUnchanged);
  contact.address = "Weg 2, Ort";
  EXPECT_EQ(*writer->putContact(contact), PutOutcome::kUpdated);
  ASSERT_TRUE(writer->commit());
  writer.reset();
  EXPECT_EQ(**store->addressOf("arne@EXAMPLE.ORG"), "Weg 2, Ort");
  EXPECT_EQ(**store->addressOf("ärne@example.org"), "Weg 2, Ort");
  EXPECT_FALSE(*store->addressOf("bert@example.org"));
}

TEST_F(Writer, KeepsPrivateZonesForOtherProcesses) {
  const std::string text =
      "BEGIN:VTIMEZONE\r\nTZID:Moon\r\nBEGIN:STANDARD\r\nDTSTART:19700101T000000\r\nTZOFFSETFROM:+0530\r\n"
      "TZOFFSETTO:+0530\r\nEND:STANDARD\r\nEND:VTIMEZONE\r\n";
  auto writer = std::move(*store->startWriting());
  ASSERT_TRUE(writer->putZone("Moon", text));
  Item item = single();
  item.start = CalendarTime{CalendarTime::Kind::kZoned, local("2026-11-02 12:00"), "Moon"};
  item.end = item.start;
  std::vector<Item> none;
  ASSERT_TRUE(writer->put(item.calendar, item, none));
  ASSERT_TRUE(writer->commit());
  writer.reset();
  EXPECT_EQ(**store->privateZone("Moon"), text);
  EXPECT_FALSE(*store->privateZone("Mars"));
  EXPECT_EQ(occurrences(std::nullopt, std::nullopt)[0].start, Zone().toMoment(local("2026-11-02 06:30")));
}

TEST_F(Writer, VisitsSeriesWithTheirChangedOccurrences) {
  Item first = single(), main = series();
  put(first);
  put(main, {changed("b", berlin("2026-11-04 09:00"), berlin("2026-11-04 15:00")),
             changed("a", berlin("2026-11-03 09:00"), berlin("2026-11-03 15:00"))});
  std::vector<std::string> visited;
  ASSERT_TRUE(store->forEachItem(first.calendar, [&](const Item& item, const std::vector<Item>& others) -> Status {
    visited.push_back(*item.title);
    for (const Item& other : others) { visited.push_back("  " + *other.title); }
    return {};
  }));
  EXPECT_THAT(visited, ElementsAre("one", "series", "  a", "  b"));
}

/// Puts of all kinds that meet one another, in no order.
class ManyPuts : public Writer {
 protected:
  struct Put {
    Item main;
    std::vector<Item> changed;
  };
  std::vector<Put> puts(unsigned seed) {
    std::mt19937 random(seed);
    const auto among = [&](int count) { return static_cast<int>(random() % static_cast<unsigned>(count)); };
    std::vector<Put> all;
    for (int i = 0; i < 120; ++i) {
      Put put;
      put.main = single(fmt::format("uid {}", among(40)));
      put.main.title = fmt::format("title {}", among(3));
      put.main.start->local += 3600 * among(5);
      put.main.end->local = put.main.start->local + 3600;
      const int kind = among(4);
      if (kind == 0) { put.main.recurrenceId = berlin("2026-11-03 09:00"); }
      if (kind == 1) { put.main.recurrence.rules = {rule(Frequency::kDaily, 4)}; }
      for (int day = 2; kind == 1 && day < 2 + among(3); ++day) {
        const std::string date = fmt::format("2026-11-0{}", day);
        Item other = changed("changed", berlin(date + " 09:00"), berlin(date + " 15:00"));
        other.recurrenceId->local = put.main.start->local + 86'400 * (day - 2);
        other.uid = put.main.uid;
        put.changed.push_back(other);
      }
      all.push_back(std::move(put));
    }
    return all;
  }
  static std::string outcomeOf(ItemWriter& writer, Put&& put) { return outcomeOf(writer, put); }
  static std::string outcomeOf(ItemWriter& writer, const Put& put) { return outcomeOf(writer, Put(put)); }
  static std::string outcomeOf(ItemWriter& writer, Put& put) {
    const auto outcome = writer.put(put.main.calendar, put.main, put.changed);
    return outcome ? fmt::format("{}", static_cast<int>(*outcome)) : outcome.error().message;
  }
  /// Every item of the calendar with what the file says of it, in the order of the rows.
  std::vector<std::string> content() {
    std::vector<std::string> lines;
    EXPECT_TRUE(store->forEachItem(1, [&](const Item& item, const std::vector<Item>& others) -> Status {
      lines.push_back(fmt::format("{} {} {}", item.id, item.uid, *item.title));
      for (const Item& other : others) { lines.push_back(fmt::format("  {} {}", other.id, *other.title)); }
      return {};
    }));
    const auto shownOnes = everything();
    lines.insert(lines.end(), shownOnes.begin(), shownOnes.end());
    return lines;
  }
};

TEST_F(ManyPuts, AreInOneTurnWhatTheyAreEachInItsOwn) {
  for (unsigned seed = 1; seed <= 12; ++seed) {
    SCOPED_TRACE(seed);
    const std::vector<Put> all = puts(seed);
    std::vector<std::string> outcomes[2], contents[2];
    for (const bool together : {false, true}) {
      store.reset();
      std::filesystem::remove_all(folder);
      std::filesystem::create_directory(folder);
      store = opened();
      auto writer = std::move(*store->startWriting());
      for (const Put& put : all) {
        outcomes[together].push_back(outcomeOf(*writer, put));
        if (together) { continue; }
        ASSERT_TRUE(writer->commit());
        writer.reset();
        writer = std::move(*store->startWriting());
      }
      ASSERT_TRUE(writer->commit());
      writer.reset();
      contents[together] = content();
    }
    EXPECT_EQ(outcomes[0], outcomes[1]);
    EXPECT_EQ(contents[0], contents[1]);
  }
}

TEST_F(ManyPuts, BecomeTheSameWhetherTheyAreAnnouncedOrNot) {
  for (unsigned seed = 1; seed <= 12; ++seed) {
    SCOPED_TRACE(seed);
    const std::vector<Put> all = puts(seed);
    std::vector<std::string> outcomes[2], contents[2];
    for (const bool announces : {false, true}) {
      store.reset();
      std::filesystem::remove_all(folder);
      std::filesystem::create_directory(folder);
      store = opened();
      constexpr std::size_t kBefore = 50;
      auto writer = std::move(*store->startWriting());
      for (std::size_t i = 0; i < kBefore; ++i) { outcomeOf(*writer, all[i]); }
      ASSERT_TRUE(writer->commit());
      writer.reset();

      std::vector<Put> rest(all.begin() + kBefore, all.end());
      std::vector<AnnouncedItem> announced;
      for (Put& put : rest) {
        if (!announces || put.main.recurrenceId) { continue; }
        announced.push_back({&put.main, "", !put.main.recurrence.empty() || !put.changed.empty()});
      }
      writer = std::move(*store->startWriting({announced, nullptr}));
      for (Put& put : rest) { outcomes[announces].push_back(outcomeOf(*writer, put)); }
      ASSERT_TRUE(writer->commit());
      writer.reset();
      contents[announces] = content();
    }
    EXPECT_EQ(outcomes[0], outcomes[1]);
    EXPECT_EQ(contents[0], contents[1]);
  }
}

TEST_F(ManyPuts, GiveNoNumberOfARowTwice) {
  Item first = single("first"), second = single("second");
  put(first);
  ASSERT_TRUE(store->removeEvent(first, std::nullopt, Span::kThis));
  put(second);
  EXPECT_GT(second.id, first.id);
}

}  // namespace
}  // namespace orlocal::store
