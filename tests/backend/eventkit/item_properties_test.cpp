#include "backend_fixture.h"

namespace orlocal {
namespace {

class ItemProperties : public BackendTest {
 protected:
  ItemProperties() { item.m_calendar = store().m_calendars.front(); }

  std::int32_t set(const OptionalText& property, const PropertyValue& value) {
    return backend.setCalendarItemProp(property, value, &item);
  }
  OptionalText get(const OptionalText& property) { return backend.getCalendarItemAttribute(property, &item); }

  fakes::FakeReminder item;
};

TEST_F(ItemProperties, MoveAnItemToACalendarByItsIdentifier) {
  const auto work = store().addCalendar("Work");
  expectDone(set("calendaruid", *work->m_identifier));
  EXPECT_EQ(item.m_calendar->title(), "Work");
}

TEST_F(ItemProperties, MoveAnItemToACalendarByItsTitle) {
  store().addCalendar("Work");
  expectDone(set("calendartitle", std::string("Work")));
  EXPECT_EQ(item.m_calendar->title(), "Work");
}

TEST_F(ItemProperties, ReportACalendarThatIsNotFound) {
  for (const char* property : {"calendaruid", "calendartitle"}) {
    expectFailed(set(property, std::string("Nowhere")), kCalendarUidNotFound);
    expectFailed(set(property, std::monostate()), kCalendarUidNotFound);
  }
  EXPECT_EQ(item.m_calendar->title(), "Calendar");
}

TEST_F(ItemProperties, SetTexts) {
  expectDone(set("notes", std::string("Bring cake")));
  expectDone(set("title", std::string("Review")));
  expectDone(set("url", std::string("https://example.org/7")));
  EXPECT_EQ(item.m_notes, "Bring cake");
  EXPECT_EQ(item.m_title, "Review");
  EXPECT_EQ(item.m_url, "https://example.org/7");
}

TEST_F(ItemProperties, TakeTextsAway) {
  item.m_notes = item.m_title = item.m_url = "x";
  for (const char* property : {"notes", "title", "url"}) { expectDone(set(property, std::monostate())); }
  EXPECT_EQ(item.m_notes, std::nullopt);
  EXPECT_EQ(item.m_title, std::nullopt);
  EXPECT_EQ(item.m_url, std::nullopt);
}

TEST_F(ItemProperties, EncodeWhatAUrlCannotCarry) {
  expectDone(set("url", std::string("https://example.org/a b")));
  EXPECT_EQ(item.m_url, "https://example.org/a%20b");
}

TEST_F(ItemProperties, GiveZeroAndACodeForAnotherProperty) {
  for (const char* property : {"nonsense", "", "uid", "hasalarm", "datestamp"}) {
    EXPECT_EQ(set(property, std::string("x")), 0);
    EXPECT_EQ(takeCode(), kInvalidArgument) << property;
  }
  EXPECT_EQ(set(std::nullopt, std::string("x")), 0);
  EXPECT_EQ(takeCode(), kInvalidArgument);
}

TEST_F(ItemProperties, AreSetOnNothingWithoutHarm) {
  expectDone(backend.setCalendarItemProp("title", std::string("x"), nullptr));
  expectDone(backend.setCalendarItemProp("calendartitle", std::string("Calendar"), nullptr));
}

TEST_F(ItemProperties, ReadTheCalendarOfAnItem) {
  expectText(get("calendartitle"), "Calendar");
  expectText(get("calendaruid"), *store().m_calendars.front()->m_identifier);
}

TEST_F(ItemProperties, ReadNothingOfACalendarThatIsNotThere) {
  item.m_calendar = nullptr;
  expectNone(get("calendartitle"));
  expectNone(get("calendaruid"));
}

TEST_F(ItemProperties, ReadTheDateOfTheLastChange) {
  expectNone(get("datestamp"));
  item.m_lastModifiedDate = at(11, 2, 8);
  expectText(get("DateStamp"), "2026-11-02 09:00:00 +0100");
}

TEST_F(ItemProperties, ReadTexts) {
  item.m_notes = "Bring cake";
  item.m_title = "Review";
  item.m_url = "https://example.org/7";
  item.m_itemIdentifier = "item-7";
  expectText(get("notes"), "Bring cake");
  expectText(get("title"), "Review");
  expectText(get("url"), "https://example.org/7");
  expectText(get("uid"), "item-7");
}

TEST_F(ItemProperties, ReadAnEventsItemIdentifierHereAndItsEventIdentifierThere) {
  const auto event = openNewEvent();
  event->m_eventIdentifier = "event-7";
  event->m_itemIdentifier = "item-7";
  expectText(backend.getCalendarItemAttribute("uid", event.get()), "item-7");
  expectText(backend.getEventAttribute("uid", 1, std::nullopt), "event-7");
}

TEST_F(ItemProperties, SayWhetherThereAreAlarms) {
  expectText(get("hasalarm"), "False");
  item.m_alarms.push_back(std::make_shared<fakes::FakeAlarm>());
  expectText(get("hasalarm"), "True");
  expectNone(get("hasalarms"), kInvalidProperty);
}

TEST_F(ItemProperties, ReadWhenTheFirstAlarmWasMade) {
  expectText(get("nextalarmdate"), "");
  const auto first = std::make_shared<fakes::FakeAlarm>();
  const auto second = std::make_shared<fakes::FakeAlarm>();
  first->m_creationDate = at(11, 2, 8);
  first->m_absoluteDate = at(12, 24, 8);
  second->m_creationDate = at(11, 1, 8);
  item.m_alarms = {first, second};
  expectText(get("nextalarmdate"), "2026-11-02 09:00:00 +0100");
  first->m_creationDate.reset();
  expectNone(get("nextalarmdate"));
}

TEST_F(ItemProperties, ReportAPropertyThatNoItemHas) {
  for (const char* property : {"nonsense", "", "startdate"}) { expectNone(get(property), kInvalidProperty); }
  expectNone(get(std::nullopt), kInvalidProperty);
}

TEST_F(ItemProperties, ReadNothingOfNothing) { expectNone(backend.getCalendarItemAttribute("title", nullptr)); }

}  // namespace
}  // namespace orlocal
