#include <algorithm>
#include <functional>

#include "platform/linux/store_fixture.h"

// Two programs have one item open at once. Each case saves what the other one set first and then what this one set.

namespace orlocal {
namespace {

using testing::AllOf;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

/// One program: a connection of its own to the file.
struct Program {
  std::shared_ptr<Platform> system = makeSystemPlatform();
  std::shared_ptr<EKEventStore> store =
      system->eventKit().eventStoreWithAccessToEntityTypes(EventKit::kMaskEvent | EventKit::kMaskReminder);

  std::shared_ptr<EKEvent> eventOn(const std::string& day) const {
    const auto found = store->eventsMatchingPredicate(
        store->predicateForEvents(moment((day + " 00:00:00 +0100").c_str()), moment((day + " 23:59:00 +0100").c_str()),
                                  store->calendarsForEntityType(EKEntityType::kEvent)));
    return found->count() > 0 ? found->objectAtIndex(0) : nullptr;
  }
  std::string refusal(const std::shared_ptr<EKEvent>& event, EKSpan span) const {
    std::optional<Error> error;
    return store->saveEvent(event, span, true, error) ? "" : error.value().localizedDescription;
  }
  std::string refusal(const std::shared_ptr<EKReminder>& reminder) const {
    std::optional<Error> error;
    return store->saveReminder(reminder, true, error) ? "" : error.value().localizedDescription;
  }
  std::string refusal(const std::shared_ptr<EKCalendar>& calendar) const {
    std::optional<Error> error;
    return store->saveCalendar(calendar, true, error) ? "" : error.value().localizedDescription;
  }
  std::string removal(const std::shared_ptr<EKEvent>& event, EKSpan span) const {
    std::optional<Error> error;
    return store->removeEvent(event, span, true, error) ? "" : error.value().localizedDescription;
  }
};

std::shared_ptr<EKAlarm> alarmAt(const Program& program, double seconds) {
  return program.system->eventKit().alarmWithRelativeOffset(seconds);
}

std::string offsets(const EKCalendarItem& item) {
  std::string text;
  for (const auto& alarm : item.alarms()) { text += std::to_string(std::lround(alarm->relativeOffset())) + " "; }
  return text;
}

/// A field of an event: how the first and the second value are set, and what it then reads.
struct EventField {
  const char* name;
  std::function<void(const Program&, EKEvent&, bool second)> set;
  std::function<std::string(const EKEvent&)> read;
};

const std::vector<EventField>& eventFields() {
  static const std::vector<EventField> fields{
      {"title", [](const Program&, EKEvent& event, bool second) { event.setTitle(second ? "B" : "A"); },
       [](const EKEvent& event) { return event.title().value_or("-"); }},
      {"notes", [](const Program&, EKEvent& event, bool second) { event.setNotes(second ? "b" : "a"); },
       [](const EKEvent& event) { return event.notes().value_or("-"); }},
      {"location", [](const Program&, EKEvent& event, bool second) { event.setLocation(second ? "Ulm" : "Bonn"); },
       [](const EKEvent& event) { return event.location().value_or("-"); }},
      {"url", [](const Program&, EKEvent& event, bool second) { event.setUrl(second ? "x:b" : "x:a"); },
       [](const EKEvent& event) { return event.url().value_or("-"); }},
      {"end",
       [](const Program&, EKEvent& event, bool second) {
         event.setEndDate(*event.startDate() + std::chrono::hours(second ? 3 : 2));
       },
       [](const EKEvent& event) { return std::to_string((*event.endDate() - *event.startDate()).count()); }},
      {"alarms",
       [](const Program& program, EKEvent& event, bool second) {
         for (const auto& alarm : event.alarms()) { event.removeAlarm(alarm); }
         event.addAlarm(alarmAt(program, second ? -600 : -300));
       },
       [](const EKEvent& event) { return offsets(event); }},
  };
  return fields;
}

/// What is opened, and with which span each of the two saves.
struct EventShape {
  const char* name;
  bool repeats;
  const char* day;  ///< that is opened
  bool changed;     ///< the occurrence was changed before
  EKSpan first, second;
};

constexpr EventShape kShapes[] = {
    {"Single", false, "2026-11-03", false, EKSpan::kThisEvent, EKSpan::kThisEvent},
    {"SingleSavedWithFuture", false, "2026-11-03", false, EKSpan::kFutureEvents, EKSpan::kFutureEvents},
    {"WholeSeries", true, "2026-11-03", false, EKSpan::kFutureEvents, EKSpan::kFutureEvents},
    {"WholeSeriesThenItsFirst", true, "2026-11-03", false, EKSpan::kFutureEvents, EKSpan::kThisEvent},
    {"FirstThenTheWholeSeries", true, "2026-11-03", false, EKSpan::kThisEvent, EKSpan::kFutureEvents},
    {"OneOccurrence", true, "2026-11-17", false, EKSpan::kThisEvent, EKSpan::kThisEvent},
    {"OneOccurrenceThenTheLater", true, "2026-11-17", false, EKSpan::kThisEvent, EKSpan::kFutureEvents},
    {"ChangedOccurrence", true, "2026-11-17", true, EKSpan::kThisEvent, EKSpan::kThisEvent},
    {"ChangedOccurrenceThenTheLater", true, "2026-11-17", true, EKSpan::kThisEvent, EKSpan::kFutureEvents},
    {"LaterThenAChangedOccurrence", true, "2026-11-17", true, EKSpan::kFutureEvents, EKSpan::kThisEvent},
};

class TwoWriters : public StoreFixture {
 protected:
  store::Item weeklySeries(std::optional<std::int64_t> count = 6) {
    store::Item series = eventAt("weekly", 2026, 11, 3, 9);
    series.notes = "notes";
    series.alarms = {store::Alarm{}};
    series.recurrence.rules = {weekly()};
    series.recurrence.rules[0].count = count;
    return put(std::move(series));
  }
  store::Item singleEvent() {
    store::Item event = eventAt("single", 2026, 11, 3, 9);
    event.alarms = {store::Alarm{}};
    return put(std::move(event));
  }
  /// The other moves the event from 09:00 to 15:00.
  void moveElsewhere() {
    const auto elsewhere = other.eventOn("2026-11-03");
    elsewhere->setStartDate(moment("2026-11-03 15:00:00 +0100"));
    elsewhere->setEndDate(moment("2026-11-03 16:00:00 +0100"));
    ASSERT_EQ(other.refusal(elsewhere, EKSpan::kThisEvent), "");
  }
  /// "03 title" of each event of November and December.
  std::vector<std::string> listed() {
    const Program program;
    const auto found = program.store->eventsMatchingPredicate(
        program.store->predicateForEvents(moment("2026-11-01 00:00:00 +0100"), moment("2026-12-31 00:00:00 +0100"),
                                          program.store->calendarsForEntityType(EKEntityType::kEvent)));
    std::vector<std::string> lines;
    for (std::size_t i = 0; i < found->count(); ++i) {
      const auto event = found->objectAtIndex(i);
      const auto local = store::Zone::named("Europe/Berlin")->toLocal(*event->startDate());
      char day[24];
      std::snprintf(day, sizeof day, "%02d.%02d. %02d:%02d ", local.day(), local.month(), local.hour(), local.minute());
      lines.push_back(day + event->title().value_or("-"));
    }
    return lines;
  }

  Program mine, other;
};

class TwoWritersOfEvents : public TwoWriters, public testing::WithParamInterface<std::tuple<std::size_t, std::size_t>> {
 protected:
  void SetUp() override {
    if (!shape.repeats) {
      singleEvent();
    } else {
      weeklySeries();
    }
    if (!shape.changed) { return; }
    const auto event = other.eventOn(shape.day);
    event->setUrl("x:changed");
    ASSERT_EQ(other.refusal(event, EKSpan::kThisEvent), "");
  }

  const EventShape& shape = kShapes[std::get<0>(GetParam())];
  const EventField& field = eventFields()[std::get<1>(GetParam())];
};

TEST_P(TwoWritersOfEvents, KeepTheFieldsThatBothSet) {
  for (const EventField& their : eventFields()) {
    if (std::string_view(their.name) == field.name) { continue; }
    SCOPED_TRACE(their.name);
    const auto opened = mine.eventOn(shape.day);
    const auto elsewhere = other.eventOn(shape.day);
    ASSERT_TRUE(opened && elsewhere);
    const std::string before = their.read(*elsewhere);
    their.set(other, *elsewhere, before.find('B') == std::string::npos && before.find('b') == std::string::npos);
    const std::string left = their.read(*elsewhere);
    ASSERT_EQ(other.refusal(elsewhere, shape.first), "");
    field.set(mine, *opened, true);
    const std::string set = field.read(*opened);
    // A series that was split at this occurrence has it no more; its new half does.
    const std::string refusal = mine.refusal(opened, shape.second);
    if (refusal.empty()) {
      const auto now = Program().eventOn(shape.day);
      ASSERT_TRUE(now);
      EXPECT_EQ(their.read(*now), left);
      EXPECT_EQ(field.read(*now), set);
      EXPECT_EQ(their.read(*opened), left) << "what was saved shows in the object, too";
    } else {
      FAIL() << refusal;
    }
    EXPECT_THAT(listed(), SizeIs(shape.repeats ? 6 : 1));
  }
}

TEST_P(TwoWritersOfEvents, LeaveTheLaterValueOfOneField) {
  const auto opened = mine.eventOn(shape.day);
  const auto elsewhere = other.eventOn(shape.day);
  field.set(other, *elsewhere, false);
  ASSERT_EQ(other.refusal(elsewhere, shape.first), "");
  field.set(mine, *opened, true);
  const std::string set = field.read(*opened);
  ASSERT_EQ(mine.refusal(opened, shape.second), "");
  EXPECT_EQ(field.read(*Program().eventOn(shape.day)), set);
  EXPECT_THAT(listed(), SizeIs(shape.repeats ? 6 : 1));
}

INSTANTIATE_TEST_SUITE_P(Shapes, TwoWritersOfEvents,
                         testing::Combine(testing::Range<std::size_t>(0, std::size(kShapes)),
                                          testing::Range<std::size_t>(0, eventFields().size())),
                         [](const auto& test) {
                           return std::string(kShapes[std::get<0>(test.param)].name) + "_" +
                                  eventFields()[std::get<1>(test.param)].name;
                         });

TEST_F(TwoWriters, LeaveATimeThatOnlyTheOtherSet) {
  singleEvent();
  const auto opened = mine.eventOn("2026-11-03");
  moveElsewhere();
  opened->setTitle("mine");
  ASSERT_EQ(mine.refusal(opened, EKSpan::kThisEvent), "");
  EXPECT_THAT(listed(), ElementsAre("03.11. 15:00 mine"));
}

TEST_F(TwoWriters, PutATimeOnTheClockThatTheEventHasNow) {
  singleEvent();
  const auto opened = mine.eventOn("2026-11-03");
  const auto elsewhere = other.eventOn("2026-11-03");
  elsewhere->setAllDay(true);
  ASSERT_EQ(other.refusal(elsewhere, EKSpan::kThisEvent), "");
  opened->setStartDate(moment("2026-11-05 15:00:00 +0100"));
  opened->setEndDate(moment("2026-11-06 16:00:00 +0100"));
  ASSERT_EQ(mine.refusal(opened, EKSpan::kThisEvent), "");
  EXPECT_TRUE(opened->isAllDay());
  EXPECT_EQ(opened->startDate(), moment("2026-11-05 00:00:00 +0100"));
  EXPECT_EQ(opened->endDate(), moment("2026-11-06 23:59:59 +0100"));
}

TEST_F(TwoWriters, RefuseAnEndThatNowLiesBeforeTheStart) {
  singleEvent();
  const auto opened = mine.eventOn("2026-11-03");
  moveElsewhere();
  opened->setEndDate(moment("2026-11-03 11:00:00 +0100"));
  EXPECT_THAT(mine.refusal(opened, EKSpan::kThisEvent), HasSubstr("ends before it starts"));
}

TEST_F(TwoWriters, KeepTheAlarmsThatBothAdded) {
  singleEvent();
  const auto opened = mine.eventOn("2026-11-03");
  const auto elsewhere = other.eventOn("2026-11-03");
  elsewhere->addAlarm(alarmAt(other, -300));
  ASSERT_EQ(other.refusal(elsewhere, EKSpan::kThisEvent), "");
  opened->addAlarm(alarmAt(mine, -600));
  ASSERT_EQ(mine.refusal(opened, EKSpan::kThisEvent), "");
  EXPECT_EQ(offsets(*Program().eventOn("2026-11-03")), "0 -300 -600 ");
}

TEST_F(TwoWriters, KeepWhatAnImportUpdated) {
  store::Item item = eventAt("imported", 2026, 11, 3, 9);
  item.uid = "imported";
  put(item);
  const auto opened = mine.eventOn("2026-11-03");
  item.title = "imported anew";
  item.extra = "X-THING:1\n";
  put(item);
  opened->setNotes("mine");
  ASSERT_EQ(mine.refusal(opened, EKSpan::kThisEvent), "");
  const auto row = otherStore()->event(*opened->eventIdentifier()).value();
  EXPECT_EQ(row->title, "imported anew");
  EXPECT_EQ(row->extra, "X-THING:1\n");
  EXPECT_EQ(row->notes, "mine");
}

TEST_F(TwoWriters, KeepTheCalendarThatTheOtherMovedTheEventTo) {
  weeklySeries();
  const auto calendar = other.system->eventKit().calendarForEntityType(EKEntityType::kEvent, other.store);
  calendar->setTitle("Work");
  calendar->setSource(other.store->defaultCalendarForNewEvents()->source());
  ASSERT_EQ(other.refusal(calendar), "");
  for (const auto& [day, span] : {std::pair("2026-11-17", EKSpan::kThisEvent), {"2026-11-03", EKSpan::kFutureEvents}}) {
    const auto opened = mine.eventOn(day);
    const auto elsewhere = other.eventOn("2026-11-03");
    elsewhere->setCalendar(calendar);
    ASSERT_EQ(other.refusal(elsewhere, EKSpan::kFutureEvents), "");
    opened->setTitle("mine");
    ASSERT_EQ(mine.refusal(opened, span), "");
    EXPECT_EQ(Program().eventOn(day)->calendar()->title(), "Work");
  }
  EXPECT_THAT(listed(), SizeIs(6));
}

TEST_F(TwoWriters, KeepTheRuleThatTheOtherGave) {
  singleEvent();
  const auto opened = mine.eventOn("2026-11-03");
  const auto elsewhere = other.eventOn("2026-11-03");
  EKRecurrenceRuleParts parts;
  parts.frequency = EKRecurrenceFrequency::kWeekly;
  parts.end = other.system->eventKit().recurrenceEndWithOccurrenceCount(3);
  elsewhere->addRecurrenceRule(other.system->eventKit().recurrenceRule(parts).rule);
  ASSERT_EQ(other.refusal(elsewhere, EKSpan::kThisEvent), "");
  opened->setTitle("mine");
  ASSERT_EQ(mine.refusal(opened, EKSpan::kThisEvent), "");
  EXPECT_THAT(listed(), ElementsAre("03.11. 09:00 mine", "10.11. 09:00 mine", "17.11. 09:00 mine"));
}

TEST_F(TwoWriters, LeaveAnOccurrenceOutThatTheOtherTookOut) {
  weeklySeries();
  const auto first = mine.eventOn("2026-11-03");
  ASSERT_EQ(other.removal(other.eventOn("2026-11-17"), EKSpan::kThisEvent), "");
  first->setTitle("mine");
  ASSERT_EQ(mine.refusal(first, EKSpan::kFutureEvents), "");
  EXPECT_THAT(listed(), ElementsAre("03.11. 09:00 mine", "10.11. 09:00 mine", "24.11. 09:00 mine", "01.12. 09:00 mine",
                                    "08.12. 09:00 mine"));
}

TEST_F(TwoWriters, LeaveAnOccurrenceChangedThatTheOtherChanged) {
  weeklySeries();
  const auto first = mine.eventOn("2026-11-03");
  const auto elsewhere = other.eventOn("2026-11-17");
  elsewhere->setTitle("theirs");
  ASSERT_EQ(other.refusal(elsewhere, EKSpan::kThisEvent), "");
  first->setTitle("mine");
  ASSERT_EQ(mine.refusal(first, EKSpan::kFutureEvents), "");
  EXPECT_EQ(listed()[2], "17.11. 09:00 theirs");
}

/// What the other does to a series while its occurrence on 1 December is open here.
struct Disturbance {
  const char* name;
  std::function<std::string(const Program&)> act;
  std::size_t left;  ///< occurrences
};

const std::vector<Disturbance>& disturbances() {
  static const std::vector<Disturbance> all{
      {"TookItOut", [](const Program& other) { return other.removal(other.eventOn("2026-12-01"), EKSpan::kThisEvent); },
       5},
      {"EndedTheSeriesBeforeIt",
       [](const Program& other) { return other.removal(other.eventOn("2026-11-17"), EKSpan::kFutureEvents); }, 2},
      {"SplitTheSeriesBeforeIt",
       [](const Program& other) {
         const auto event = other.eventOn("2026-11-17");
         event->setTitle("theirs");
         return other.refusal(event, EKSpan::kFutureEvents);
       },
       6},
      {"MovedTheSeriesToAnotherHour",
       [](const Program& other) {
         const auto event = other.eventOn("2026-11-03");
         event->setStartDate(*event->startDate() + std::chrono::hours(3));
         event->setEndDate(*event->endDate() + std::chrono::hours(3));
         return other.refusal(event, EKSpan::kFutureEvents);
       },
       6},
      {"GaveTheSeriesAnotherRule",
       [](const Program& other) {
         const auto event = other.eventOn("2026-11-03");
         EKRecurrenceRuleParts parts;
         parts.frequency = EKRecurrenceFrequency::kMonthly;
         parts.end = other.system->eventKit().recurrenceEndWithOccurrenceCount(2);
         event->setRecurrenceRules(std::vector{other.system->eventKit().recurrenceRule(parts).rule});
         return other.refusal(event, EKSpan::kFutureEvents);
       },
       2},
      {"TookTheRuleAway",
       [](const Program& other) {
         const auto event = other.eventOn("2026-11-03");
         event->setRecurrenceRules(std::nullopt);
         return other.refusal(event, EKSpan::kFutureEvents);
       },
       1},
      {"RemovedTheSeries",
       [](const Program& other) { return other.removal(other.eventOn("2026-11-03"), EKSpan::kFutureEvents); }, 0},
  };
  return all;
}

class TwoWritersOfASeries : public TwoWriters, public testing::WithParamInterface<std::size_t> {
 protected:
  const Disturbance& disturbance = disturbances()[GetParam()];
};

TEST_P(TwoWritersOfASeries, RefuseAnOccurrenceThatIsNoneAnyMore) {
  weeklySeries();
  const auto saved = mine.eventOn("2026-12-01"), savedWithLater = mine.eventOn("2026-12-01"),
             removed = mine.eventOn("2026-12-01"), removedWithLater = mine.eventOn("2026-12-01");
  ASSERT_EQ(disturbance.act(other), "");
  const auto before = listed();
  ASSERT_THAT(before, SizeIs(disturbance.left));
  saved->setTitle("mine");
  savedWithLater->setTitle("mine");
  const auto refused = AllOf(HasSubstr("weekly"), HasSubstr(disturbance.left > 0 ? "any more" : "no longer"));
  EXPECT_THAT(mine.refusal(saved, EKSpan::kThisEvent), refused);
  EXPECT_THAT(mine.refusal(savedWithLater, EKSpan::kFutureEvents), refused);
  EXPECT_THAT(mine.removal(removed, EKSpan::kThisEvent), refused);
  EXPECT_THAT(mine.removal(removedWithLater, EKSpan::kFutureEvents), refused);
  EXPECT_EQ(listed(), before);
}

INSTANTIATE_TEST_SUITE_P(TheOther, TwoWritersOfASeries, testing::Range<std::size_t>(0, disturbances().size()),
                         [](const auto& test) { return disturbances()[test.param].name; });

TEST_F(TwoWriters, RefuseAnEventThatWasRemoved) {
  singleEvent();
  const auto opened = mine.eventOn("2026-11-03");
  ASSERT_EQ(other.removal(other.eventOn("2026-11-03"), EKSpan::kThisEvent), "");
  opened->setTitle("mine");
  EXPECT_THAT(mine.refusal(opened, EKSpan::kThisEvent), HasSubstr("no longer"));
  EXPECT_THAT(listed(), IsEmpty());
}

class TwoWritersOfReminders : public TwoWriters {
 protected:
  void open(bool repeats) {
    store::Item item = reminder("water the plants");
    item.due = zoned(store::LocalTime(2026, 11, 3, 9));
    item.notes = "notes";
    if (repeats) { item.recurrence.rules = {weekly()}; }
    identifier = put(std::move(item)).itemIdentifier;
    opened = read(mine);
    elsewhere = read(other);
  }
  /// The other completes it while it is open here.
  void completeElsewhere(bool repeats) {
    open(repeats);
    elsewhere->setCompleted(true);
    ASSERT_EQ(other.refusal(elsewhere), "");
  }
  std::shared_ptr<EKReminder> read(const Program& program) {
    return std::dynamic_pointer_cast<EKReminder>(program.store->calendarItemWithIdentifier(identifier));
  }

  std::string identifier;
  std::shared_ptr<EKReminder> opened, elsewhere;
};

TEST_F(TwoWritersOfReminders, KeepTheFieldsThatBothSet) {
  struct Field {
    std::function<void(EKReminder&)> set;
    std::function<bool(const EKReminder&)> isSet;
  };
  const std::vector<Field> fields{
      {[](EKReminder& item) { item.setTitle("A"); }, [](const EKReminder& item) { return item.title() == "A"; }},
      {[](EKReminder& item) { item.setNotes("N"); }, [](const EKReminder& item) { return item.notes() == "N"; }},
      {[](EKReminder& item) { item.setUrl("x:u"); }, [](const EKReminder& item) { return item.url() == "x:u"; }},
      {[](EKReminder& item) { item.setPriority(5); }, [](const EKReminder& item) { return item.priority() == 5; }},
      {[](EKReminder& item) { item.setCompleted(true); }, [](const EKReminder& item) { return item.isCompleted(); }},
      {[](EKReminder& item) {
         item.setDueDateComponents(DateComponents{2026, 12, 24, 18, 0, 0, std::string("Europe/Berlin")});
       },
       [](const EKReminder& item) { return item.dueDateComponents()->month == 12; }},
      {[this](EKReminder& item) { item.addAlarm(alarmAt(mine, -60)); },
       [](const EKReminder& item) { return item.alarms().size() == 1; }},
  };
  for (std::size_t i = 0; i < fields.size(); ++i) {
    for (std::size_t j = 0; j < fields.size(); ++j) {
      if (i == j) { continue; }
      SCOPED_TRACE(std::to_string(i) + " then " + std::to_string(j));
      open(false);
      fields[i].set(*elsewhere);
      ASSERT_EQ(other.refusal(elsewhere), "");
      fields[j].set(*opened);
      ASSERT_EQ(mine.refusal(opened), "");
      const auto now = read(Program());
      EXPECT_TRUE(fields[i].isSet(*now));
      EXPECT_TRUE(fields[j].isSet(*now));
    }
  }
}

TEST_F(TwoWritersOfReminders, LeaveOneCompletedThatTheOtherCompleted) {
  completeElsewhere(false);
  opened->setTitle("mine");
  ASSERT_EQ(mine.refusal(opened), "");
  EXPECT_TRUE(read(other)->isCompleted());
}

TEST_F(TwoWritersOfReminders, ReopenOneWhenTheySaySo) {
  completeElsewhere(false);
  opened->setCompleted(false);
  ASSERT_EQ(mine.refusal(opened), "");
  EXPECT_FALSE(read(other)->isCompleted());
}

TEST_F(TwoWritersOfReminders, LeaveARepeatingOneWhereTheOtherMovedItOnTo) {
  completeElsewhere(true);
  opened->setTitle("mine");
  ASSERT_EQ(mine.refusal(opened), "");
  EXPECT_EQ(read(other)->dueDateComponents()->day, 10);
  EXPECT_EQ(read(other)->title(), "mine");
}

TEST_F(TwoWritersOfReminders, CompleteEachDateOfARepeatingOneOnce) {
  completeElsewhere(true);
  opened->setCompleted(true);
  EXPECT_THAT(mine.refusal(opened), HasSubstr("moved on"));
  EXPECT_EQ(read(other)->dueDateComponents()->day, 10);
}

TEST_F(TwoWritersOfReminders, CompleteARepeatingOneThatTheOtherPutOff) {
  open(true);
  elsewhere->setDueDateComponents(DateComponents{2026, 11, 3, 18, 0, 0, std::string("Europe/Berlin")});
  ASSERT_EQ(other.refusal(elsewhere), "");
  opened->setCompleted(true);
  ASSERT_EQ(mine.refusal(opened), "");
  EXPECT_EQ(read(other)->dueDateComponents()->day, 10);
  EXPECT_EQ(read(other)->dueDateComponents()->hour, 18);
}

TEST_F(TwoWritersOfReminders, RefuseOneThatWasRemoved) {
  open(false);
  std::optional<Error> error;
  ASSERT_TRUE(other.store->removeReminder(elsewhere, true, error));
  opened->setTitle("mine");
  EXPECT_THAT(mine.refusal(opened), HasSubstr("no longer"));
}

TEST_F(TwoWriters, OfACalendarKeepItsTitleAndItsColor) {
  const auto opened = mine.store->defaultCalendarForNewEvents();
  const auto elsewhere = other.store->defaultCalendarForNewEvents();
  elsewhere->setColor(Color::calibratedRgb(1, 0, 0));
  ASSERT_EQ(other.refusal(elsewhere), "");
  opened->setTitle("Home");
  // As every save of a calendar does.
  opened->setSource(mine.store->defaultCalendarForNewEvents()->source());
  ASSERT_EQ(mine.refusal(opened), "");
  const auto now = Program().store->defaultCalendarForNewEvents();
  EXPECT_EQ(now->title(), "Home");
  EXPECT_EQ(now->color()->usingCalibratedRgb()->green, 0);
  EXPECT_EQ(opened->color()->usingCalibratedRgb()->green, 0);
}

}  // namespace
}  // namespace orlocal
