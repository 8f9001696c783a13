#include <nlohmann/json.hpp>

#include "host/commands/store_command_fixture.h"

namespace orlocal::host {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

class ReplyCommand : public StoreCommand {
 protected:
  ReplyCommand() { iAm("grace@example.org, g.h@example.net"); }
  ~ReplyCommand() override { ::setenv("ORLOCAL_SETTINGS", "", 1); }

  void iAm(const std::string& addresses) {
    ::setenv("ORLOCAL_SETTINGS", file("settings", "[person]\naddresses = " + addresses + "\n").c_str(), 1);
  }
  static std::string invitation(const std::string& uid, const std::string& title, const std::string& lines,
                                const std::string& who = "grace@example.org") {
    return event(uid, title,
                 "SEQUENCE:1\r\nORGANIZER;CN=Ada:mailto:ada@example.org\r\n"
                 "ATTENDEE;PARTSTAT=NEEDS-ACTION:mailto:" +
                     who + "\r\n" + lines);
  }
  void invited() {
    imported(calendar(
        "Work", invitation("1", "Review", "DTSTART:20261103T090000\r\nDTEND:20261103T100000\r\n") +
                    invitation("2", "Weekly", "DTSTART:20261005T090000\r\nRRULE:FREQ=WEEKLY\r\n", "g.h@example.net") +
                    invitation("3", "Past", "DTSTART:20261001T090000\r\nDTEND:20261001T100000\r\n") +
                    invitation("4", "Of others", "DTSTART:20261103T090000\r\n", "tom@example.org") +
                    event("5", "Mine", "DTSTART:20261103T120000\r\n")));
  }
};

TEST_F(ReplyCommand, ListsWhatWaitsForAnAnswer) {
  invited();
  EXPECT_EQ(run({"reply"}), ExitStatus::kDone) << err;
  EXPECT_THAT(out, AllOf(HasSubstr("  Mon 2 Nov 2026 09:00  Weekly, from Ada\n"),
                         HasSubstr("  Tue 3 Nov 2026 09:00  Review, from Ada\n"), Not(HasSubstr("Past")),
                         Not(HasSubstr("Of others")), Not(HasSubstr("Mine"))));
  EXPECT_EQ(run({"reply", "--json"}), ExitStatus::kDone);
  const auto json = nlohmann::json::parse(out);
  ASSERT_EQ(json.size(), 2U);
  EXPECT_EQ(json[1]["title"], "Review");
  EXPECT_EQ(json[1]["organizer"], "mailto:ada@example.org");
  EXPECT_EQ(json[0]["repeats"], true);
}

TEST_F(ReplyCommand, SaysWhenNothingWaits) {
  makeStore();
  EXPECT_EQ(run({"reply"}), ExitStatus::kDone);
  EXPECT_EQ(out, "No invitation waits for an answer.\n");
}

TEST_F(ReplyCommand, WritesTheAnswerAndKeepsIt) {
  invited();
  EXPECT_EQ(run({"reply", "Review", "--accept", "--comment", "With pleasure"}), ExitStatus::kDone) << err;
  EXPECT_THAT(out, AllOf(HasSubstr("METHOD:REPLY\r\n"), HasSubstr("PARTSTAT=ACCEPTED:mailto:grace@example.org\r\n"),
                         HasSubstr("COMMENT:With pleasure\r\n")));
  run({"reply"});
  EXPECT_THAT(out, Not(HasSubstr("Review")));
  run({"export", "--calendar", "Work"});
  EXPECT_THAT(out, HasSubstr("PARTSTAT=ACCEPTED;ROLE=REQ-PARTICIPANT:mailto:grace@example.org"));
}

TEST_F(ReplyCommand, WritesAFile) {
  invited();
  const auto path = (folder / "reply.ics").string();
  EXPECT_EQ(run({"reply", "Review", "--tentative", "-o", path}), ExitStatus::kDone);
  EXPECT_EQ(out, path + ": send it to Ada\n");
  EXPECT_THAT(textOf(path), HasSubstr("PARTSTAT=TENTATIVE"));
}

TEST_F(ReplyCommand, KeepsNoAnswerThatCannotBeWritten) {
  invited();
  EXPECT_EQ(run({"reply", "Review", "--accept", "-o", (folder / "missing" / "reply.ics").string()}),
            ExitStatus::kFailed);
  run({"reply"});
  EXPECT_THAT(out, HasSubstr("Review"));
}

TEST_F(ReplyCommand, AnswersForOneDay) {
  invited();
  EXPECT_EQ(run({"reply", "Weekly", "--decline", "--occurrence", "2026-11-09"}), ExitStatus::kDone) << err;
  EXPECT_THAT(out, AllOf(HasSubstr("RECURRENCE-ID:20261109T090000\r\n"), HasSubstr("PARTSTAT=DECLINED")));
  run({"reply"});
  EXPECT_THAT(out, HasSubstr("Weekly"));
  EXPECT_EQ(run({"reply", "Weekly", "--decline", "--occurrence", "2026-11-10"}), ExitStatus::kFailed);
}

TEST_F(ReplyCommand, NeedsToKnowWhoIsAsking) {
  ::setenv("ORLOCAL_SETTINGS", "", 1);
  makeStore();
  for (const auto& words : std::vector<std::vector<std::string>>{{"reply"}, {"reply", "Review", "--accept"}}) {
    EXPECT_EQ(run(words), ExitStatus::kFailed);
    EXPECT_THAT(err, AllOf(HasSubstr("[person]"), HasSubstr("addresses")));
  }
}

TEST_F(ReplyCommand, RefusesWhatInvitesNobodyOrOthers) {
  invited();
  EXPECT_EQ(run({"reply", "Mine", "--accept"}), ExitStatus::kFailed);
  EXPECT_THAT(err, HasSubstr("\"Mine\" does not invite grace@example.org or your other addresses"));
  EXPECT_EQ(run({"reply", "Of others", "--accept"}), ExitStatus::kFailed);
}

TEST_F(ReplyCommand, WantsBothAnAnswerAndWhatIsAnswered) {
  makeStore();
  EXPECT_EQ(run({"reply", "Review"}), ExitStatus::kUsage);
  EXPECT_THAT(err, HasSubstr("--accept, --decline or --tentative"));
  EXPECT_EQ(run({"reply", "--accept"}), ExitStatus::kUsage);
  EXPECT_EQ(run({"reply", "Review", "--accept", "--decline"}), ExitStatus::kUsage);
}

TEST_F(ReplyCommand, MakesNoStore) {
  EXPECT_EQ(run({"reply"}), ExitStatus::kFailed);
  EXPECT_FALSE(std::filesystem::exists(folder / "calendar.db"));
}

}  // namespace
}  // namespace orlocal::host
