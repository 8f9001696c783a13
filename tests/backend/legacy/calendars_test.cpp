#include "backend/legacy/legacy_fixture.h"

namespace orlocal {
namespace {

class LegacyCalendars : public Legacy {
 protected:
  std::vector<std::string> titlesFor(const OptionalText& names) {
    std::vector<std::string> titles;
    const auto calendars = backend.calendarArrayFromString(names);
    EXPECT_TRUE(calendars);
    for (const auto& calendar : calendars.value_or(CalCalendarArray())) { titles.push_back(*calendar->title()); }
    return titles;
  }
  void openWork() { ASSERT_EQ(backend.openCalendarWithTitle("Work"), 0); }
};

using testing::ElementsAre;

TEST_F(LegacyCalendars, NoNamesMeanAllCalendars) {
  EXPECT_THAT(titlesFor(std::nullopt), ElementsAre("Work", "Home", "Chores"));
}

TEST_F(LegacyCalendars, NoNamesMeanTheCurrentCalendarWhenThereIsOne) {
  backend.openCalendarWithTitle("Home");
  EXPECT_THAT(titlesFor(std::nullopt), ElementsAre("Home"));
}

TEST_F(LegacyCalendars, TheNameAllMeansAllCalendarsWhateverIsOpen) {
  openWork();
  EXPECT_THAT(titlesFor("all"), ElementsAre("Work", "Home", "Chores"));
}

TEST_F(LegacyCalendars, TheNameAllIsMeantInLowerCaseOnly) {
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.calendarArrayFromString("All"), std::nullopt); }), 9013);
}

TEST_F(LegacyCalendars, NamesComeOneALineInTheirOrder) {
  EXPECT_THAT(titlesFor("Home\rWork"), ElementsAre("Home", "Work"));
  EXPECT_THAT(titlesFor("Work\nHome"), ElementsAre("Work", "Home"));
}

TEST_F(LegacyCalendars, TheFirstUnknownNameGives9013AndNoCalendars) {
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.calendarArrayFromString("Work\rNowhere"), std::nullopt); }), 9013);
}

TEST_F(LegacyCalendars, OpensACalendarByPosition) {
  EXPECT_EQ(backend.openCalendarAt(2), 0);
  EXPECT_EQ(backend.m_calendar->title(), "Home");
}

TEST_F(LegacyCalendars, PositionsOutsideTheListGive9002AndLeaveNothingOpen) {
  openWork();
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.openCalendarAt(0), -1); }), 9002);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.openCalendarAt(4), -1); }), 9002);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.openCalendarAt(-1), -1); }), 9002);
  EXPECT_EQ(backend.m_calendar, nullptr);
}

TEST_F(LegacyCalendars, NothingAtAPositionGives9001) {
  struct Holed : fakes::ForwardingEventStore {
    using ForwardingEventStore::ForwardingEventStore;
    EKCalendarArray calendarsForEntityType(EKEntityType) override { return {nullptr}; }
  };
  useStore(std::make_shared<Holed>(store));
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.openCalendarAt(1), -1); }), 9001);
}

TEST_F(LegacyCalendars, OpensACalendarByUid) {
  EXPECT_EQ(backend.openCalendarWithUID(homeUid), 0);
  EXPECT_EQ(backend.m_calendar->title(), "Home");
}

TEST_F(LegacyCalendars, AnUnknownUidGives9001) {
  openWork();
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.openCalendarWithUID("nowhere"), -1); }), 9001);
  EXPECT_EQ(backend.m_calendar, nullptr);
}

TEST_F(LegacyCalendars, OpensTheFirstCalendarOfATitle) {
  store->addCalendar("Work");
  EXPECT_EQ(backend.openCalendarWithTitle("Work"), 0);
  EXPECT_EQ(backend.m_calendar->uid(), workUid);
}

TEST_F(LegacyCalendars, TitlesAreComparedWithCase) {
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.openCalendarWithTitle("work"), -1); }), 9001);
}

TEST_F(LegacyCalendars, LookingUpATitleLeavesTheSlotsAlone) {
  openWork();
  EXPECT_EQ(backend.getCalendarWithTitle("Home")->uid(), homeUid);
  EXPECT_EQ(backend.m_calendar->uid(), workUid);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.getCalendarWithTitle("Nowhere"), nullptr); }), 9001);
  EXPECT_EQ(backend.m_calendar->uid(), workUid);
}

TEST_F(LegacyCalendars, OpeningACalendarDropsTheLastFetch) {
  backend.fetchEventsWithStartDate(at(11, 1, 0), at(11, 2, 0), std::nullopt, std::nullopt);
  openWork();
  EXPECT_EQ(backend.m_eventPredicate, nullptr);
}

TEST_F(LegacyCalendars, SetsTitleAndNotes) {
  openWork();
  EXPECT_EQ(backend.setCalendarProp("Title", std::string("Office")), 0);
  EXPECT_EQ(backend.setCalendarProp("notes", std::string("Floor 2")), 0);
  EXPECT_EQ(calendarAttribute("title"), "Office");
  EXPECT_EQ(calendarAttribute("notes"), "Floor 2");
}

TEST_F(LegacyCalendars, ChangesReachTheStoreBySaving) {
  openWork();
  backend.setCalendarProp("title", std::string("Office"));
  EXPECT_EQ(store->m_calendars[0]->m_title, "Work");
  EXPECT_EQ(backend.saveItem("calendar", std::nullopt), 0);
  EXPECT_EQ(store->m_calendars[0]->m_title, "Office");
}

TEST_F(LegacyCalendars, SettingWithoutACalendarGives9000) {
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.setCalendarProp("title", std::string("x")), -1); }), 9000);
}

TEST_F(LegacyCalendars, SettingWithoutAPropertyOrAnUnknownOneGives9005) {
  openWork();
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.setCalendarProp(std::nullopt, std::string("x")), -1); }), 9005);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.setCalendarProp("uid", std::string("x")), -1); }), 9005);
}

TEST_F(LegacyCalendars, AColorIsThreeNumbersUpTo255) {
  openWork();
  EXPECT_EQ(backend.setCalendarProp("color", std::string("255 128 0")), 0);
  EXPECT_EQ(backend.m_calendar->color(), Color::calibratedRgb(1, 128 / 255.0, 0));
  EXPECT_EQ(calendarAttribute("color"), "255 128 0");
}

TEST_F(LegacyCalendars, ComponentsUpTo65025AreAccepted) {
  openWork();
  EXPECT_EQ(backend.setCalendarProp("color", std::string("300 0 0")), 0);
  EXPECT_EQ(calendarAttribute("color"), "300 0 0");
  EXPECT_EQ(backend.setCalendarProp("color", std::string("65025 0 0")), 0);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.setCalendarProp("color", std::string("65026 0 0")), -1); }), -4);
}

TEST_F(LegacyCalendars, OtherColorsGiveMinus4) {
  openWork();
  for (const char* text : {"-1 0 0", "255 128", "1 2 3 4", "1  2 3", ""}) {
    EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.setCalendarProp("color", std::string(text)), -1); }), -4) << text;
  }
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.setCalendarProp("color", {}), -1); }), -4);
}

TEST_F(LegacyCalendars, ReadsWhatTheCalendarGives) {
  openWork();
  EXPECT_EQ(calendarAttribute("title"), "Work");
  EXPECT_EQ(calendarAttribute("notes"), std::nullopt);
  EXPECT_EQ(calendarAttribute("type"), "Local");
  EXPECT_EQ(calendarAttribute("uid"), workUid);
  EXPECT_EQ(calendarAttribute("iseditable"), "True");
  EXPECT_EQ(g_llasterror, 0);
}

TEST_F(LegacyCalendars, ACalendarThatAllowsNoChangesIsNotEditable) {
  store->m_calendars[0]->m_allowsContentModifications = false;
  openWork();
  EXPECT_EQ(calendarAttribute("IsEditable"), "False");
}

TEST_F(LegacyCalendars, AColorWithoutComponentsReadsAsNothing) {
  store->m_calendars[0]->m_color = Color{.space = Color::Space::kPattern};
  openWork();
  EXPECT_EQ(calendarAttribute("color"), std::nullopt);
  EXPECT_EQ(g_llasterror, 0);
}

TEST_F(LegacyCalendars, ReadingWithoutACalendarGives9004) {
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(calendarAttribute("title"), std::nullopt); }), 9004);
}

TEST_F(LegacyCalendars, ReadingWithoutAPropertyGives9005AndAnUnknownOne9006) {
  openWork();
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(calendarAttribute(std::nullopt), std::nullopt); }), 9005);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(calendarAttribute("issubscribed"), std::nullopt); }), 9006);
}

TEST_F(LegacyCalendars, AnExceptionWhileReadingGives9999AndTheErrorText) {
  struct Broken : fakes::FakeCalendar {
    OptionalText title() const override { throw broken(); }
  };
  backend.m_calendar = faceOf<CalendarFace>(std::make_shared<Broken>());
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(calendarAttribute("title"), "!!ERROR!!"); }), 9999);
  EXPECT_EQ(backend.getLastErrorString(), "The store is gone.");
}

}  // namespace
}  // namespace orlocal
