#include "host/commands/command_line/store_session.h"

#include "host/commands/store_command_fixture.h"

namespace orlocal::host {
namespace {

using testing::HasSubstr;

class NamedCalendars : public StoreCommand {
 protected:
  void SetUp() override {
    ASSERT_EQ(run({"calendars", "new", "Team"}), ExitStatus::kDone) << err;
    ASSERT_EQ(run({"subscribe", file("feed.ics", calendar("Team", ""))}), ExitStatus::kDone) << err;
    auto opened = openUserStore();
    ASSERT_TRUE(opened);
    store = std::move(*opened);
    const auto all = allCalendars(*store);
    for (const auto& each : *all) {
      if (each.title == "Team") { teams.push_back(each); }
    }
    ASSERT_EQ(teams.size(), 2U);
    const auto sources = store->sources();
    for (const auto& source : *sources) {
      if (source.id == teams[1].source) { feed = source.title; }
    }
  }

  std::unique_ptr<store::CalendarStore> store;
  std::vector<store::Calendar> teams;
  std::string feed;
};

TEST_F(NamedCalendars, OfOneTitleAreMeantTogether) {
  const auto found = calendarsTitled(*store, {"Team"});
  ASSERT_TRUE(found);
  EXPECT_EQ(found->size(), 2U);
}

TEST_F(NamedCalendars, AreToldApartByIdentifierAndByWhatTheyAreOf) {
  for (const std::string& name : {teams[1].identifier, "Team (" + feed + ")"}) {
    const auto found = calendarsTitled(*store, {name});
    ASSERT_TRUE(found) << name;
    ASSERT_EQ(found->size(), 1U) << name;
    EXPECT_EQ(found->front().identifier, teams[1].identifier);
  }
  EXPECT_EQ(theCalendar(*store, "Team (Local)")->identifier, teams[0].identifier);
}

TEST_F(NamedCalendars, OfOneTitleAreRefusedWhereOneIsWanted) {
  const auto found = theCalendar(*store, "Team");
  ASSERT_FALSE(found);
  EXPECT_THAT(found.error().message, HasSubstr(teams[0].identifier + " (events; Local)"));
}

TEST_F(NamedCalendars, ThatAreNotThereAreAnsweredByThoseThatAre) {
  const auto found = calendarsTitled(*store, {"Taem"});
  ASSERT_FALSE(found);
  EXPECT_EQ(found.error().code, ErrorCode::kNotFound);
  EXPECT_THAT(found.error().message, HasSubstr("\"Team (Local)\""));
  EXPECT_THAT(found.error().message, HasSubstr("\"Calendar\""));
}

TEST_F(NamedCalendars, HoldWhatIsAskedFor) {
  EXPECT_EQ(theCalendar(*store, "Reminders", store::ItemKind::kReminder)->title, "Reminders");
}

}  // namespace
}  // namespace orlocal::host
