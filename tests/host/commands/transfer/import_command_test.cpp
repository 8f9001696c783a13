#include <nlohmann/json.hpp>

#include "host/commands/store_command_fixture.h"

namespace orlocal::host {
namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

class ImportCommand : public StoreCommand {
 protected:
  static std::string review() { return event("1", "Review", "DTSTART:20261102T090000\r\nDTEND:20261102T100000\r\n"); }
  static std::string withoutStart() { return event("2", "Broken", ""); }

  nlohmann::json calendars() {
    run({"calendars", "--json"});
    return nlohmann::json::parse(out);
  }
  /// What `calendars --json` says of the one with this title; null when there is none.
  nlohmann::json calendarTitled(const std::string& title) {
    for (const auto& each : calendars()) {
      if (each["title"] == title) { return each; }
    }
    return nullptr;
  }
};

TEST_F(ImportCommand, CountsWhatItDid) {
  const auto path = file("work.ics", calendar("Work", review()));
  EXPECT_EQ(run({"import", path}), ExitStatus::kDone);
  EXPECT_EQ(out, path + ": 1 new, 0 updated, 0 unchanged, 0 refused\n");
  EXPECT_EQ(err, "");
}

TEST_F(ImportCommand, ChangesNothingTheSecondTime) {
  const auto path = file("work.ics", calendar("Work", review()));
  run({"import", path});
  EXPECT_EQ(run({"import", path}), ExitStatus::kDone);
  EXPECT_THAT(out, EndsWith("0 new, 0 updated, 1 unchanged, 0 refused\n"));
}

TEST_F(ImportCommand, NamesFileLineAndReasonOfWhatItRefuses) {
  const auto path = file("work.ics", calendar("", review() + withoutStart()));
  EXPECT_EQ(run({"import", path}), ExitStatus::kFailed);
  EXPECT_THAT(out, EndsWith("1 new, 0 updated, 0 unchanged, 1 refused\n"));
  EXPECT_THAT(err, AllOf(HasSubstr(path + ":11: refused: "), HasSubstr("DTSTART")));
}

TEST_F(ImportCommand, ImportsTheOtherFilesWhenOneCannotBeRead) {
  const auto path = file("work.ics", calendar("Work", review()));
  EXPECT_EQ(run({"import", (folder / "missing.ics").string(), path}), ExitStatus::kFailed);
  EXPECT_THAT(err, HasSubstr("missing.ics"));
  EXPECT_THAT(out, HasSubstr("1 new"));
}

TEST_F(ImportCommand, PutsItemsIntoTheCalendarsNamed) {
  const auto path = file("work.ics", calendar("Work", review() + todo("3", "Report", "")));
  EXPECT_EQ(run({"import", path, "--calendar", "Team", "--list", "Chores"}), ExitStatus::kDone);
  EXPECT_EQ(calendarTitled("Team")["holds"], "events");
  EXPECT_EQ(calendarTitled("Chores")["holds"], "reminders");
  EXPECT_EQ(calendarTitled("Work"), nullptr);
}

TEST_F(ImportCommand, PutsItemsIntoTheDefaultsWhenNothingIsNamed) {
  run({"import", file("some.ics", calendar("", review() + todo("3", "Report", "")))});
  EXPECT_EQ(calendars().size(), 2U);
}

TEST_F(ImportCommand, ProtectsWhatItMakes) {
  run({"import", "--read-only", file("a.ics", calendar("Rules", review()))});
  EXPECT_EQ(calendarTitled("Rules")["readOnly"], true);
  EXPECT_EQ(calendarTitled("Rules")["subscribed"], false);
  run({"import", "--subscription", file("b.ics", calendar("Feed", review()))});
  EXPECT_EQ(calendarTitled("Feed")["readOnly"], true);
  EXPECT_EQ(calendarTitled("Feed")["subscribed"], true);
}

TEST_F(ImportCommand, ReadsTheStandardInput) {
  input = calendar("Work", review());
  EXPECT_EQ(run({"import", "-"}), ExitStatus::kDone);
  EXPECT_THAT(out, HasSubstr("1 new"));
}

TEST_F(ImportCommand, ReportsAsJson) {
  const auto path = file("work.ics", calendar("Work", review() + withoutStart()));
  const auto missing = (folder / "missing.ics").string();
  EXPECT_EQ(run({"import", "--json", path, missing}), ExitStatus::kFailed);
  const auto json = nlohmann::json::parse(out);
  ASSERT_EQ(json.size(), 2U);
  EXPECT_EQ(json[0]["file"], path);
  EXPECT_EQ(json[0]["new"], 1);
  EXPECT_EQ(json[0]["refused"], 1);
  EXPECT_EQ(json[0]["problems"][0]["uid"], "2");
  EXPECT_THAT(json[1]["error"].get<std::string>(), HasSubstr("missing.ics"));
}

TEST_F(ImportCommand, ShowsNoProgressForShortWork) {
  onTerminal = true;
  run({"import", file("work.ics", calendar("Work", review()))});
  EXPECT_EQ(err, "");
}

TEST_F(ImportCommand, ShortensALongListOfWarnings) {
  std::string events;
  for (int i = 0; i < 30; ++i) {
    events += event(std::to_string(i), "Twice",
                    "DTSTART:20261102T090000\r\nDTSTART:20261103T090000\r\nDTEND:20261104T100000\r\n");
  }
  const auto path = file("work.ics", calendar("Work", events));
  EXPECT_EQ(run({"import", path}), ExitStatus::kDone);
  EXPECT_THAT(err, HasSubstr(path + ": 10 more warnings; --json lists them all\n"));
}

TEST_F(ImportCommand, WantsAFile) {
  EXPECT_EQ(run({"import"}), ExitStatus::kUsage);
  EXPECT_EQ(run({"import-contacts"}), ExitStatus::kUsage);
}

TEST_F(ImportCommand, SaysWhichFileTheStoreCannotBe) {
  ::setenv("ORLOCAL_STORE", folder.c_str(), 1);
  EXPECT_EQ(run({"import", file("work.ics", calendar("Work", review()))}), ExitStatus::kFailed);
  EXPECT_THAT(err, HasSubstr(folder.string()));
}

TEST_F(ImportCommand, ReadsContacts) {
  const auto path = file("people.vcf",
                         "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:1\r\nFN:A Guest\r\nEMAIL:guest@example.org\r\n"
                         "ADR:;;Street 1;Town;;12345;Country\r\nEND:VCARD\r\n");
  EXPECT_EQ(run({"import-contacts", path}), ExitStatus::kDone);
  EXPECT_EQ(out, path + ": 1 new, 0 updated, 0 unchanged, 0 refused\n");
  run({"import-contacts", path});
  EXPECT_THAT(out, HasSubstr("1 unchanged"));
}

class ExportCommand : public ImportCommand {};

TEST_F(ExportCommand, WritesWhatCanBeImportedAgainUnchanged) {
  imported(calendar("Work", review()));
  ASSERT_EQ(run({"export", "--calendar", "Work"}), ExitStatus::kDone);
  EXPECT_THAT(out, AllOf(HasSubstr("BEGIN:VCALENDAR\r\n"), HasSubstr("SUMMARY:Review")));
  run({"import", file("again.ics", out)});
  EXPECT_THAT(out, HasSubstr("0 new, 0 updated, 1 unchanged"));
}

TEST_F(ExportCommand, WritesAFile) {
  imported(calendar("Work", review()));
  const auto path = folder / "out.ics";
  EXPECT_EQ(run({"export", "-o", path.string()}), ExitStatus::kDone);
  EXPECT_EQ(out, "");
  EXPECT_THAT(textOf(path), HasSubstr("SUMMARY:Review"));
}

TEST_F(ExportCommand, WritesTheCalendarsNamedOnly) {
  imported(calendar("Work", review()));
  imported(calendar("Family", event("9", "Piano", "DTSTART:20261102T160000\r\n")));
  run({"export", "--calendar", "Family"});
  EXPECT_THAT(out, AllOf(HasSubstr("Piano"), Not(HasSubstr("Review"))));
}

TEST_F(ExportCommand, LeavesAnOldFileAloneWhenItFails) {
  const auto path = file("out.ics", "precious");
  EXPECT_EQ(run({"export", "--calendar", "Nowhere", "-o", path}), ExitStatus::kFailed);
  EXPECT_EQ(textOf(path), "precious");
}

TEST_F(ExportCommand, SaysWhichFileItCannotWrite) {
  makeStore();
  const auto path = (folder / "missing" / "out.ics").string();
  EXPECT_EQ(run({"export", "-o", path}), ExitStatus::kFailed);
  EXPECT_THAT(err, HasSubstr(path));
}

TEST_F(ExportCommand, LeavesNoDraftsBehind) {
  run({"export", "-o", (folder / "out.ics").string()});
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    EXPECT_THAT(entry.path().string(), Not(HasSubstr(".part")));
  }
}

class CalendarsCommand : public ImportCommand {};

TEST_F(CalendarsCommand, ListsTheDefaultsOfANewStore) {
  makeStore();
  EXPECT_EQ(run({"calendars"}), ExitStatus::kDone);
  EXPECT_THAT(out, HasSubstr("TITLE      HOLDS      FROM   COLOUR\n"));
  EXPECT_THAT(out, HasSubstr("Calendar   events     local"));
  EXPECT_THAT(out, HasSubstr("Reminders  reminders  local"));
}

TEST_F(CalendarsCommand, MarksDefaultsAndProtection) {
  imported(calendar("", review()));
  run({"import", "--subscription", file("b.ics", calendar("Feed", review()))});
  run({"calendars"});
  EXPECT_THAT(out, HasSubstr("default"));
  EXPECT_THAT(out, HasSubstr("subscribed, read-only"));
}

TEST_F(CalendarsCommand, AlignsTitlesOfWideLetters) {
  imported(calendar("予定", review()));
  run({"calendars"});
  EXPECT_THAT(out, HasSubstr("予定       events"));
}

}  // namespace
}  // namespace orlocal::host
