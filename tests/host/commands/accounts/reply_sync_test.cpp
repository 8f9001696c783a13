#include "host/commands/accounts/account_fixture.h"

namespace orlocal::host {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class ReplySync : public AccountCommand {
 protected:
  ReplySync() {
    ::setenv("ORLOCAL_SETTINGS", file("settings", "[person]\naddresses = grace@example.org\n").c_str(), 1);
  }
  ~ReplySync() override { ::setenv("ORLOCAL_SETTINGS", "", 1); }

  static std::string unfolded(std::string text) {
    for (std::size_t fold; (fold = text.find("\r\n ")) != std::string::npos;) { text.erase(fold, 3); }
    return text;
  }
  static std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(unfolded(text));
    for (std::string line; std::getline(in, line);) { lines.push_back(line.substr(0, line.find('\r'))); }
    return lines;
  }
  std::string onServer() { return server.content().calendarAt(team).items.begin()->second.text; }
};

TEST_F(ReplySync, SendsNothingButOnesOwnAnswer) {
  const std::string invitation =
      calendar("", event("invited", "Review",
                         "SEQUENCE:2\r\nDTSTART:20261104T090000Z\r\nDTEND:20261104T100000Z\r\nX-KEPT:as it is\r\n"
                         "ORGANIZER;CN=Ada:mailto:ada@example.org\r\n"
                         "ATTENDEE;PARTSTAT=NEEDS-ACTION;RSVP=TRUE;X-NUM-GUESTS=0:mailto:grace@example.org\r\n"
                         "ATTENDEE;PARTSTAT=TENTATIVE:mailto:tom@example.org\r\n"));
  server.content().putAs(team + "invited.ics", invitation);
  added("Work");
  synced();
  ASSERT_EQ(run({"reply", "Review", "--accept"}), ExitStatus::kDone) << err;
  synced();
  EXPECT_THAT(out, HasSubstr("1 sent"));
  std::vector<std::string> differing;
  const auto before = linesOf(invitation), after = linesOf(onServer());
  for (const std::string& line : after) {
    if (std::find(before.begin(), before.end(), line) == before.end()) { differing.push_back(line); }
  }
  EXPECT_EQ(after.size(), before.size()) << onServer();
  EXPECT_THAT(differing, ElementsAre(HasSubstr("PARTSTAT=ACCEPTED"))) << onServer();
}

}  // namespace
}  // namespace orlocal::host
