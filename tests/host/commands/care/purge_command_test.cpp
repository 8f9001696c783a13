#include <filesystem>

#include "host/commands/care/past_items.h"
#include "host/commands/changes/change_fixture.h"
#include "host/commands/command_line/store_session.h"

namespace orlocal::host {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

/// On a Monday, 2 November 2026; what is over was so before October.
class Purge : public ChangeCommand {
 protected:
  void SetUp() override {
    imported(calendar(
        "Work", event("over", "Over", "DTSTART:20260901T090000Z\r\nDTEND:20260901T100000Z\r\n") +
                    event("into", "Over the day", "DTSTART:20260930T200000Z\r\nDTEND:20261001T080000Z\r\n") +
                    event("till", "Till midnight", "DTSTART:20260930T200000Z\r\nDTEND:20260930T220000Z\r\n") +
                    event("days", "Holiday", "DTSTART;VALUE=DATE:20260928\r\nDTEND;VALUE=DATE:20261001\r\n") +
                    event("more", "Longer holiday", "DTSTART;VALUE=DATE:20260928\r\nDTEND;VALUE=DATE:20261002\r\n") +
                    event("later", "Later", "DTSTART:20261103T090000Z\r\nDTEND:20261103T100000Z\r\n") +
                    event("ended", "Ended series", "DTSTART:20260901T090000Z\r\nRRULE:FREQ=DAILY;COUNT=5\r\n") +
                    event("endless", "Endless series", "DTSTART:20260901T090000Z\r\nRRULE:FREQ=DAILY\r\n") +
                    event("until", "Series until November",
                          "DTSTART:20260901T090000Z\r\nRRULE:FREQ=DAILY;UNTIL=20261101T090000Z\r\n") +
                    event("moved", "Moved series", "DTSTART:20260901T090000Z\r\nRRULE:FREQ=DAILY;COUNT=2\r\n") +
                    event("moved", "Moved series", "RECURRENCE-ID:20260902T090000Z\r\nDTSTART:20261110T090000Z\r\n") +
                    event("none", "Empty series",
                          "DTSTART:20260901T090000Z\r\nRRULE:FREQ=DAILY;COUNT=1\r\nEXDATE:20260901T090000Z\r\n") +
                    todo("done", "Done", "STATUS:COMPLETED\r\nCOMPLETED:20260915T100000Z\r\n") +
                    todo("done2", "Done in October", "STATUS:COMPLETED\r\nCOMPLETED:20261015T100000Z\r\n") +
                    todo("open", "Long overdue", "DUE:20260101T090000Z\r\n") + todo("undated", "Undated", "")));
  }
  std::vector<std::string> removed(std::vector<std::string> words) {
    std::vector<std::string> titles;
    words.insert(words.begin(), "purge");
    const auto json = typedJson(words);
    for (const auto& item : json["removed"]) { titles.push_back(item["title"]); }
    return titles;
  }
};

TEST_F(Purge, RemovesWhatIsOverAndNothingElse) {
  const std::string before = exported();
  EXPECT_THAT(removed({"--before", "2026-10-01", "--yes"}),
              ElementsAre("Over", "Till midnight", "Holiday", "Ended series", "Done"));
  EXPECT_THAT(exported(), AllOf(Not(HasSubstr("SUMMARY:Holiday")), HasSubstr("SUMMARY:Longer holiday"),
                                HasSubstr("SUMMARY:Over the day"), HasSubstr("SUMMARY:Moved series"),
                                HasSubstr("SUMMARY:Empty series"), HasSubstr("SUMMARY:Long overdue")));
  EXPECT_THAT(removed({"--before", "2026-10-01", "--yes"}), IsEmpty());
  typed({"undo"});
  EXPECT_EQ(exported(), before);
}

TEST_F(Purge, TellsWhatStaysAndWhy) {
  imported(calendar("", ""));
  ASSERT_EQ(run({"import", "--read-only",
                 file("r.ics", calendar("Locked", event("x", "Old", "DTSTART:20260101T090000Z\r\n")))}),
            ExitStatus::kDone);
  EXPECT_THAT(typed({"purge", "--before", "2026-10-01", "--yes"}),
              AllOf(HasSubstr("Removed 4 events and 1 reminder that were over before Thu 1 Oct 2026"),
                    HasSubstr("3 series that began before go on and stay whole"),
                    HasSubstr("1 calendar allows no changes and was left alone")));
  EXPECT_THAT(refused({"purge", "--before", "2026-10-01", "--calendar", "Locked", "--yes"}),
              HasSubstr("\"Locked\" allows no changes"));
  EXPECT_THAT(typed({"purge", "--before", "2025-01-01"}), HasSubstr("Nothing was over before Wed 1 Jan 2025."));
}

TEST_F(Purge, AsksAPersonAndRefusesWhereNobodyIs) {
  const std::string before = exported();
  EXPECT_THAT(refused({"purge", "--before", "2026-10-01"}, ExitStatus::kUsage),
              AllOf(HasSubstr("Remove 4 events and 1 reminder"), HasSubstr("--yes")));
  answering("n\n");
  EXPECT_THAT(refused({"purge", "--before", "2026-10-01"}), HasSubstr("Nothing was done"));
  EXPECT_EQ(exported(), before);
  answering("y\n");
  typed({"purge", "--before", "2026-10-01"});
  EXPECT_NE(exported(), before);
}

TEST_F(Purge, OnlyShowsWhatADryRunWouldRemove) {
  const std::string before = exported();
  EXPECT_THAT(typed({"purge", "--before", "2026-10-01", "--dry-run", "--archive", (folder / "a.ics").string()}),
              AllOf(HasSubstr("Would remove 4 events and 1 reminder"), HasSubstr("    \"Holiday\" ("),
                    HasSubstr("Would write")));
  EXPECT_EQ(exported(), before);
  EXPECT_FALSE(std::filesystem::exists(folder / "a.ics"));
}

TEST_F(Purge, WritesAnArchiveThatBringsAllOfItBack) {
  const std::string before = exported();
  const auto archive = (folder / "old.ics").string();
  EXPECT_THAT(typed({"purge", "--before", "2026-10-01", "--yes", "--archive", archive}),
              HasSubstr("Wrote 4 events and 1 reminder to " + archive));
  EXPECT_EQ(std::filesystem::status(archive).permissions(), std::filesystem::perms(0600));
  EXPECT_THAT(textOf(archive), AllOf(HasSubstr("SUMMARY:Ended series"), Not(HasSubstr("SUMMARY:Later"))));
  EXPECT_NE(exported(), before);
  ASSERT_EQ(run({"import", archive}), ExitStatus::kDone);
  EXPECT_THAT(out, HasSubstr("5 new"));
}

TEST_F(Purge, RemovesNothingWithoutASafeArchive) {
  const std::string before = exported();
  const std::string old = file("old.ics", "an archive of before");
  std::filesystem::create_symlink("/dev/null", folder / "link.ics");
  for (const std::string& name : {old, (folder / "link.ics").string(), std::string("/dev/null"), folder.string()}) {
    EXPECT_THAT(refused({"purge", "--before", "2026-10-01", "--yes", "--archive", name}),
                HasSubstr("is there already"));
  }
  refused({"purge", "--before", "2026-10-01", "--yes", "--archive", (folder / "missing" / "a.ics").string()});
  EXPECT_THAT(refused({"purge", "--before", "2026-10-01", "--yes", "--archive", "-"}), HasSubstr("is a file"));
  EXPECT_EQ(textOf(old), "an archive of before");
  EXPECT_EQ(exported(), before);
}

TEST_F(Purge, TakesDaysThatAreOver) {
  EXPECT_THAT(refused({"purge", "--before", "tomorrow", "--yes"}, ExitStatus::kUsage), HasSubstr("still to come"));
  EXPECT_THAT(refused({"purge", "--before", "someday", "--yes"}, ExitStatus::kUsage), HasSubstr("no day"));
  EXPECT_THAT(removed({"--before", "-40", "--yes", "--dry-run"}), ElementsAre("Over", "Ended series", "Done"));
  EXPECT_THAT(removed({"--before", "today", "--yes", "--dry-run", "--calendar", "Calendar"}), IsEmpty());
}

}  // namespace
}  // namespace orlocal::host
