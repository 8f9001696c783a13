#include <filesystem>
#include <fstream>
#include <string>

#include <nlohmann/json.hpp>
#include <sys/stat.h>

#include "host/commands/care/file_users.h"
#include "host/commands/care/item_findings.h"
#include "host/commands/care/machine_findings.h"
#include "host/commands/care/store_findings.h"
#include "host/commands/running_program.h"
#include "host/commands/store_command_fixture.h"
#include "store/edits/item_writer.h"
#include "store/examination.h"
#include "store/import.h"

namespace orlocal::host {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

class Doctor : public StoreCommand {
 protected:
  /// The plug-in is looked at in a process of its own, which is not what is tested here.
  std::string verdictOf(const std::string& part) {
    run({"doctor", "--json", "--plugin", "none"});
    for (const auto& finding : nlohmann::json::parse(out)) {
      if (finding["finding"].get<std::string>().find(part) != std::string::npos) { return finding["verdict"]; }
    }
    return "not said: " + out;
  }
  std::filesystem::path storeFile() const { return folder / "calendar.db"; }
  store::StoreOptions options() const {
    store::StoreOptions options;
    options.file = storeFile();
    return options;
  }
  std::unique_ptr<store::CalendarStore> filled(const std::string& components) {
    auto store = *store::CalendarStore::open(options());
    EXPECT_TRUE(store::importCalendarText(*store, calendar("Work", components), "a.ics"));
    return store;
  }
};

TEST_F(Doctor, FindsAGoodStoreFine) {
  makeStore();
  EXPECT_EQ(verdictOf("mode 06"), "fine");
  EXPECT_EQ(verdictOf("All of it can be read"), "fine");
  EXPECT_EQ(verdictOf("Europe/Berlin"), "fine");
  EXPECT_EQ(run({"doctor", "--plugin", "none"}), ExitStatus::kDone);
  EXPECT_EQ(verdictOf("every series has occurrences"), "fine");
}

TEST_F(Doctor, SaysThatThereIsNoStoreAndMakesNone) {
  EXPECT_EQ(verdictOf("There is no calendar store at " + storeFile().string()), "note");
  EXPECT_TRUE(std::filesystem::is_empty(folder));
}

TEST_F(Doctor, SaysThatAFolderIsNoStoreAndNothingElseAboutIt) {
  std::filesystem::create_directory(storeFile());
  EXPECT_EQ(verdictOf("calendar.db is no file"), "problem");
  EXPECT_EQ(run({"doctor", "--plugin", "none"}), ExitStatus::kFailed);
  EXPECT_THAT(out, Not(HasSubstr("chmod")));
}

TEST_F(Doctor, TakesWritingAwayFromOthersOnlyWhenAsked) {
  makeStore();
  ::chmod(storeFile().c_str(), 0666);
  EXPECT_EQ(verdictOf("everybody may change it"), "problem");
  EXPECT_EQ(std::filesystem::status(storeFile()).permissions(), std::filesystem::perms(0666));
  run({"doctor", "--fix", "--plugin", "none"});
  EXPECT_THAT(out, HasSubstr("put right"));
  EXPECT_EQ(std::filesystem::status(storeFile()).permissions(), std::filesystem::perms(0660));
}

TEST_F(Doctor, FindsDamageAndEndsWithAFailure) {
  std::string events;
  for (int i = 0; i < 200; ++i) {
    events += event("e" + std::to_string(i), "Event",
                    "DTSTART:20261102T090000Z\r\nDESCRIPTION:" + std::string(500, 'n') + "\r\n");
  }
  filled(events)->close();
  const auto size = std::filesystem::file_size(storeFile());
  std::fstream(storeFile(), std::ios::in | std::ios::out | std::ios::binary)
      .seekp(static_cast<std::streamoff>(size / 2))
      .write(std::string(size / 4, '\xA5').data(), static_cast<std::streamsize>(size / 4));
  EXPECT_EQ(run({"doctor", "--plugin", "none"}), ExitStatus::kFailed);
  EXPECT_THAT(out, HasSubstr("export --salvage"));
  const auto found = store::examine(storeFile(), std::chrono::milliseconds(100));
  ASSERT_TRUE(found);
  EXPECT_FALSE(found->damage.empty());
}

TEST_F(Doctor, ExaminesWithoutWaitingForWriters) {
  const auto store = filled(event("a", "A", "DTSTART:20261102T090000Z\r\n"));
  const auto writer = store->startWriting();
  ASSERT_TRUE(writer);
  const auto found = store::examine(storeFile(), std::chrono::milliseconds(0));
  ASSERT_TRUE(found) << found.error().message;
  EXPECT_EQ(found->events, 1);
  EXPECT_THAT(found->damage, IsEmpty());
  EXPECT_THAT(found->unread, IsEmpty());
  EXPECT_GT(found->logBytes, 0U);
}

TEST_F(Doctor, RemovesWhatKilledProgramsLeftHalfMadeWhenAsked) {
  makeStore();
  const auto made = [&](const std::string& name, int hoursAgo) {
    file(name, "12345");
    const auto now = std::filesystem::file_time_type::clock::now();
    std::filesystem::last_write_time(folder / name, now - std::chrono::hours(hoursAgo));
  };
  const std::string left = ".orlocal-0123456789abcdef0123456789abcdef.part";
  const std::string inTheMaking = ".orlocal-11111111111111111111111111111111.part";
  const std::string open = ".orlocal-22222222222222222222222222222222.part";
  const std::string link = ".orlocal-33333333333333333333333333333333.part";
  const std::string foreign = ".orlocal-notes.part";
  made(left, 2);
  made(left + "-journal", 2);
  made(inTheMaking, 2);
  made(inTheMaking + "-journal", 0);
  made(foreign, 2);
  std::filesystem::create_symlink(folder / foreign, folder / link);
  made(open, 2);
  RunningProgram reader({"/bin/sh", "-c", "exec 3<'" + (folder / open).string() + "'; echo open; exec sleep 60"});
  ASSERT_EQ(reader.line(), "open");
  EXPECT_EQ(verdictOf("A program that was killed left a file half made beside it (10 bytes): " + left), "note");
  EXPECT_TRUE(std::filesystem::exists(folder / left));
  EXPECT_EQ(run({"doctor", "--fix", "--plugin", "none"}), ExitStatus::kDone);
  EXPECT_THAT(verdictOf("half made"), HasSubstr("not said"));
  EXPECT_FALSE(std::filesystem::exists(folder / left));
  EXPECT_FALSE(std::filesystem::exists(folder / (left + "-journal")));
  for (const std::string& stays : {inTheMaking, inTheMaking + "-journal", open, link, foreign}) {
    EXPECT_TRUE(std::filesystem::exists(folder / stays)) << stays;
  }
  reader.signal(SIGTERM);
  reader.finish();
}

TEST_F(Doctor, ZonesOfPartHoursAreAProblemUnlessTheSettingLetsThemBe) {
  struct Case {
    const char* zone;
    Finding::Weight without, with;
  };
  constexpr auto kFine = Finding::Weight::kFine;
  constexpr auto kProblem = Finding::Weight::kProblem;
  for (const auto& [name, without, with] :
       {Case{"Europe/Berlin", kFine, kFine}, Case{"Asia/Kolkata", kProblem, kFine}, Case{"UTC", kFine, kFine},
        Case{"America/St_Johns", kProblem, kFine}, Case{"Australia/Lord_Howe", kProblem, kFine}}) {
    const auto zone = *store::Zone::named(name);
    EXPECT_EQ(zoneFindings(zone, false, store::now()).front().weight, without) << name;
    EXPECT_EQ(zoneFindings(zone, true, store::now()).front().weight, with) << name;
  }
}

TEST_F(Doctor, WhatIsThereTwiceIsANote) {
  const std::string when = "DTSTART:20261102T090000Z\r\nLOCATION:Room 1\r\n";
  const auto store = filled(event("a", "Review", when) + event("b", "Review", when) + event("c", "Other", when));
  const auto findings = itemFindings(*store);
  ASSERT_TRUE(findings) << findings.error().message;
  ASSERT_THAT(*findings, SizeIs(1));
  EXPECT_EQ(findings->front().weight, Finding::Weight::kNote);
  EXPECT_EQ(findings->front().sentence, "There more than once: \"Review\".");
  EXPECT_THAT(findings->front().remedy, HasSubstr("orlocal duplicates"));
}

TEST_F(Doctor, SeriesWithoutAnOccurrenceAreTold) {
  const auto store = filled(
      event("a", "Gone",
            "DTSTART:20261102T090000Z\r\nRRULE:FREQ=DAILY;COUNT=2\r\nEXDATE:20261102T090000Z,20261103T090000Z\r\n"));
  const auto odd = oddItems(*store, store::Zone::ofUser(), *store->calendars(store::CalendarKind::kEvents));
  ASSERT_TRUE(odd);
  ASSERT_THAT(odd->empty, SizeIs(1));
  EXPECT_EQ(odd->empty[0].title, "Gone");
}

TEST_F(Doctor, SeriesThatNoQueryCanShowAreTold) {
  const auto store = filled(event("a", "Each minute", "DTSTART:20100101T090000Z\r\nRRULE:FREQ=MINUTELY\r\n"));
  const auto findings = itemFindings(*store);
  ASSERT_TRUE(findings) << findings.error().message;
  ASSERT_THAT(*findings, SizeIs(1));
  EXPECT_EQ(findings->front().weight, Finding::Weight::kProblem);
  EXPECT_THAT(findings->front().sentence, HasSubstr("\"Each minute\""));
}

TEST_F(Doctor, TellsWhoHasAFileOpen) {
  const auto path = file("open.txt", "x");
  EXPECT_THAT(usersOf(path), IsEmpty());
  FILE* const other = ::popen(("exec 3<" + path + "; read line").c_str(), "w");
  ASSERT_NE(other, nullptr);
  std::vector<FileUser> users;
  for (int i = 0; i < 500 && users.empty(); ++i) {
    users = usersOf(path);
    ::usleep(10'000);
  }
  ::pclose(other);
  ASSERT_THAT(users, SizeIs(1));
  EXPECT_EQ(users[0].name, "sh");
}

}  // namespace
}  // namespace orlocal::host
