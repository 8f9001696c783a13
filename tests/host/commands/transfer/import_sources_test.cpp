#include <thread>

#include <nlohmann/json.hpp>
#include <sys/stat.h>

#include "host/commands/store_command_fixture.h"
#include "host/commands/transfer/packed_bytes.h"

namespace orlocal::host {
namespace {

namespace fs = std::filesystem;

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

class ImportSources : public StoreCommand {
 protected:
  static std::string meeting(const std::string& uid, const std::string& title = "Review") {
    return event(uid, title, "DTSTART:20261102T090000\r\nDTEND:20261102T100000\r\n");
  }
  static std::string work(const std::string& uid) { return calendar("Work", meeting(uid)); }
  static std::string card(const std::string& name) {
    return "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:" + name + "\r\nFN:" + name + "\r\nEMAIL:" + name +
           "@example.org\r\nEND:VCARD\r\n";
  }
  std::string inFolder(const std::string& name, const std::string& text) {
    const fs::path path = folder / "things" / name;
    fs::create_directories(path.parent_path());
    return file("things/" + name, text);
  }
  std::string things() const { return (folder / "things").string(); }
  bool hasStore() const { return fs::exists(folder / "calendar.db"); }
  std::string agendaTitles() {
    run({"agenda", "--from", "2026-11-02"});
    return out;
  }
};

TEST_F(ImportSources, TakesFoldersWithTheirFoldersByName) {
  inFolder("b.ics", work("2"));
  inFolder("a.ics", work("1"));
  inFolder("more/c.txt", work("3"));
  inFolder(".hidden/d.ics", work("4"));
  EXPECT_EQ(run({"import", things()}), ExitStatus::kDone) << err;
  EXPECT_EQ(out, things() + "/a.ics: 1 new, 0 updated, 0 unchanged, 0 refused\n" + things() +
                     "/b.ics: 1 new, 0 updated, 0 unchanged, 0 refused\n" + things() +
                     "/more/c.txt: 1 new, 0 updated, 0 unchanged, 0 refused\n");
}

TEST_F(ImportSources, PassesOverWhatElseLiesInAFolder) {
  inFolder("a.ics", work("1"));
  inFolder("README", "Read me");
  inFolder("photo.png", "\x89PNG\r\n\x1a\n");
  EXPECT_EQ(run({"import", things()}), ExitStatus::kDone);
  EXPECT_THAT(err, AllOf(HasSubstr("README: passed over: it looks like text of another kind\n"),
                         HasSubstr("photo.png: passed over: it looks like a picture (PNG)\n")));
}

TEST_F(ImportSources, RefusesInAFolderWhatSaysThatItIsACalendar) {
  inFolder("a.ics", work("1"));
  inFolder("b.ics", "<html>Sign in</html>");
  EXPECT_EQ(run({"import", things()}), ExitStatus::kFailed);
  EXPECT_THAT(err, HasSubstr("b.ics is neither a calendar file nor address cards: it looks like a web page"));
  EXPECT_THAT(out, HasSubstr("1 new"));
}

TEST_F(ImportSources, NeitherFollowsLinksToFoldersNorWaitsForPipesInThem) {
  inFolder("a.ics", work("1"));
  fs::create_directory_symlink("..", folder / "things" / "again");
  ASSERT_EQ(::mkfifo((folder / "things" / "pipe.ics").c_str(), 0600), 0);
  EXPECT_EQ(run({"import", things()}), ExitStatus::kDone) << err;
  EXPECT_THAT(out, Not(HasSubstr("again")));
}

TEST_F(ImportSources, SaysWhenAFolderHasNothing) {
  fs::create_directory(folder / "things");
  EXPECT_EQ(run({"import", things()}), ExitStatus::kFailed);
  EXPECT_THAT(err, HasSubstr("has nothing in it that could be imported"));
  EXPECT_FALSE(hasStore());
}

TEST_F(ImportSources, OpensArchivesWhateverTheyAreCalled) {
  const auto zip = file("calendars.bin", zipped({{"a.ics", work("1")}, {"sub/b.ics", work("2")}, {"note.txt", "x"}}));
  EXPECT_EQ(run({"import", zip}), ExitStatus::kDone) << err;
  EXPECT_THAT(out, AllOf(HasSubstr(zip + "/a.ics: 1 new"), HasSubstr(zip + "/sub/b.ics: 1 new")));
  const auto gz = file("feed", gzipped(work("3")));
  EXPECT_EQ(run({"import", gz}), ExitStatus::kDone) << err;
  EXPECT_THAT(out, HasSubstr(gz + ": 1 new"));
}

TEST_F(ImportSources, NamesTheMemberAndTheLineOfWhatItRefuses) {
  const auto zip = file("a.zip", zipped({{"b.ics", calendar("Work", event("9", "No start", ""))}}));
  EXPECT_EQ(run({"import", zip}), ExitStatus::kFailed);
  EXPECT_THAT(err, AllOf(HasSubstr(zip + "/b.ics:5: refused: “No start”: it has no DTSTART"),
                         HasSubstr("import it again then")));
}

TEST_F(ImportSources, OpensNoArchiveInAnArchive) {
  const auto outer = file("outer.zip", zipped({{"inner.zip", zipped({{"a.ics", work("1")}})}}));
  EXPECT_EQ(run({"import", outer}), ExitStatus::kFailed);
  EXPECT_THAT(err, HasSubstr("outer.zip/inner.zip is an archive in an archive"));
  EXPECT_EQ(run({"import", file("twice.gz", gzipped(gzipped(work("1"))))}), ExitStatus::kFailed);
}

TEST_F(ImportSources, ImportsNothingOfABomb) {
  std::string bomb = "BEGIN:VCALENDAR\r\n" + std::string(std::size_t{32} << 20U, '\n');
  EXPECT_EQ(run({"import", file("bomb.zip", zipped({{"a.ics", work("1")}, {"b.ics", bomb}}))}), ExitStatus::kFailed);
  EXPECT_EQ(run({"import", file("bomb.gz", gzipped(bomb))}), ExitStatus::kFailed);
  EXPECT_FALSE(hasStore());
}

TEST_F(ImportSources, ReadsPipesAndTheStandardInputOfAnyKind) {
  const fs::path pipe = folder / "pipe";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  std::thread writer([&] { std::ofstream(pipe, std::ios::binary) << zipped({{"a.ics", work("1")}}); });
  EXPECT_EQ(run({"import", pipe.string()}), ExitStatus::kDone) << err;
  writer.join();
  EXPECT_THAT(out, HasSubstr("1 new"));
  input = gzipped(work("2"));
  EXPECT_EQ(run({"import", "-"}), ExitStatus::kDone);
  EXPECT_THAT(out, HasSubstr("standard input: 1 new"));
  input = card("ada");
  EXPECT_EQ(run({"import", "-"}), ExitStatus::kDone);
  input = card("ada");
  EXPECT_EQ(run({"import-contacts", "-"}), ExitStatus::kDone);
  EXPECT_THAT(out, HasSubstr("standard input: 0 new, 0 updated, 1 unchanged"));
}

TEST_F(ImportSources, TakesCardsByTheirContent) {
  const auto cards = file("people.txt", card("ada"));
  EXPECT_EQ(run({"import", cards}), ExitStatus::kDone);
  EXPECT_THAT(out, HasSubstr("1 new"));
  EXPECT_EQ(run({"import-contacts", cards}), ExitStatus::kDone);
  EXPECT_THAT(out, HasSubstr("1 unchanged"));
}

TEST_F(ImportSources, RefusesCardsWhereCalendarsAreMeantAndTheOtherWayRound) {
  EXPECT_EQ(run({"import", "--calendar", "Work", file("people.vcf", card("ada"))}), ExitStatus::kFailed);
  EXPECT_THAT(err, HasSubstr("is no calendar file: it looks like address cards (vCard)"));
  EXPECT_EQ(run({"import-contacts", file("a.ics", work("1"))}), ExitStatus::kFailed);
  EXPECT_THAT(err, HasSubstr("is no file of address cards: it looks like a calendar file; `orlocal import` takes it"));
}

TEST_F(ImportSources, RefusesWhatIsNoCalendarAndMakesNoStore) {
  EXPECT_EQ(run({"import", file("a.ics", "%PDF-1.7")}), ExitStatus::kFailed);
  EXPECT_THAT(err, HasSubstr("a.ics is neither a calendar file nor address cards: it looks like a PDF document"));
  EXPECT_EQ(run({"import", file("a.ics", "")}), ExitStatus::kFailed);
  EXPECT_THAT(err, HasSubstr("an empty file"));
  EXPECT_EQ(out, "");
  EXPECT_FALSE(hasStore());
}

TEST_F(ImportSources, TriesWithoutWriting) {
  const auto path = file("a.ics", calendar("Work", meeting("1") + meeting("2", "Lunch")));
  EXPECT_EQ(run({"import", "--dry-run", path}), ExitStatus::kDone);
  EXPECT_EQ(out, "  new      “Review” on 2026-11-02\n  new      “Lunch” on 2026-11-02\n" + path +
                     ": 2 new, 0 updated, 0 unchanged, 0 refused (nothing was written)\n");
  EXPECT_FALSE(hasStore());
  imported(calendar("Work", meeting("1")));
  EXPECT_EQ(run({"import", "--dry-run", "--json", path}), ExitStatus::kDone);
  const auto json = nlohmann::json::parse(out);
  EXPECT_EQ(json[0]["new"], 1);
  EXPECT_EQ(json[0]["items"][0]["outcome"], "unchanged");
  EXPECT_EQ(json[0]["items"][1]["outcome"], "new");
  EXPECT_THAT(agendaTitles(), Not(HasSubstr("Lunch")));
  EXPECT_EQ(run({"import", "--dry-run", file("people.vcf", card("ada"))}), ExitStatus::kDone);
  run({"import", file("people.vcf", card("ada"))});
  EXPECT_THAT(out, HasSubstr("1 new"));
}

TEST_F(ImportSources, PrunesTheCalendarNamed) {
  imported(calendar("Work", meeting("1") + meeting("2", "Lunch")));
  imported(calendar("Family", meeting("3", "Piano")));
  const auto path = file("a.ics", calendar("Work", meeting("1")));
  EXPECT_EQ(run({"import", "--prune", "--calendar", "Work", "--dry-run", path}), ExitStatus::kDone);
  EXPECT_THAT(out, EndsWith("  removed  “Lunch” on 2026-11-02\nremoved: 1\n"));
  EXPECT_THAT(agendaTitles(), HasSubstr("Lunch"));
  EXPECT_EQ(run({"import", "--prune", "--calendar", "Work", path}), ExitStatus::kDone);
  EXPECT_THAT(out, EndsWith("removed: 1\n"));
  EXPECT_THAT(agendaTitles(), AllOf(Not(HasSubstr("Lunch")), HasSubstr("Review"), HasSubstr("Piano")));
}

TEST_F(ImportSources, PrunesWhatNoneOfSeveralFilesHas) {
  imported(calendar("Work", meeting("1") + meeting("2", "Lunch") + meeting("3", "Gone")));
  inFolder("a.ics", calendar("", meeting("1")));
  inFolder("b.ics", calendar("", meeting("2", "Lunch")));
  EXPECT_EQ(run({"import", "--prune", "--calendar", "Work", things()}), ExitStatus::kDone) << err;
  EXPECT_THAT(out, EndsWith("removed: 1\n"));
  EXPECT_THAT(agendaTitles(), AllOf(HasSubstr("Lunch"), Not(HasSubstr("Gone"))));
}

TEST_F(ImportSources, PrunesNothingWhenNotAllCouldBeRead) {
  imported(calendar("Work", meeting("1") + meeting("2", "Lunch")));
  const std::string cut = "BEGIN:VCALENDAR\r\n" + meeting("1");
  EXPECT_EQ(run({"import", "--prune", "--calendar", "Work", file("cut.ics", cut)}), ExitStatus::kFailed);
  EXPECT_THAT(err, HasSubstr("so nothing was removed"));
  EXPECT_EQ(run({"import", "--prune", "--calendar", "Work", file("a.ics", work("1")), (folder / "missing").string()}),
            ExitStatus::kFailed);
  EXPECT_THAT(agendaTitles(), HasSubstr("Lunch"));
}

TEST_F(ImportSources, KeepsWhenItPrunesWhatItCannotRead) {
  imported(calendar("Work", meeting("1") + meeting("2", "Lunch")));
  EXPECT_EQ(run({"import", "--prune", "--calendar", "Work",
                 file("a.ics", calendar("Work", meeting("1") + event("2", "Lunch", "")))}),
            ExitStatus::kFailed);
  EXPECT_THAT(agendaTitles(), HasSubstr("Lunch"));
}

TEST_F(ImportSources, WantsACalendarToPrune) {
  EXPECT_EQ(run({"import", "--prune", file("a.ics", work("1"))}), ExitStatus::kUsage);
  EXPECT_THAT(err, HasSubstr("--prune needs --calendar TITLE"));
  EXPECT_EQ(run({"import", "--keep", file("a.ics", work("1"))}), ExitStatus::kUsage);
}

TEST_F(ImportSources, MakesASubscriptionWhatItsFileHolds) {
  const auto both = file("feed.ics", calendar("Feed", meeting("1") + meeting("2", "Lunch")));
  ASSERT_EQ(run({"import", "--subscription", both}), ExitStatus::kDone);
  const auto one = file("feed.ics", calendar("Feed", meeting("1")));
  EXPECT_EQ(run({"import", "--subscription", "--keep", one}), ExitStatus::kDone);
  EXPECT_THAT(agendaTitles(), HasSubstr("Lunch"));
  EXPECT_EQ(run({"import", "--subscription", one}), ExitStatus::kDone);
  EXPECT_THAT(out, EndsWith("removed: 1\n"));
  EXPECT_THAT(agendaTitles(), Not(HasSubstr("Lunch")));
  run({"import", "--subscription", file("feed.ics", calendar("Feed", ""))});
  EXPECT_THAT(out, EndsWith("removed: 1\n"));
}

TEST_F(ImportSources, LeavesCalendarsThatAreNoSubscriptionsAlone) {
  imported(calendar("Work", meeting("1") + meeting("2", "Lunch")));
  EXPECT_EQ(run({"import", "--subscription", file("feed.ics", calendar("Work", meeting("1")))}), ExitStatus::kDone);
  EXPECT_THAT(out, EndsWith("removed: 0\n"));
  EXPECT_THAT(agendaTitles(), HasSubstr("Lunch"));
}

}  // namespace
}  // namespace orlocal::host
