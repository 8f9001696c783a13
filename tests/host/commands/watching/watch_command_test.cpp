#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "host/commands/program_fixture.h"
#include "host/commands/running_program.h"
#include "store/edits/edited_items.h"

namespace orlocal::host {
namespace {

using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::StartsWith;

/// `orlocal watch` in a process of its own, and this process to change the calendars.
class WatchTest : public ProgramTest {
 protected:
  WatchTest() {
    file = folder / "calendar.db";
    ::setenv("ORLOCAL_STORE", file.c_str(), 1);
    store::StoreOptions options;
    options.file = file;
    options.viewer = store::Zone::ofUser();
    store = store::CalendarStore::open(std::move(options)).value();
  }

  /// Started, and ready to hear of changes.
  std::unique_ptr<RunningProgram> watching(std::vector<std::string> words = {}) {
    words.insert(words.begin(), {program, "watch"});
    auto running = std::make_unique<RunningProgram>(words);
    EXPECT_THAT(running->errorLine(), HasSubstr("Ctrl-C ends it"));
    return running;
  }
  std::unique_ptr<RunningProgram> watchingForAScript(std::vector<std::string> words = {}) {
    words.insert(words.begin(), {"--file", "Solution", "--script", "Calendar changed"});
    return watching(std::move(words));
  }

  store::Item saved(store::Item item) {
    const auto status = item.kind == store::ItemKind::kEvent ? saveEvent(*store, item, std::nullopt, store::Span::kThis)
                                                             : saveReminder(*store, item);
    EXPECT_TRUE(status) << status.error().message;
    return item;
  }
  store::Item review(const std::string& title = "Review") {
    store::Item item;
    item.calendar = store->defaultCalendar(store::CalendarKind::kEvents).value()->id;
    item.title = title;
    item.start = {store::CalendarTime::Kind::kZoned, store::LocalTime(2026, 11, 6, 10, 0, 0), "Europe/Berlin"};
    item.end = {store::CalendarTime::Kind::kZoned, store::LocalTime(2026, 11, 6, 11, 30, 0), "Europe/Berlin"};
    return item;
  }

  std::filesystem::path file;
  std::unique_ptr<store::CalendarStore> store;
};

TEST_F(WatchTest, ShowsANewEvent) {
  const auto watch = watching();
  const auto item = saved(review());
  EXPECT_EQ(watch->line(), "New event              2026-11-06 10:00–11:30  Review  Calendar  " + item.identifier);
}

TEST_F(WatchTest, ShowsAnEventsWholeLifeInItsOrder) {
  const auto watch = watching();
  auto item = saved(review());
  EXPECT_THAT(watch->line(), StartsWith("New event"));
  item.title = "Review again";
  item = saved(item);
  // Each line is waited for: a title is told as it stands when the change is seen.
  EXPECT_THAT(watch->line(), AllOf(StartsWith("Updated event"), HasSubstr("Review again")));
  ASSERT_TRUE(store->removeEvent(item, std::nullopt, store::Span::kThis));
  EXPECT_EQ(watch->line(), "Deleted event          Review again  Calendar  " + item.identifier);
}

TEST_F(WatchTest, ShowsTheDeletionOfWhatItHasNotSeenByItsName) {
  const auto item = saved(review());
  const auto watch = watching();
  ASSERT_TRUE(store->removeEvent(item, std::nullopt, store::Span::kThis));
  EXPECT_EQ(watch->line(), "Deleted event          Review  Calendar  " + item.identifier);
}

TEST_F(WatchTest, ShowsWholeDays) {
  const auto watch = watching();
  auto item = review("Away");
  item.start = {store::CalendarTime::Kind::kDate, store::LocalTime(2026, 11, 6), ""};
  item.end = {store::CalendarTime::Kind::kDate, store::LocalTime(2026, 11, 7), ""};
  saved(item);
  item.end = {store::CalendarTime::Kind::kDate, store::LocalTime(2026, 11, 9), ""};
  saved(item);
  EXPECT_THAT(watch->line(), HasSubstr(" 2026-11-06  Away"));
  EXPECT_THAT(watch->line(), HasSubstr(" 2026-11-06 – 2026-11-08  Away"));
}

TEST_F(WatchTest, ShowsAnEventThatEndsOnAnotherDay) {
  const auto watch = watching();
  auto item = review("Night train");
  item.end->local = store::LocalTime(2026, 11, 7, 6, 15, 0);
  saved(item);
  EXPECT_THAT(watch->line(), HasSubstr(" 2026-11-06 10:00 – 2026-11-07 06:15  Night train"));
}

TEST_F(WatchTest, ShowsRemindersCalendarsAndReminderLists) {
  const auto watch = watching();
  store::Item reminder;
  reminder.kind = store::ItemKind::kReminder;
  reminder.calendar = store->defaultCalendar(store::CalendarKind::kReminders).value()->id;
  reminder.title = "Tax return";
  reminder.due = {store::CalendarTime::Kind::kDate, store::LocalTime(2026, 11, 30), ""};
  reminder = saved(reminder);
  store::Calendar calendar;
  calendar.title = "Work";
  calendar.source = store->sources().value().front().id;
  ASSERT_TRUE(store->saveCalendar(calendar));
  store::Calendar list = calendar;
  list.id = 0;
  list.kind = store::CalendarKind::kReminders;
  list.title = "Chores";
  ASSERT_TRUE(store->saveCalendar(list));
  EXPECT_EQ(watch->line(), "New reminder           due 2026-11-30  Tax return  Reminders  " + reminder.itemIdentifier);
  EXPECT_EQ(watch->line(), "New calendar           Work  " + calendar.identifier);
  EXPECT_EQ(watch->line(), "New reminder list      Chores  " + list.identifier);
  // Only now that it has seen the title can it tell it of what is gone.
  ASSERT_TRUE(store->removeCalendar(list.identifier));
  EXPECT_EQ(watch->line(), "Deleted reminder list  Chores  " + list.identifier);
}

TEST_F(WatchTest, KeepsATitleFromSteeringTheTerminal) {
  const auto watch = watching();
  saved(review("Two\nlines\u009b[31m"));
  EXPECT_THAT(watch->line(), HasSubstr("Two lines [31m  Calendar"));
}

TEST_F(WatchTest, ShowsJsonLines) {
  const auto watch = watching({"--json"});
  const auto item = saved(review());
  const auto json = nlohmann::json::parse(watch->line());
  EXPECT_EQ(json["change"], "new");
  EXPECT_EQ(json["kind"], "event");
  EXPECT_EQ(json["identifier"], item.identifier);
  EXPECT_EQ(json["title"], "Review");
  EXPECT_EQ(json["calendar"], "Calendar");
  EXPECT_EQ(json["start"], "2026-11-06T10:00:00+01:00");
  EXPECT_EQ(json["end"], "2026-11-06T11:30:00+01:00");
  EXPECT_EQ(json["allDay"], false);
  EXPECT_EQ(json["repeats"], false);
}

TEST_F(WatchTest, KnowsTheNameOfADeletedEventInJson) {
  const auto item = saved(review());
  const auto watch = watching({"--json"});
  ASSERT_TRUE(store->removeEvent(item, std::nullopt, store::Span::kThis));
  const auto json = nlohmann::json::parse(watch->line());
  EXPECT_EQ(json["change"], "deleted");
  EXPECT_EQ(json["title"], "Review");
  EXPECT_EQ(json["calendar"], "Calendar");
  EXPECT_GT(json["position"], 0);
  EXPECT_FALSE(json.contains("start"));
}

TEST_F(WatchTest, EndsWellAtCtrlC) {
  const auto watch = watching();
  watch->signal(SIGINT);
  EXPECT_EQ(watch->finish(), 0);
}

TEST_F(WatchTest, EndsWellWhenItIsTerminated) {
  const auto watch = watchingForAScript();
  watch->signal(SIGTERM);
  EXPECT_EQ(watch->finish(), 0);
}

TEST_F(WatchTest, PrintsTheStartsOfAScript) {
  const auto watch = watchingForAScript();
  auto item = saved(review());
  saved(item);
  ASSERT_TRUE(store->removeEvent(item, std::nullopt, store::Span::kThis));
  EXPECT_EQ(watch->line(), "Solution / Calendar changed: New " + item.identifier);
  EXPECT_EQ(watch->line(), "Solution / Calendar changed: Updated " + item.identifier);
  EXPECT_EQ(watch->line(), "Solution / Calendar changed: Deleted " + item.identifier);
}

TEST_F(WatchTest, TakesOneFileNoticeOfTheSystemHoweverItWatches) {
  for (const auto& watch : {watching(), watchingForAScript()}) {
    int notices = 0;
    for (const auto& open : std::filesystem::directory_iterator("/proc/" + std::to_string(watch->process()) + "/fd")) {
      std::error_code closed;
      if (std::filesystem::read_symlink(open, closed).string().find("inotify") != std::string::npos) { ++notices; }
    }
    EXPECT_EQ(notices, 1);
  }
}

TEST_F(WatchTest, PrintsTheStartsOfAScriptAsJson) {
  const auto watch = watchingForAScript({"--json"});
  const auto item = saved(review());
  const auto json = nlohmann::json::parse(watch->line());
  EXPECT_EQ(json["file"], "Solution");
  EXPECT_EQ(json["script"], "Calendar changed");
  EXPECT_EQ(json["parameter"], "New " + item.identifier);
}

TEST_F(WatchTest, RunsACommandWithTheParameterAsOneArgument) {
  const auto watch = watchingForAScript({"--", "printf", "<%s>\\n", "{}", "x {} y", "-v"});
  const auto item = saved(review());
  EXPECT_EQ(watch->line(), "<New " + item.identifier + ">");
  EXPECT_EQ(watch->line(), "<x {} y>") << "only a word of its own stands for the parameter";
  EXPECT_EQ(watch->line(), "<-v>");
}

TEST_F(WatchTest, LetsNoShellReadTheCommand) {
  const auto watch = watchingForAScript({"--", "echo", "$HOME; `id` | cat"});
  saved(review());
  EXPECT_EQ(watch->line(), "$HOME; `id` | cat");
}

TEST_F(WatchTest, GoesOnAfterACommandThatFails) {
  const auto watch = watchingForAScript({"--", "sh", "-c", "echo run; exit 3"});
  saved(review());
  EXPECT_EQ(watch->line(), "run");
  EXPECT_THAT(watch->errorLine(), MatchesRegex("orlocal: sh ended with status 3 \\(New .*\\)"));
  saved(review());
  EXPECT_EQ(watch->line(), "run");
}

TEST_F(WatchTest, TellsOfACommandThatCannotBeRun) {
  const auto watch = watchingForAScript({"--", "there-is-no-such-program"});
  saved(review());
  EXPECT_THAT(watch->errorLine(), HasSubstr("there-is-no-such-program cannot be run: No such file or directory"));
}

TEST_F(WatchTest, GivesACommandNothingToRead) {
  const auto watch = watchingForAScript({"--", "sh", "-c", "cat; echo read"});
  saved(review());
  EXPECT_EQ(watch->line(), "read");
}

TEST_F(WatchTest, RunsTheCommandsOfManyChangesOneAfterTheOther) {
  const auto watch = watchingForAScript({"--", "sh", "-c", "echo begin $1; echo end $1", "sh", "{}"});
  std::vector<std::string> identifiers;
  for (int i = 0; i < 8; ++i) { identifiers.push_back(saved(review()).identifier); }
  for (const auto& identifier : identifiers) {
    EXPECT_EQ(watch->line(), "begin New " + identifier);
    EXPECT_EQ(watch->line(), "end New " + identifier);
  }
}

TEST_F(WatchTest, StartsNothingForReminders) {
  const auto watch = watchingForAScript();
  store::Item reminder;
  reminder.kind = store::ItemKind::kReminder;
  reminder.calendar = store->defaultCalendar(store::CalendarKind::kReminders).value()->id;
  saved(reminder);
  const auto item = saved(review());
  EXPECT_EQ(watch->line(), "Solution / Calendar changed: New " + item.identifier);
}

TEST_F(WatchTest, FailsWithoutAStore) {
  const std::string nowhere = write("text", "no folder") + "/calendar.db";
  RunningProgram watch({program, "watch", "--store", nowhere});
  EXPECT_THAT(watch.errorLine(), StartsWith("orlocal: "));
  EXPECT_EQ(watch.finish(), 1);
}

TEST_F(WatchTest, FailsWithoutAPluginToStartAScript) {
  EXPECT_EQ(run({"watch", "--file", "Solution", "--script", "Calendar changed"}), ExitStatus::kFailed);
  EXPECT_THAT(err.str(), HasSubstr("plug-in"));
}

TEST_F(WatchTest, TakesFileAndScriptOnlyTogether) {
  EXPECT_EQ(run({"watch", "--file", "Solution"}), ExitStatus::kUsage);
  EXPECT_EQ(run({"watch", "--script", "Calendar changed"}), ExitStatus::kUsage);
}

TEST_F(WatchTest, TakesACommandOnlyWithAScript) { EXPECT_EQ(run({"watch", "--", "echo"}), ExitStatus::kUsage); }

}  // namespace
}  // namespace orlocal::host
