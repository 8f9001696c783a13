#include "host/commands/changes/change_fixture.h"

namespace orlocal::host {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

class CommandLogOfPerson : public ChangeCommand {
 protected:
  void SetUp() override {
    typed({"new", "Lunch tomorrow 12:30"});
    typed({"edit", "Lunch", "--start", "13:00"});
    typed({"new", "--reminder", "Milk"});
    typed({"remove", "Lunch", "Milk", "--yes"});
  }
};

TEST_F(CommandLogOfPerson, TellsWhatEachCommandDidNewestFirst) {
  const auto log = typedJson({"log"});
  ASSERT_EQ(log.size(), 4U);
  EXPECT_EQ(log[0]["command"], "remove \"Lunch\", \"Milk\"");
  EXPECT_EQ(log[0]["changes"].size(), 2U);
  EXPECT_EQ(log[0]["changes"][0]["what"], "removed");
  EXPECT_EQ(log[0]["changes"][0]["item"]["title"], "Lunch");
  EXPECT_TRUE(log[0]["undoIsNext"]);
  EXPECT_FALSE(log[1]["undoIsNext"]);
  EXPECT_EQ(log[2]["changes"][0]["what"], "changed");
  // How it was before the edit.
  EXPECT_EQ(log[2]["changes"][0]["item"]["start"], "2026-11-03T12:30:00+01:00");
  EXPECT_EQ(log[3]["changes"][0]["what"], "made");
  EXPECT_TRUE(log[3]["changes"][0]["item"].is_null());
}

TEST_F(CommandLogOfPerson, TellsWhatUndoTakesBackNext) {
  EXPECT_THAT(typed({"log"}), HasSubstr("orlocal undo takes back 4 next."));
  typed({"undo"});
  EXPECT_THAT(typed({"log"}), AllOf(HasSubstr("(undone by 6)"), HasSubstr("orlocal undo takes back 3 next."),
                                    HasSubstr("brought back \"Milk\""), HasSubstr("changed, before: \"Lunch\"")));
  EXPECT_EQ(typedJson({"log"})[0]["undoes"], 4);
}

TEST_F(CommandLogOfPerson, ShowsAsMuchAsIsAskedFor) {
  EXPECT_THAT(typed({"log", "--limit", "1"}),
              AllOf(HasSubstr("3 older: orlocal log --limit 4"), Not(HasSubstr("edit"))));
  EXPECT_EQ(typedJson({"log", "--since", "today"}).size(), 4U);
  EXPECT_EQ(typedJson({"log", "--since", "tomorrow"}).size(), 0U);
  EXPECT_THAT(typed({"log", "--since", "tomorrow"}), HasSubstr("No command of yours changed anything since then."));
  EXPECT_EQ(typedJson({"log", "2"})[0]["number"], 2);
  EXPECT_THAT(refused({"log", "77"}), HasSubstr("There is no command 77 of yours"));
  EXPECT_THAT(refused({"log", "--since", "whenever"}, ExitStatus::kUsage), HasSubstr("no day"));
}

TEST_F(CommandLogOfPerson, ShowsAFewOfManyChanges) {
  std::string components;
  for (int i = 0; i < 10; ++i) {
    components += event("e" + std::to_string(i), "Old " + std::to_string(i), "DTSTART:20260101T090000Z\r\n");
  }
  imported(calendar("Work", components));
  typed({"purge", "--before", "2026-10-01", "--yes"});
  EXPECT_THAT(typed({"log"}), AllOf(HasSubstr("purge --before 2026-10-01"), HasSubstr("and 7 more: orlocal log 6")));
  EXPECT_THAT(typed({"log", "6"}), AllOf(HasSubstr("removed \"Old 9\""), Not(HasSubstr("more:"))));
}

}  // namespace
}  // namespace orlocal::host
