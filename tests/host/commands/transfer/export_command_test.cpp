#include <nlohmann/json.hpp>
#include <sys/stat.h>
#include <unistd.h>

#include "host/commands/store_command_fixture.h"
#include "host/commands/transfer/calendar_files.h"

namespace orlocal::host {
namespace {

namespace fs = std::filesystem;

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

TEST(FileNames, AreSafe) {
  FileNames names;
  EXPECT_EQ(names.take("Work", ".ics"), "Work.ics");
  EXPECT_EQ(names.take("../../etc/passwd", ".ics"), "-..-etc-passwd.ics");
  EXPECT_EQ(names.take(".hidden", ".ics"), "hidden.ics");
  EXPECT_EQ(names.take("a:b*c?\"<>|\\d", ".ics"), "a-b-c------d.ics");
  EXPECT_EQ(names.take("new\nline", ".ics"), "new line.ics");
  EXPECT_EQ(names.take("Büro", ".ics"), "Büro.ics");
  EXPECT_EQ(names.take(" .. ", ".ics"), "calendar.ics");
  EXPECT_EQ(names.take("", ".ics"), "calendar (2).ics");
}

TEST(FileNames, AreEachGivenOnce) {
  FileNames names;
  EXPECT_EQ(names.take("Work", ".ics"), "Work.ics");
  EXPECT_EQ(names.take("work", ".ics"), "work (2).ics");
  EXPECT_EQ(names.take("Work (2)", ".ics"), "Work (2) (2).ics");
}

TEST(FileNames, FitIntoAFolder) {
  FileNames names;
  std::string title;
  for (int i = 0; i < 200; ++i) { title += "ü"; }
  EXPECT_LE(names.take(title, ".ics").size(), 255U);
}

class ExportFiles : public StoreCommand {
 protected:
  ExportFiles() {
    imported(calendar("Work", event("1", "Review", "DTSTART:20261102T090000\r\nDTEND:20261102T100000\r\n") +
                                  event("2", "Weekly", "DTSTART:20261001T090000\r\nRRULE:FREQ=WEEKLY\r\n")));
    imported(calendar("Family", event("3", "Piano", "DTSTART:20261209T160000\r\n") +
                                    todo("4", "Cake", "DUE:20261103\r\n") + todo("5", "Some day", "")));
  }
  fs::path target() const { return folder / "files"; }
  std::vector<std::string> filesIn(const fs::path& path) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(path)) { names.push_back(entry.path().filename()); }
    std::sort(names.begin(), names.end());
    return names;
  }
  static mode_t modeOf(const fs::path& path) {
    struct stat found {};
    ::stat(path.c_str(), &found);
    return found.st_mode & 07777;
  }
};

TEST_F(ExportFiles, AreOneForEachCalendarThatHasSomething) {
  EXPECT_EQ(run({"export", "-o", target().string() + "/"}), ExitStatus::kDone) << err;
  EXPECT_THAT(filesIn(target()), ElementsAre("Family (2).ics", "Family.ics", "Work.ics"));
  EXPECT_THAT(out,
              AllOf(HasSubstr("/Work.ics: 2 items of \"Work\"\n"), HasSubstr("/Family.ics: 1 item of \"Family\"\n")));
  EXPECT_THAT(err, AllOf(HasSubstr("\"Calendar\" has nothing to write and was left out"),
                         HasSubstr("\"Reminders\" has nothing to write and was left out")));
  EXPECT_EQ(modeOf(target() / "Work.ics"), 0600U);
}

TEST_F(ExportFiles, GoIntoAFolderThatIsThereWithoutASlash) {
  fs::create_directory(target());
  EXPECT_EQ(run({"export", "--calendar", "Work", "-o", target().string()}), ExitStatus::kDone);
  EXPECT_THAT(filesIn(target()), ElementsAre("Work.ics"));
}

TEST_F(ExportFiles, ComeBackUnchangedAsAFolder) {
  run({"export", "-o", target().string() + "/"});
  EXPECT_EQ(run({"import", target().string()}), ExitStatus::kDone);
  EXPECT_THAT(out, Not(HasSubstr("1 new")));
  EXPECT_THAT(out, HasSubstr("0 new, 0 updated, 2 unchanged, 0 refused"));
}

TEST_F(ExportFiles, KeepTheModeOfWhatWasThere) {
  fs::create_directory(target());
  const auto old = file("files/Work.ics", "old");
  ::chmod(old.c_str(), 0644);
  EXPECT_EQ(run({"export", "-o", target().string() + "/"}), ExitStatus::kDone);
  EXPECT_EQ(modeOf(old), 0644U);
  EXPECT_THAT(textOf(old), HasSubstr("Review"));
}

TEST_F(ExportFiles, LeaveLinksAndPipesWhatTheyAre) {
  fs::create_directory(target());
  const auto real = file("real.ics", "old");
  fs::create_symlink(real, target() / "Work.ics");
  EXPECT_EQ(run({"export", "--calendar", "Work", "-o", target().string()}), ExitStatus::kDone);
  EXPECT_TRUE(fs::is_symlink(target() / "Work.ics"));
  EXPECT_THAT(textOf(real), HasSubstr("Review"));
  EXPECT_EQ(run({"export", "-o", "/dev/null"}), ExitStatus::kDone) << err;
  EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST_F(ExportFiles, SayWhichFolderCannotBeMade) {
  EXPECT_EQ(run({"export", "-o", file("plain", "x") + "/below/"}), ExitStatus::kFailed);
  EXPECT_THAT(err, HasSubstr("below/ cannot be made"));
}

TEST_F(ExportFiles, HaveWhatIsOnTheDaysAskedFor) {
  EXPECT_EQ(run({"export", "--from", "2026-11-02", "--to", "2026-11-03"}), ExitStatus::kDone) << err;
  EXPECT_THAT(out, AllOf(HasSubstr("Review"), HasSubstr("Cake"), Not(HasSubstr("Piano")), Not(HasSubstr("Weekly")),
                         Not(HasSubstr("Some day"))));
  EXPECT_EQ(run({"export", "--from", "2026-12-01"}), ExitStatus::kDone);
  EXPECT_THAT(out,
              AllOf(HasSubstr("Piano"), HasSubstr("Weekly"), HasSubstr("DTSTART:20261001"), Not(HasSubstr("Review"))));
  EXPECT_EQ(run({"export", "--to", "2026-10-31"}), ExitStatus::kDone);
  EXPECT_THAT(out, AllOf(HasSubstr("Weekly"), Not(HasSubstr("Review"))));
}

TEST_F(ExportFiles, AreNotMadeForDaysThatMakeNoSense) {
  EXPECT_EQ(run({"export", "--from", "someday"}), ExitStatus::kUsage);
  EXPECT_EQ(run({"export", "--from", "2026-11-03", "--to", "2026-11-02"}), ExitStatus::kUsage);
  EXPECT_THAT(err, HasSubstr("lies before the first day"));
}

TEST_F(ExportFiles, LeaveOutEmptyCalendarsAndHoldThoseThatWereNamed) {
  run({"export"});
  EXPECT_THAT(out, Not(HasSubstr("X-WR-CALNAME:Reminders")));
  EXPECT_EQ(run({"export", "--calendar", "Reminders"}), ExitStatus::kDone);
  EXPECT_THAT(out, HasSubstr("X-WR-CALNAME:Reminders"));
  EXPECT_EQ(err, "");
}

TEST_F(ExportFiles, SayWhatNoCalendarFileCanSay) {
  run({"import", "--subscription",
       file("feed.ics", calendar("Feed", event("9", "Match", "DTSTART:20261102T160000\r\n")))});
  EXPECT_EQ(run({"export", "--calendar", "Feed"}), ExitStatus::kDone);
  EXPECT_EQ(err, "orlocal: of \"Feed\" the file does not say that it is subscribed (import --subscription)\n");
}

TEST_F(ExportFiles, HoldContacts) {
  const std::string cards =
      "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:1\r\nFN:Ada Ångström\r\nEMAIL:ada@example.org\r\nEMAIL:a@example.net\r\n"
      "ADR:;;Street 1;Town;;12345;Country\r\nBDAY:1985-04-12\r\nEND:VCARD\r\n"
      "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:2\r\nFN:Bo\\, Jr.\r\nBDAY:--0229\r\nEND:VCARD\r\n";
  ASSERT_EQ(run({"import", file("people.vcf", cards)}), ExitStatus::kDone);
  EXPECT_EQ(run({"export", "--contacts"}), ExitStatus::kDone);
  EXPECT_THAT(out, AllOf(HasSubstr("BEGIN:VCARD\r\nVERSION:4.0\r\n"), HasSubstr("FN:Ada Ångström\r\n"),
                         HasSubstr("BDAY:19850412\r\n"), HasSubstr("BDAY:--0229\r\n"), Not(HasSubstr("VCALENDAR"))));
  EXPECT_EQ(run({"import", file("again.vcf", out)}), ExitStatus::kDone);
  EXPECT_THAT(out, HasSubstr("0 new, 0 updated, 2 unchanged"));
  EXPECT_EQ(run({"export", "--contacts", "-o", target().string() + "/"}), ExitStatus::kDone);
  EXPECT_THAT(out, HasSubstr("contacts.vcf: 2 cards\n"));
  EXPECT_EQ(run({"export", "--contacts", "--calendar", "Work"}), ExitStatus::kUsage);
}

TEST_F(ExportFiles, SayThatThereAreNoContacts) {
  EXPECT_EQ(run({"export", "--contacts"}), ExitStatus::kDone);
  EXPECT_THAT(err, HasSubstr("There are no contacts"));
}

}  // namespace
}  // namespace orlocal::host
