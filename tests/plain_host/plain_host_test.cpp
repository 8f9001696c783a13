#include "plain_host/plain_host_fixture.h"

// What a plain C host meets beside stores that break: answers that are too large, items that are, a store that is
// damaged while an answer is walked, and the exceptions that callers of the functions rely on.

namespace orlocal::host {
namespace {

using ::testing::HasSubstr;

constexpr const char* kCurrent = "15";
constexpr const char* kOlder = "7";

const HostProcess::Answer kDone{"0", "0"};
HostProcess::Answer failed(const char* code) { return {"!!ERROR!!", code}; }

class OnBothBackEnds : public PlainHost, public testing::WithParamInterface<const char*> {
 protected:
  std::unique_ptr<HostProcess> working() const { return host(GetParam()); }
  bool isCurrent() const { return GetParam() == std::string_view(kCurrent); }
};

std::string event(const std::string& uid, const std::string& lines) {
  return "BEGIN:VEVENT\r\nUID:" + uid + "@example.org\r\nDTSTAMP:20261001T080000Z\r\n" + lines + "END:VEVENT\r\n";
}
std::string calendar(const std::string& items) {
  return "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Orlocal//Tests//EN\r\n" + items + "END:VCALENDAR\r\n";
}

/// Each minute of ten years: more occurrences than one query answers with.
std::string everyMinute() {
  return calendar(event("minutes", "DTSTART:20260101T000000Z\r\nRRULE:FREQ=MINUTELY\r\nSUMMARY:Each minute\r\n"));
}

TEST_P(OnBothBackEnds, AnAnswerPastTheBudgetIsNoneAndSaysSo) {
  makeStore();
  const auto host = working();
  ASSERT_EQ(host->call("Orlo_EventsFetch\t2026-01-01\t2036-01-01\t\t"), kDone);
  import(everyMinute());
  EXPECT_EQ(host->call("Orlo_OpenItemAt\tevent\t1"), failed("9002"));
  EXPECT_EQ(host->call("Orlo_EventsFetch\t2026-01-01\t2036-01-01\t\t"), failed("9003"));
  EXPECT_EQ(host->call("Orlo_GetItemCountForType\tevent"), failed(isCurrent() ? "9054" : "9000"));
  EXPECT_EQ(host->call("Orlo_EventsFetch\t2026-01-01\t2026-01-02\t\t"), kDone);
  EXPECT_TRUE(host->finish());
  EXPECT_THAT(host->log(), HasSubstr("Each minute"));
}

TEST_P(OnBothBackEnds, PagesThatAreDamagedWhileAnAnswerIsWalkedHideTheirEventsAlone) {
  makeStore();
  // More than memory keeps of the file.
  constexpr int kEvents = 800;
  const std::string notes(30'000, 'n');
  std::string items;
  for (int i = 0; i < kEvents; ++i) {
    items +=
        event("long" + std::to_string(i), "DTSTART:20270101T080000Z\r\nSUMMARY:Long\r\nDESCRIPTION:" + notes + "\r\n");
  }
  import(calendar(items));
  const auto host = working();
  ASSERT_EQ(host->call("Orlo_EventsFetch\t2027-01-01\t2027-02-01\t\t"), kDone);
  ASSERT_EQ(host->call("Orlo_GetItemCountForType\tevent"), (HostProcess::Answer{std::to_string(kEvents), "0"}));
  EXPECT_EQ(host->call("Orlo_OpenItemAt\tevent\t1"), kDone);
  const auto size = fs::file_size(store());
  std::fstream(store(), std::ios::in | std::ios::out | std::ios::binary)
      .seekp(static_cast<std::streamoff>(size / 2))
      .write(std::string(size / 2, '\xA5').data(), static_cast<std::streamsize>(size / 2));
  EXPECT_EQ(host->call("Orlo_OpenItemAt\tevent\t2"), kDone);
  EXPECT_EQ(host->call("Orlo_OpenItemAt\tevent\t" + std::to_string(kEvents - 1)), failed("9001"));
  EXPECT_EQ(host->call("Orlo_OpenItemAt\tevent\t3"), kDone);
  EXPECT_TRUE(host->finish());
  EXPECT_THAT(host->log(), HasSubstr("is damaged"));
}

TEST_P(OnBothBackEnds, TheSettingsFileAloneNamesStoreAndScript) {
  makeStore();
  const auto settings = folder / "orlocal.conf";
  write(settings, "[store]\nfile = " + store().string() +
                      "\n[update-script]\nfile = Bookings\nscript = Calendar changed\n[plug-in]\nsystem-minor = " +
                      GetParam() + "\n");
  ::chmod(settings.c_str(), 0644);
  HostProcess host({{"ORLOCAL_SETTINGS", settings}, {"ORLOCAL_STORE", ""}}, folder / "log");
  EXPECT_EQ(host.ask("!idle"), "idle");
  EXPECT_EQ(host.ask("!starts"), "0");
  EXPECT_EQ(host.call("Orlo_GetLastError"), (HostProcess::Answer{"Success", "0"}));
  ASSERT_EQ(host.call("Orlo_EventsFetch\t2026-11-02\t2026-11-03\t\t"), kDone);
  EXPECT_EQ(host.call("Orlo_GetItemCountForType\tevent"), (HostProcess::Answer{"1", "0"}));
  import(calendar(event("new", "DTSTART:20261102T120000Z\r\nSUMMARY:New\r\n")));
  EXPECT_EQ(host.ask("!idle"), "idle");
  EXPECT_EQ(host.ask("!starts"), "1");
  EXPECT_TRUE(host.finish());
  EXPECT_EQ(host.log(), "");
}

INSTANTIATE_TEST_SUITE_P(BackEnds, OnBothBackEnds, testing::Values(kCurrent, kOlder), [](const auto& asked) {
  return asked.param == std::string_view(kCurrent) ? "Current" : "Older";
});

TEST_F(PlainHost, TooMuchTextIsRefusedWithTheCodeOfTheSave) {
  makeStore();
  const std::string tooMuch(std::size_t{17} << 20, 'x');
  const auto working = host(kCurrent);
  ASSERT_EQ(working->call("Orlo_EventsFetch\t2026-11-02\t2026-11-03\t\t"), kDone);
  ASSERT_EQ(working->call("Orlo_OpenItemAt\tevent\t1"), kDone);
  ASSERT_EQ(working->call("Orlo_SetProperty\tevent\tnotes\t" + tooMuch), kDone);
  EXPECT_EQ(working->call("Orlo_SaveItem\tevent"), failed("9018"));
  ASSERT_EQ(working->call("Orlo_RemindersFetch\t\t\t"), kDone);
  ASSERT_EQ(working->call("Orlo_OpenItemAt\treminder\t1"), kDone);
  ASSERT_EQ(working->call("Orlo_SetProperty\treminder\tnotes\t" + tooMuch), kDone);
  EXPECT_EQ(working->call("Orlo_SaveItem\treminder"), failed("9019"));
  EXPECT_TRUE(working->finish());
  EXPECT_THAT(working->log(), HasSubstr("The item \"Review\" would take more than 16 MiB"));
  EXPECT_THAT(working->log(), HasSubstr("The item \"Plants\" would take more than 16 MiB"));
}

TEST_F(PlainHost, TooManyLinesAreRefusedWithTheCodeOfTheSave) {
  makeStore();
  std::string alarms;
  for (int i = 0; i < 19'990; ++i) {
    alarms += "BEGIN:VALARM\r\nACTION:DISPLAY\r\nTRIGGER:-PT1M\r\nDESCRIPTION:Soon\r\nEND:VALARM\r\n";
  }
  import(calendar(event("loud", "DTSTART:20270101T080000Z\r\nSUMMARY:Loud\r\n" + alarms)));
  const auto working = host(kCurrent);
  ASSERT_EQ(working->call("Orlo_EventsFetch\t2027-01-01\t2027-01-02\t\t"), kDone);
  ASSERT_EQ(working->call("Orlo_OpenItemAt\tevent\t1"), kDone);
  EXPECT_EQ(working->call("Orlo_SaveItem\tevent"), kDone);
  for (int i = 0; i < 20; ++i) { ASSERT_EQ(working->call("Orlo_AddAlarm\tevent\t\tdisplay\t\t-60\t"), kDone); }
  EXPECT_EQ(working->call("Orlo_SaveItem\tevent"), failed("9018"));
  EXPECT_TRUE(working->finish());
  EXPECT_THAT(working->log(), HasSubstr("100000 lines"));
}

TEST_F(PlainHost, RemovingAlarmsWithMinusOneEndsAHostThatCatchesNothing) {
  makeStore();
  const auto working = host(kCurrent);
  ASSERT_EQ(working->call("Orlo_EventsFetch\t2026-11-02\t2026-11-03\t\t"), kDone);
  ASSERT_EQ(working->call("Orlo_OpenItemAt\tevent\t1"), kDone);
  EXPECT_EQ(working->ask("Orlo_RemoveAlarm\tevent\t-1"), "");
  EXPECT_FALSE(working->finish());
  EXPECT_THAT(working->log(), HasSubstr("beyond bounds"));
}

}  // namespace
}  // namespace orlocal::host
