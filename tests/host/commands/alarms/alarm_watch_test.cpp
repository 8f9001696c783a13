#include <cstdlib>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <poll.h>
#include <sys/stat.h>

#include "host/commands/program_fixture.h"
#include "host/commands/running_program.h"
#include "store/alarm_book.h"
#include "store/edits/edited_items.h"
#include "store/time/clock.h"

namespace orlocal::host {
namespace {

using ::testing::HasSubstr;

/// `orlocal watch --alarms` in processes of their own, by the system's clock.
class AlarmWatch : public ProgramTest {
 protected:
  AlarmWatch() : m_now(std::getenv("ORLOCAL_NOW")) {
    ::unsetenv("ORLOCAL_NOW");
    ::setenv("ORLOCAL_STORE", (folder / "calendar.db").c_str(), 1);
    store::StoreOptions options;
    options.file = folder / "calendar.db";
    options.viewer = store::Zone::ofUser();
    store = store::CalendarStore::open(std::move(options)).value();
  }
  ~AlarmWatch() override { ::setenv("ORLOCAL_NOW", m_now.c_str(), 1); }

  std::unique_ptr<RunningProgram> watching(std::vector<std::string> words = {}) {
    words.insert(words.begin(), {program, "watch", "--alarms"});
    auto running = std::make_unique<RunningProgram>(words);
    EXPECT_THAT(running->errorLine(), HasSubstr("watching for alarms; Ctrl-C ends it"));
    return running;
  }
  /// With an alarm so soon that it is ahead when it is saved.
  store::Item soon(const std::string& title) {
    store::Item item;
    item.calendar = store->defaultCalendar(store::CalendarKind::kEvents).value()->id;
    item.title = title;
    const auto utc = [](std::chrono::system_clock::time_point moment) {
      const auto whole = std::chrono::ceil<std::chrono::seconds>(moment);
      return store::CalendarTime{store::CalendarTime::Kind::kUtc,
                                 store::LocalTime(1970, 1, 1, 0, 0, 0) + whole.time_since_epoch().count(), ""};
    };
    const auto rings = std::chrono::system_clock::now() + std::chrono::seconds(2);
    item.start = utc(rings + std::chrono::hours(1));
    item.end = utc(rings + std::chrono::hours(2));
    store::Alarm alarm;
    alarm.trigger = store::AlarmOffset{-std::chrono::hours(1), false};
    item.alarms = {alarm};
    const auto saved = saveEvent(*store, item, std::nullopt, store::Span::kThis);
    EXPECT_TRUE(saved) << saved.error().message;
    return item;
  }

  const std::string m_now;
  std::unique_ptr<store::CalendarStore> store;
};

TEST_F(AlarmWatch, RingsWhatIsAddedWhileItSleepsAndEndsWell) {
  const auto watch = watching();
  const auto item = soon("Sudden");
  const std::string line = watch->line();
  EXPECT_THAT(line, HasSubstr("  Sudden  "));
  EXPECT_THAT(line, HasSubstr(item.identifier));
  watch->signal(SIGTERM);
  EXPECT_EQ(watch->finish(), 0);
}

TEST_F(AlarmWatch, RingsOnceThoughTwoWatch) {
  const auto one = watching({"--json"});
  const auto other = watching({"--json"});
  soon("First");
  soon("Second");
  // Who ends has told all that it has claimed.
  const auto signal = store->listen().value();
  while (store::AlarmBook(*store).records()->size() < 2) {
    pollfd changed{.fd = signal->descriptor(), .events = POLLIN, .revents = 0};
    ASSERT_GT(::poll(&changed, 1, 30'000), 0);
    signal->drain();
  }
  std::vector<std::string> told;
  for (RunningProgram* watch : {one.get(), other.get()}) {
    watch->signal(SIGTERM);
    for (std::string line; !(line = watch->line()).empty();) { told.push_back(nlohmann::json::parse(line)["title"]); }
    EXPECT_EQ(watch->finish(), 0);
  }
  EXPECT_THAT(told, testing::UnorderedElementsAre("First", "Second"));
}

TEST_F(AlarmWatch, RingsOthersWhileACommandHangs) {
  const auto gate = folder / "gate";
  ASSERT_EQ(::mkfifo(gate.c_str(), 0600), 0);
  const auto watch = watching({"--", "sh", "-c",
                               "if [ \"$ORLOCAL_ALARM_TITLE\" = Slow ]; then read x < '" + gate.string() +
                                   "'; else echo \"$ORLOCAL_ALARM_TITLE\"; fi"});
  soon("Slow");
  soon("Quick");
  EXPECT_EQ(watch->line(), "Quick");
  watch->signal(SIGTERM);
  // The other may not have ended either.
  EXPECT_THAT(watch->errorLine(), HasSubstr("of the commands still run"));
  EXPECT_EQ(watch->finish(), 0);
  // Lets the one that hangs go.
  ::close(::open(gate.c_str(), O_RDWR | O_CLOEXEC | O_NONBLOCK));
}

TEST_F(AlarmWatch, GoesOnAfterACommandThatFails) {
  const auto watch = watching({"--", "false"});
  soon("One");
  EXPECT_THAT(watch->errorLine(), HasSubstr("false ended with status 1 (One"));
  soon("Two");
  EXPECT_THAT(watch->errorLine(), HasSubstr("false ended with status 1 (Two"));
}

}  // namespace
}  // namespace orlocal::host
