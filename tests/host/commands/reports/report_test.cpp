#include <pugixml.hpp>

#include "host/commands/store_command_fixture.h"

namespace orlocal::host {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class ReportCommand : public StoreCommand {
 protected:
  /// Writes the page; it is XML, too.
  void made(std::vector<std::string> words) {
    words.insert(words.begin(), "report");
    words.insert(words.end(), {"--html", "-"});
    ASSERT_EQ(run(words), ExitStatus::kDone) << err;
    const std::string doctype = "<!doctype html>\n";
    ASSERT_THAT(out, StartsWith(doctype));
    out.erase(0, doctype.size());
    const auto parsed = page.load_string(out.c_str());
    ASSERT_TRUE(parsed) << parsed.description() << " at " << out.substr(static_cast<std::size_t>(parsed.offset), 80);
  }
  /// The texts of what an expression (XPath) finds.
  std::vector<std::string> texts(const char* path) {
    std::vector<std::string> all;
    for (const auto& node : page.select_nodes(path)) { all.emplace_back(node.node().text().get()); }
    return all;
  }
  std::size_t count(const char* path) { return page.select_nodes(path).size(); }

  pugi::xml_document page;
};

const std::string kTimes = "DTSTART;TZID=Europe/Berlin:20261103T090000\r\nDTEND;TZID=Europe/Berlin:20261103T100000\r\n";

TEST_F(ReportCommand, ShowsTheMonthAndItsWeeks) {
  imported(calendar("Work", event("1", "Lunch", kTimes)));
  made({"november"});
  EXPECT_THAT(
      texts("//h2"),
      testing::ElementsAre("November 2026", "Week 44: Mon 26 Oct 2026 – Sun 1 Nov 2026",
                           "Week 45: Mon 2 Nov 2026 – Sun 8 Nov 2026", "Week 46: Mon 9 Nov 2026 – Sun 15 Nov 2026",
                           "Week 47: Mon 16 Nov 2026 – Sun 22 Nov 2026", "Week 48: Mon 23 Nov 2026 – Sun 29 Nov 2026",
                           "Week 49: Mon 30 Nov 2026 – Sun 6 Dec 2026"));
  EXPECT_EQ(count("//table/tbody/tr"), 6U);
  EXPECT_EQ(count("//td[time/@datetime='2026-11-03']//span[.='Lunch']"), 1U);
  EXPECT_EQ(count("//section[h3/time/@datetime='2026-11-03']//span[.='Lunch']"), 1U);
  EXPECT_EQ(count("//td[contains(@class,'today')]"), 1U);
  // Where the columns fall away, the day says its name itself.
  EXPECT_EQ(count("//td[time/@datetime='2026-11-03'][span[@class='name']='Tue ']"), 1U);
}

TEST_F(ReportCommand, IsTitledByItsDays) {
  imported(calendar("Work", event("1", "Lunch", kTimes)));
  made({"november"});
  EXPECT_THAT(texts("//title"), testing::ElementsAre("Calendar: November 2026"));
  made({"2026-11-03"});
  EXPECT_THAT(texts("//title"), testing::ElementsAre("Calendar: Tue 3 Nov 2026"));
  made({"--from", "2026-11-03", "--to", "2026-11-04"});
  EXPECT_THAT(texts("//title"), testing::ElementsAre("Calendar: Tue 3 Nov 2026 – Wed 4 Nov 2026"));
}

TEST_F(ReportCommand, HasWhatIsKnownOfAnEntryBehindIt) {
  imported(calendar("Work", event("1", "Lunch",
                                  kTimes + "LOCATION:Luigi's\r\nDESCRIPTION:One\\nTwo\r\n"
                                           "URL:https://example.org/?a=1&b=2\r\n"
                                           "RRULE:FREQ=DAILY;COUNT=2\r\n")));
  made({"2026-11-03"});
  const std::string card = "//td[time/@datetime='2026-11-03']//details/dl";
  EXPECT_EQ(texts((card + "/dt[.='Place']/following-sibling::dd[1]").c_str()), std::vector<std::string>{"Luigi's"});
  EXPECT_EQ(texts((card + "/dt[.='Notes']/following-sibling::dd[1]").c_str()), std::vector<std::string>{"One\nTwo"});
  EXPECT_EQ(count((card + "//a[@href='https://example.org/?a=1&b=2']").c_str()), 1U);
  EXPECT_THAT(texts((card + "/dt[.='Repeats']/following-sibling::dd[1]").c_str()),
              testing::ElementsAre("every day, 2 times"));
  EXPECT_EQ(count((card + "/dt[.='Identifier' or .='UID']").c_str()), 0U) << "of use to programs only";
}

TEST_F(ReportCommand, TakesNothingInACalendarForItsOwn) {
  imported(calendar("<b>Work</b>", event("1", "<script>alert('\"')</script>&amp;",
                                         kTimes + "URL:javascript:alert(1)\r\nLOCATION:\u202Eevil\r\n")));
  made({"november"});
  EXPECT_EQ(count("//script"), 0U);
  EXPECT_EQ(count("//b"), 0U);
  EXPECT_EQ(count("//dl//a"), 0U);
  EXPECT_EQ(count("//td//span[.=\"<script>alert('&quot;')</script>&amp;\"]") +
                count("//td//span[starts-with(.,'<script>alert(')]"),
            1U);
  EXPECT_THAT(out, Not(HasSubstr("\u202e")));
}

TEST_F(ReportCommand, FetchesNothingAndRunsNothing) {
  imported(calendar("Work", event("1", "Lunch", kTimes)));
  made({"november"});
  EXPECT_THAT(out, HasSubstr("default-src 'none'"));
  for (const char* path : {"//script", "//link", "//img", "//iframe", "//@src", "//@onclick"}) {
    EXPECT_EQ(count(path), 0U) << path;
  }
  EXPECT_THAT(out, Not(HasSubstr("url(")));
}

TEST_F(ReportCommand, DrawsWholeDaysAsBarsAndSaysWhatIsCancelled) {
  imported(calendar("Work", event("1", "Fair", "DTSTART;VALUE=DATE:20261103\r\nDTEND;VALUE=DATE:20261106\r\n") +
                                event("2", "Review", kTimes + "STATUS:CANCELLED\r\n")));
  made({"november"});
  EXPECT_EQ(count("//td//li[contains(@class,'bar')]"), 3U);
  EXPECT_EQ(count("//td//li[contains(@class,'cancelled')]//summary[contains(.,'(cancelled)')]"), 1U);
}

TEST_F(ReportCommand, IsATableForSpreadsheets) {
  imported(calendar("Work", event("1", "Lunch, with \"Tom\"", kTimes + "DESCRIPTION:One\\nTwo\r\n") +
                                event("2", "Fair", "DTSTART;VALUE=DATE:20261103\r\nDTEND;VALUE=DATE:20261106\r\n")));
  ASSERT_EQ(run({"report", "november", "--csv", "-"}), ExitStatus::kDone) << err;
  EXPECT_THAT(out, StartsWith("Kind,Title,Start,End,All day,Calendar,Location,Status,URL,Notes,Identifier\r\n"
                              "event,Fair,2026-11-03,2026-11-05,yes,Work,\"\",\"\",\"\",\"\","));
  EXPECT_THAT(out, HasSubstr("event,\"Lunch, with \"\"Tom\"\"\",2026-11-03 09:00,2026-11-03 10:00,no,Work,\"\",\"\","
                             "\"\",\"One\nTwo\","));
}

TEST_F(ReportCommand, IsACalendarFileOfTheSameSelection) {
  imported(calendar("Work", event("1", "Lunch", kTimes + "RRULE:FREQ=DAILY;COUNT=2\r\n") +
                                event("2", "Later", "DTSTART:20270103T090000Z\r\n")));
  ASSERT_EQ(run({"report", "november", "--ics", "-"}), ExitStatus::kDone) << err;
  EXPECT_THAT(out, HasSubstr("SUMMARY:Lunch"));
  EXPECT_THAT(out, HasSubstr("RRULE:FREQ=DAILY;COUNT=2"));
  EXPECT_THAT(out, Not(HasSubstr("SUMMARY:Later")));
}

TEST_F(ReportCommand, WantsToKnowWhatToWrite) {
  imported(calendar("Work", event("1", "Lunch", kTimes)));
  EXPECT_EQ(run({"report"}), ExitStatus::kUsage);
  EXPECT_THAT(err, HasSubstr("--html FILE"));
  EXPECT_EQ(run({"report", "--from", "2026-11-05", "--to", "2026-11-04", "--csv", "-"}), ExitStatus::kUsage);
}

}  // namespace
}  // namespace orlocal::host
