#include "backend_fixture.h"

namespace orlocal {
namespace {

using testing::ElementsAreArray;
using testing::IsEmpty;

class Calendars : public BackendTest {
 protected:
  OptionalText get(const OptionalText& property) { return backend.getCalendarAttribute(property, 1, std::nullopt); }
};

/// Gives a list with a hole in it.
class HoledStore : public fakes::ForwardingEventStore {
 public:
  using ForwardingEventStore::ForwardingEventStore;
  EKCalendarArray calendarsForEntityType(EKEntityType) override { return {nullptr}; }
};

TEST_F(Calendars, OpenByIndexFromOne) {
  store().addCalendar("Work");
  expectDone(backend.openCalendarAt(2));
  EXPECT_EQ(backend.m_ekCalendar->title(), "Work");
  expectDone(backend.openCalendarAt(1));
  EXPECT_EQ(backend.m_ekCalendar->title(), "Calendar");
}

TEST_F(Calendars, OpenListsByIndexOfTheirOwn) {
  expectDone(backend.openReminderListAt(1));
  EXPECT_EQ(backend.m_ekCalendar->title(), "Reminders");
}

TEST_F(Calendars, DoNotOpenOutsideTheirRange) {
  for (const std::int32_t index : {0, 2, -1}) {
    fillSlots();
    expectFailed(backend.openCalendarAt(index), kIndexOutOfBounds);
    EXPECT_THAT(filledSlots(), IsEmpty()) << index;
    fillSlots();
    expectFailed(backend.openReminderListAt(index), kIndexOutOfBounds);
    EXPECT_THAT(filledSlots(), IsEmpty()) << index;
  }
}

TEST_F(Calendars, ReportTheOneThatIsMissingFromItsList) {
  backend.m_ekEventStore = std::make_shared<HoledStore>(kit->m_store);
  expectFailed(backend.openCalendarAt(1), kCalendarNotOpened);
  expectFailed(backend.openReminderListAt(1), kReminderListNotOpened);
}

TEST_F(Calendars, OpenByIdentifierWhateverTheirKind) {
  for (const auto& calendar : store().m_calendars) {
    expectDone(backend.openCalendarWithUID(calendar->m_identifier));
    EXPECT_EQ(backend.m_ekCalendar->title(), calendar->m_title);
  }
}

TEST_F(Calendars, ReportAnUnknownIdentifier) {
  fillSlots();
  expectFailed(backend.openCalendarWithUID("calendar-99"), kCalendarUidNotFound);
  EXPECT_THAT(filledSlots(), IsEmpty());
  expectFailed(backend.openCalendarWithUID(std::nullopt), kCalendarUidNotFound);
}

TEST_F(Calendars, OpenByTitle) {
  expectDone(backend.openCalendarWithTitle("Reminders"));
  EXPECT_EQ(backend.m_ekCalendar->title(), "Reminders");
}

TEST_F(Calendars, OpenTheFirstOfATitle) {
  const auto first = store().addCalendar("Twice");
  store().addCalendar("Twice");
  expectDone(backend.openCalendarWithTitle("Twice"));
  EXPECT_EQ(backend.m_ekCalendar->calendarIdentifier(), first->m_identifier);
}

TEST_F(Calendars, AreFoundByTitleBeforeLists) {
  store().addCalendar("Home", EKEntityType::kReminder);
  const auto calendar = store().addCalendar("Home");
  expectDone(backend.openCalendarWithTitle("Home"));
  EXPECT_EQ(backend.m_ekCalendar->calendarIdentifier(), calendar->m_identifier);
}

TEST_F(Calendars, ReportAnUnknownTitle) {
  for (const char* title : {"calendar", "Calendar ", ""}) {
    fillSlots();
    expectFailed(backend.openCalendarWithTitle(title), kCalendarTitleNotFound);
    EXPECT_THAT(filledSlots(), IsEmpty());
  }
  expectFailed(backend.openCalendarWithTitle(std::nullopt), kCalendarTitleNotFound);
}

TEST_F(Calendars, WithoutATitleAreNotFoundByNone) {
  store().addCalendar("x")->m_title = std::nullopt;
  expectFailed(backend.openCalendarWithTitle(std::nullopt), kCalendarTitleNotFound);
}

TEST_F(Calendars, ReleaseTheOtherItemsInOrderWhenOneOpens) {
  const auto uid = store().m_calendars.front()->m_identifier;
  const std::vector<std::function<void()>> opens = {
      [&] { backend.openCalendarAt(1); }, [&] { backend.openReminderListAt(1); },
      [&] { backend.openCalendarWithUID(uid); }, [&] { backend.openCalendarWithTitle("Calendar"); }};
  for (const auto& open : opens) {
    released->clear();
    fillSlots();
    open();
    EXPECT_THAT(*released, ElementsAreArray(kReleaseOrder));
    EXPECT_EQ(filledSlots(), std::set<std::string>{"calendar"});
  }
}

TEST_F(Calendars, AreGivenByTitleWithoutTouchingASlot) {
  fillSlots();
  const auto before = filledSlots();
  const auto open = backend.m_ekCalendar;
  const auto found = backend.getCalendarWithTitle("Reminders");
  ASSERT_NE(found, nullptr);
  EXPECT_EQ(found->title(), "Reminders");
  EXPECT_EQ(filledSlots(), before);
  EXPECT_EQ(backend.m_ekCalendar, open);
  EXPECT_EQ(takeCode(), 0);
}

TEST_F(Calendars, ReportATitleThatGivesNone) {
  EXPECT_EQ(backend.getCalendarWithTitle("Nowhere"), nullptr);
  EXPECT_EQ(takeCode(), kItemNotFound);
}

TEST_F(Calendars, AreNotSetWhenNoneIsOpen) {
  expectFailed(backend.setCalendarProp("title", std::string("x")), kNoCalendarToSetProperty);
}

TEST_F(Calendars, WantAPropertyToSet) {
  openNewCalendar();
  expectFailed(backend.setCalendarProp(std::nullopt, std::string("x")), kPropertyRequired);
}

TEST_F(Calendars, TakeATitle) {
  const auto calendar = openNewCalendar();
  expectDone(backend.setCalendarProp("Title", std::string("Team")));
  EXPECT_EQ(calendar->m_title, "Team");
  expectDone(backend.setCalendarProp("title", std::monostate()));
  EXPECT_EQ(calendar->m_title, std::nullopt);
}

TEST_F(Calendars, AcceptNotesAndKeepNone) {
  openNewCalendar();
  expectDone(backend.setCalendarProp("notes", std::string("Something")));
  expectNone(get("notes"));
}

TEST_F(Calendars, TakeAColorOfThreeNumbers) {
  const auto calendar = openNewCalendar();
  expectDone(backend.setCalendarProp("COLOR", std::string("255 128 0")));
  EXPECT_EQ(calendar->m_color, Color::calibratedRgb(1, 128.0 / 255, 0, 1));
  expectDone(backend.setCalendarProp("color", std::string("300 0 0")));
  EXPECT_EQ(calendar->m_color, Color::calibratedRgb(300.0 / 255, 0, 0));
}

TEST_F(Calendars, RefuseABadColorAndKeepTheirOwn) {
  const auto calendar = openNewCalendar();
  calendar->m_color = Color::calibratedRgb(0, 1, 0);
  for (const char* value : {"255 128", "-1 0 0", "1 2 3 4", "red", "65026 0 0"}) {
    expectFailed(backend.setCalendarProp("color", std::string(value)), kInvalidParameterValue);
  }
  expectFailed(backend.setCalendarProp("color", std::monostate()), kInvalidParameterValue);
  EXPECT_EQ(calendar->m_color, Color::calibratedRgb(0, 1, 0));
}

TEST_F(Calendars, ReportAPropertyThatCannotBeSet) {
  openNewCalendar();
  for (const char* property : {"uid", "type", "iseditable", "nonsense", ""}) {
    expectFailed(backend.setCalendarProp(property, std::string("x")), kMissingArgument);
  }
}

TEST_F(Calendars, KeepChangesOutOfTheStoreUntilTheyAreSaved) {
  backend.openCalendarAt(1);
  backend.setCalendarProp("title", std::string("Changed"));
  EXPECT_EQ(store().m_calendars.front()->m_title, "Calendar");
}

TEST_F(Calendars, AreNotReadWhenNoneIsOpen) { expectNone(get("title"), kNoCalendarToGetProperty); }

TEST_F(Calendars, WantAPropertyToRead) {
  openNewCalendar();
  expectNone(get(std::nullopt), kPropertyRequired);
}

TEST_F(Calendars, ReadTheirTexts) {
  const auto calendar = openNewCalendar();
  calendar->m_title = "Team";
  calendar->m_identifier = "calendar-7";
  expectText(get("Title"), "Team");
  expectText(get("UID"), "calendar-7");
  calendar->m_title.reset();
  expectNone(get("title"));
}

TEST_F(Calendars, NameTheirType) {
  const auto calendar = openNewCalendar();
  const char* const names[] = {"Local", "CalDav", "Exchange", "Subscription", "Birthday"};
  for (int type = 0; type < 5; ++type) {
    calendar->m_type = type;
    expectText(get("type"), names[type]);
  }
  for (const int type : {5, -1}) {
    calendar->m_type = type;
    expectNone(get("type"));
  }
}

TEST_F(Calendars, SayWhatTheyAllow) {
  const auto calendar = openNewCalendar();
  expectText(get("iseditable"), "True");
  expectText(get("issubscribed"), "False");
  expectText(get("allowsmodification"), "True");
  calendar->m_immutable = true;
  calendar->m_subscribed = true;
  calendar->m_allowsContentModifications = false;
  expectText(get("iseditable"), "False");
  expectText(get("issubscribed"), "True");
  expectText(get("allowsmodification"), "False");
}

TEST_F(Calendars, ReadTheirColor) {
  const auto calendar = openNewCalendar();
  calendar->m_color = Color::calibratedRgb(1, 128.0 / 255, 0);
  expectText(get("color"), "255 128 0");
  calendar->m_color = Color::calibratedWhite(1);
  expectText(get("color"), "255 255 255");
}

TEST_F(Calendars, ReadNoColorThatCannotBeConverted) {
  const auto calendar = openNewCalendar();
  expectNone(get("color"));
  calendar->m_color.emplace().space = Color::Space::kPattern;
  expectNone(get("color"));
}

TEST_F(Calendars, ReportAPropertyThatTheyDoNotHave) {
  openNewCalendar();
  for (const char* property : {"nonsense", "", "colour"}) { expectNone(get(property), kInvalidProperty); }
}

}  // namespace
}  // namespace orlocal
