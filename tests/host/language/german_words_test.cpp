#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include "base/translation.h"
#include "host/commands/words/date_names.h"
#include "host/commands/words/item_words.h"
#include "host/commands/words/listed_words.h"
#include "host/commands/words/rule_words.h"
#include "host/language/message_catalogue.h"
#include "store/recurrence/rule_text.h"

namespace orlocal::host {
namespace {

/// In this process all messages are German from here on.
class GermanWords : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    ::setenv("LANGUAGE", "de", 1);
    speakLanguageOfUser(ORLOCAL_PROGRAM);
    ASSERT_EQ(translated("en"), "de") << "there is no German catalogue beside the program";
  }
};

struct GermanRule {
  const char* rule;
  const char* words;
};

/// Of series that start on Monday, 2 November 2026.
constexpr GermanRule kGermanRules[] = {
    {"FREQ=DAILY", "jeden Tag"},
    {"FREQ=DAILY;INTERVAL=3;COUNT=10", "alle 3 Tage, 10-mal"},
    {"FREQ=DAILY;BYDAY=MO,TU,WE,TH,FR", "jeden Werktag"},
    {"FREQ=WEEKLY;UNTIL=20261203", "jede Woche am Montag, bis 3. Dezember 2026"},
    {"FREQ=WEEKLY;INTERVAL=2;BYDAY=SU,TU,SA", "alle 2 Wochen am Sonntag, Dienstag und Samstag"},
    {"FREQ=WEEKLY;INTERVAL=2;BYDAY=MO,TU,WE,TH,FR", "alle 2 Wochen an Werktagen"},
    {"FREQ=MONTHLY", "jeden Monat am 2."},
    {"FREQ=MONTHLY;BYMONTHDAY=1,11,23", "jeden Monat am 1., 11. und 23."},
    {"FREQ=MONTHLY;BYMONTHDAY=-1", "jeden Monat am letzten Tag"},
    {"FREQ=MONTHLY;BYMONTHDAY=-2", "jeden Monat am vorletzten Tag"},
    {"FREQ=MONTHLY;INTERVAL=6;BYDAY=2TU", "alle 6 Monate am zweiten Dienstag"},
    {"FREQ=MONTHLY;BYDAY=-1FR", "jeden Monat am letzten Freitag"},
    {"FREQ=MONTHLY;BYDAY=MO,TU,WE,TH,FR;BYSETPOS=-1", "jeden Monat am letzten Werktag"},
    {"FREQ=MONTHLY;BYDAY=FR;BYMONTHDAY=13", "jeden Monat am Freitag, sofern am 13."},
    {"FREQ=YEARLY", "jedes Jahr am 2. November"},
    {"FREQ=YEARLY;BYMONTH=12;BYMONTHDAY=25", "jedes Jahr am 25. Dezember"},
    {"FREQ=YEARLY;BYMONTH=11;BYDAY=4TH", "jedes Jahr am vierten Donnerstag im November"},
    {"FREQ=YEARLY;BYYEARDAY=100,-1", "jedes Jahr am 100. Tag und letzten Tag des Jahres"},
    {"FREQ=YEARLY;BYWEEKNO=20;BYDAY=MO", "jedes Jahr am Montag in Woche 20"},
    {"FREQ=HOURLY;INTERVAL=2", "alle 2 Stunden"},
    {"FREQ=DAILY;BYHOUR=9;BYMINUTE=30", "jeden Tag um 09:30"},
    {"FREQ=MINUTELY;INTERVAL=15;BYHOUR=9,10", "alle 15 Minuten in den Stunden 9 und 10"},
};

TEST_F(GermanWords, SayWhatARuleMeans) {
  const store::Zone berlin = *store::Zone::named("Europe/Berlin");
  for (const GermanRule& each : kGermanRules) {
    const auto rule = store::parseRule(each.rule);
    ASSERT_TRUE(rule) << each.rule;
    EXPECT_EQ(ruleWords(*rule, store::LocalDay(2026, 11, 2), berlin), each.words) << each.rule;
  }
}

TEST_F(GermanWords, SayWhenAnAlarmRings) {
  const auto words = [](int seconds, bool fromEnd, store::ItemKind kind) {
    store::Alarm alarm;
    alarm.trigger = store::AlarmOffset{std::chrono::seconds(seconds), fromEnd};
    return alarmWords(alarm, kind, store::Zone());
  };
  EXPECT_EQ(words(-900, false, store::ItemKind::kEvent), "15 Minuten vor Beginn");
  EXPECT_EQ(words(-86'400, false, store::ItemKind::kEvent), "1 Tag vor Beginn");
  EXPECT_EQ(words(0, false, store::ItemKind::kEvent), "zu Beginn");
  EXPECT_EQ(words(3600, true, store::ItemKind::kEvent), "1 Stunde nach dem Ende");
  EXPECT_EQ(words(0, true, store::ItemKind::kReminder), "bei Fälligkeit");
}

TEST_F(GermanWords, HaveDatesOfTheSameLanguage) {
  EXPECT_EQ(DateNames::ofUser().longDay(store::LocalDay(2026, 11, 2)), "Montag, 2. November 2026");
  EXPECT_EQ(listed({"Mo", "Di", "Mi"}), "Mo, Di und Mi");
}

}  // namespace
}  // namespace orlocal::host
