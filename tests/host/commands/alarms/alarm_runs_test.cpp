#include "host/commands/alarms/alarm_runs.h"

#include <fstream>
#include <sstream>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include "store/store_fixture.h"

namespace orlocal::host {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;

class RunsForAlarms : public store::StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    store::Item item = plain("Talk");
    item.notes = "Bring \"drawings\" & tea";
    item.alarms = {store::Alarm()};
    item = saved(item);
    news.item = std::make_shared<const store::Item>(item);
    news.ring.row = news.ring.key.item = item.id;
    news.rings = news.ring.key.moment = store::at("2026-11-02 08:45");
    news.ring.start = store::at("2026-11-02 09:00");
    news.ring.end = store::at("2026-11-02 10:00");
    news.state = AlarmState::kRung;
    news.calendars = std::make_shared<const CalendarNames>(*CalendarNames::of(*store));
  }
  std::unique_ptr<AlarmRuns> make(std::vector<std::string> command, const AlarmRuns::Limits& limits = {}) {
    return *AlarmRuns::make(std::move(command), store::berlinZone(), err, limits);
  }
  std::unique_ptr<AlarmRuns> makeShell(const std::string& script, const AlarmRuns::Limits& limits = {}) {
    return make({"sh", "-c", script, "sh", "{}", (folder / "out").string()}, limits);
  }
  static void finish(AlarmRuns& runs) {
    while (runs.running() > 0) {
      pollfd ready{.fd = runs.descriptor(), .events = POLLIN, .revents = 0};
      ASSERT_EQ(::poll(&ready, 1, 30'000), 1) << "nothing ends";
      runs.collect();
    }
  }
  std::string written() const {
    std::ifstream in(folder / "out");
    return std::string(std::istreambuf_iterator<char>(in), {});
  }

  AlarmNews news;
  std::ostringstream err;
};

TEST_F(RunsForAlarms, AreToldAllThatIsKnown) {
  const auto runs = makeShell(R"sh({ echo "$1"; env | grep ^ORLOCAL_ALARM_; cat; } > "$2")sh");
  runs->tell(news);
  finish(*runs);
  const std::string text = written();
  EXPECT_TRUE(text.starts_with(news.identifier() + "\n")) << text;
  EXPECT_THAT(text, AllOf(HasSubstr("\nORLOCAL_ALARM_TITLE=Talk\n"),
                          HasSubstr("\nORLOCAL_ALARM_RINGS=2026-11-02T08:45:00+01:00\n"),
                          HasSubstr("\nORLOCAL_ALARM_START=2026-11-02T09:00:00+01:00\n"),
                          HasSubstr("\nORLOCAL_ALARM_CALENDAR=Calendar\n"), HasSubstr("\nORLOCAL_ALARM_LOCATION=\n"),
                          HasSubstr("\nORLOCAL_ALARM_NOTES=Bring \"drawings\" & tea\n")));
  const auto json = nlohmann::json::parse(text.substr(text.rfind("\n{") + 1));
  EXPECT_EQ(json["notes"], "Bring \"drawings\" & tea");
  EXPECT_EQ(json["identifier"], news.identifier());
  EXPECT_THAT(err.str(), IsEmpty());
}

TEST_F(RunsForAlarms, AreNotReadByAShell) {
  const auto runs = make({"cp", "--", "$HOME", "{}"});
  runs->tell(news);
  finish(*runs);
  EXPECT_THAT(err.str(), HasSubstr("cp ended with status 1 (Talk, Mon 2 Nov 2026 09:00, in Calendar)"));
  EXPECT_TRUE(runs->anyFailed());
}

TEST_F(RunsForAlarms, TellOfACommandThatIsNotThere) {
  const auto runs = make({"there-is-no-such-program"});
  runs->tell(news);
  EXPECT_EQ(runs->running(), 0U);
  EXPECT_THAT(err.str(), HasSubstr("there-is-no-such-program cannot be run: No such file or directory"));
}

TEST_F(RunsForAlarms, DoNotWaitForEachOther) {
  const auto gate = folder / "gate";
  ASSERT_EQ(::mkfifo(gate.c_str(), 0600), 0);
  const int opened = ::open(gate.c_str(), O_RDWR | O_CLOEXEC);
  const auto runs = makeShell("read x < '" + gate.string() + "'; echo through >> \"$2\"", {.atOnce = 2});
  runs->tell(news);
  EXPECT_EQ(runs->room(), 1U);
  runs->tell(news);
  EXPECT_EQ(runs->room(), 0U);
  // A line for each.
  ASSERT_EQ(::write(opened, "\n\n", 2), 2);
  finish(*runs);
  ::close(opened);
  EXPECT_EQ(runs->room(), 2U);
  EXPECT_EQ(written(), "through\nthrough\n");
}

TEST_F(RunsForAlarms, EndWhenTheyTakeTooLong) {
  const auto runs = make({"sleep", "600"}, {.longest = std::chrono::seconds(0)});
  runs->tell(news);
  finish(*runs);
  EXPECT_THAT(err.str(), AllOf(HasSubstr("sleep took more than 0 s and is ended (Talk"),
                               HasSubstr("sleep was ended by signal 15")));
}

TEST_F(RunsForAlarms, EndThoughTheyDoNotWantTo) {
  const auto runs = makeShell("trap '' TERM; : > \"$2\"; while :; do sleep 0.05; done",
                              {.longest = std::chrono::seconds(1), .toEnd = std::chrono::seconds(0)});
  runs->tell(news);
  finish(*runs);
  EXPECT_THAT(err.str(), HasSubstr("sh was ended by signal 9"));
}

}  // namespace
}  // namespace orlocal::host
