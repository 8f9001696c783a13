#include "host/commands/words/terms.h"

#include <algorithm>
#include <cstdlib>
#include <initializer_list>
#include <string>

#include "base/languages.h"

namespace orlocal::host {
namespace {

constexpr int valueIn(Unit unit) { return static_cast<int>(unit); }
constexpr int kNoon = 12 * 60;

constexpr TermWord kEnglish[] = {
    {"today", Term::kDayFromToday, 0},
    {"tomorrow", Term::kDayFromToday, 1},
    {"yesterday", Term::kDayFromToday, -1},
    {"day after tomorrow", Term::kDayFromToday, 2},
    {"the day after tomorrow", Term::kDayFromToday, 2},
    {"sunday", Term::kWeekDay, 0},
    {"monday", Term::kWeekDay, 1},
    {"tuesday", Term::kWeekDay, 2},
    {"wednesday", Term::kWeekDay, 3},
    {"thursday", Term::kWeekDay, 4},
    {"friday", Term::kWeekDay, 5},
    {"saturday", Term::kWeekDay, 6},
    {"sun", Term::kWeekDay, 0},
    {"mon", Term::kWeekDay, 1},
    {"tue", Term::kWeekDay, 2},
    {"wed", Term::kWeekDay, 3},
    {"thu", Term::kWeekDay, 4},
    {"fri", Term::kWeekDay, 5},
    {"sat", Term::kWeekDay, 6},
    {"january", Term::kMonth, 1},
    {"february", Term::kMonth, 2},
    {"march", Term::kMonth, 3},
    {"april", Term::kMonth, 4},
    {"may", Term::kMonth, 5},
    {"june", Term::kMonth, 6},
    {"july", Term::kMonth, 7},
    {"august", Term::kMonth, 8},
    {"september", Term::kMonth, 9},
    {"october", Term::kMonth, 10},
    {"november", Term::kMonth, 11},
    {"december", Term::kMonth, 12},
    {"jan", Term::kMonth, 1},
    {"feb", Term::kMonth, 2},
    {"mar", Term::kMonth, 3},
    {"apr", Term::kMonth, 4},
    {"jun", Term::kMonth, 6},
    {"jul", Term::kMonth, 7},
    {"aug", Term::kMonth, 8},
    {"sep", Term::kMonth, 9},
    {"oct", Term::kMonth, 10},
    {"nov", Term::kMonth, 11},
    {"dec", Term::kMonth, 12},
    {"m", Term::kUnit, valueIn(Unit::kMinute)},
    {"min", Term::kUnit, valueIn(Unit::kMinute)},
    {"minute", Term::kUnit, valueIn(Unit::kMinute)},
    {"minutes", Term::kUnit, valueIn(Unit::kMinute)},
    {"h", Term::kUnit, valueIn(Unit::kHour)},
    {"hour", Term::kUnit, valueIn(Unit::kHour)},
    {"hours", Term::kUnit, valueIn(Unit::kHour)},
    {"d", Term::kUnit, valueIn(Unit::kDay)},
    {"day", Term::kUnit, valueIn(Unit::kDay)},
    {"days", Term::kUnit, valueIn(Unit::kDay)},
    {"w", Term::kUnit, valueIn(Unit::kWeek)},
    {"week", Term::kUnit, valueIn(Unit::kWeek)},
    {"weeks", Term::kUnit, valueIn(Unit::kWeek)},
    {"month", Term::kUnit, valueIn(Unit::kMonth)},
    {"months", Term::kUnit, valueIn(Unit::kMonth)},
    {"year", Term::kUnit, valueIn(Unit::kYear)},
    {"years", Term::kUnit, valueIn(Unit::kYear)},
    {"a", Term::kNumber, 1},
    {"an", Term::kNumber, 1},
    {"one", Term::kNumber, 1},
    {"two", Term::kNumber, 2},
    {"three", Term::kNumber, 3},
    {"four", Term::kNumber, 4},
    {"five", Term::kNumber, 5},
    {"six", Term::kNumber, 6},
    {"noon", Term::kTimeOfDay, kNoon},
    {"midday", Term::kTimeOfDay, kNoon},
    {"midnight", Term::kTimeOfDay, 0},
    {"o'clock", Term::kClock},
    {"am", Term::kHalfOfDay, 0},
    {"pm", Term::kHalfOfDay, 12},
    {"next", Term::kNext},
    {"this", Term::kThis},
    {"in", Term::kIn},
    {"on", Term::kOn},
    {"at", Term::kAt},
    {"from", Term::kFrom},
    {"to", Term::kTo},
    {"-", Term::kTo},
    {"\xe2\x80\x93", Term::kTo},
    {"until", Term::kTo},
    {"until", Term::kUntil},
    {"till", Term::kUntil},
    {"for", Term::kFor},
    {"all day", Term::kAllDay},
    {"whole day", Term::kAllDay},
    {"every", Term::kEvery},
    {"each", Term::kEvery},
    {"other", Term::kOther},
    {"daily", Term::kRepeats, valueIn(Unit::kDay)},
    {"weekly", Term::kRepeats, valueIn(Unit::kWeek)},
    {"monthly", Term::kRepeats, valueIn(Unit::kMonth)},
    {"yearly", Term::kRepeats, valueIn(Unit::kYear)},
    {"annually", Term::kRepeats, valueIn(Unit::kYear)},
    {"weekdays", Term::kWeekdays},
    {"weekday", Term::kWeekdays},
    {"workdays", Term::kWeekdays},
    {"workday", Term::kWeekdays},
    {"first", Term::kOrdinal, 1},
    {"second", Term::kOrdinal, 2},
    {"third", Term::kOrdinal, 3},
    {"fourth", Term::kOrdinal, 4},
    {"last", Term::kOrdinal, -1},
    {"of the month", Term::kOfMonth},
    {"of each month", Term::kOfMonth},
    {"of every month", Term::kOfMonth},
    {"times", Term::kTimes},
    {"time", Term::kTimes},
    {"and", Term::kAnd},
    {"before", Term::kBefore},
    {"the day before", Term::kDayBefore},
    {"day before", Term::kDayBefore},
    {"on the day", Term::kSameDay},
    {"that day", Term::kSameDay},
    {"at start", Term::kAtStart},
    {"at the start", Term::kAtStart},
    {"never", Term::kNever},
    {"none", Term::kNever},
    {"no", Term::kNever},
};

constexpr TermWord kGerman[] = {
    {"heute", Term::kDayFromToday, 0},
    {"morgen", Term::kDayFromToday, 1},
    {"gestern", Term::kDayFromToday, -1},
    {"übermorgen", Term::kDayFromToday, 2},
    {"sonntag", Term::kWeekDay, 0},
    {"montag", Term::kWeekDay, 1},
    {"dienstag", Term::kWeekDay, 2},
    {"mittwoch", Term::kWeekDay, 3},
    {"donnerstag", Term::kWeekDay, 4},
    {"freitag", Term::kWeekDay, 5},
    {"samstag", Term::kWeekDay, 6},
    {"sonnabend", Term::kWeekDay, 6},
    {"so", Term::kWeekDay, 0},
    {"mo", Term::kWeekDay, 1},
    {"di", Term::kWeekDay, 2},
    {"mi", Term::kWeekDay, 3},
    {"do", Term::kWeekDay, 4},
    {"fr", Term::kWeekDay, 5},
    {"sa", Term::kWeekDay, 6},
    {"januar", Term::kMonth, 1},
    {"jänner", Term::kMonth, 1},
    {"februar", Term::kMonth, 2},
    {"märz", Term::kMonth, 3},
    {"mär", Term::kMonth, 3},
    {"mai", Term::kMonth, 5},
    {"juni", Term::kMonth, 6},
    {"juli", Term::kMonth, 7},
    {"oktober", Term::kMonth, 10},
    {"okt", Term::kMonth, 10},
    {"dezember", Term::kMonth, 12},
    {"dez", Term::kMonth, 12},
    {"minuten", Term::kUnit, valueIn(Unit::kMinute)},
    {"std", Term::kUnit, valueIn(Unit::kHour)},
    {"stunde", Term::kUnit, valueIn(Unit::kHour)},
    {"stunden", Term::kUnit, valueIn(Unit::kHour)},
    {"tag", Term::kUnit, valueIn(Unit::kDay)},
    {"tage", Term::kUnit, valueIn(Unit::kDay)},
    {"tagen", Term::kUnit, valueIn(Unit::kDay)},
    {"woche", Term::kUnit, valueIn(Unit::kWeek)},
    {"wochen", Term::kUnit, valueIn(Unit::kWeek)},
    {"monat", Term::kUnit, valueIn(Unit::kMonth)},
    {"monate", Term::kUnit, valueIn(Unit::kMonth)},
    {"monaten", Term::kUnit, valueIn(Unit::kMonth)},
    {"jahr", Term::kUnit, valueIn(Unit::kYear)},
    {"jahre", Term::kUnit, valueIn(Unit::kYear)},
    {"jahren", Term::kUnit, valueIn(Unit::kYear)},
    {"ein", Term::kNumber, 1},
    {"eine", Term::kNumber, 1},
    {"einer", Term::kNumber, 1},
    {"einem", Term::kNumber, 1},
    {"zwei", Term::kNumber, 2},
    {"drei", Term::kNumber, 3},
    {"vier", Term::kNumber, 4},
    {"fünf", Term::kNumber, 5},
    {"sechs", Term::kNumber, 6},
    {"mittags", Term::kTimeOfDay, kNoon},
    {"mitternacht", Term::kTimeOfDay, 0},
    {"uhr", Term::kClock},
    {"nächster", Term::kNext},
    {"nächste", Term::kNext},
    {"nächsten", Term::kNext},
    {"nächstes", Term::kNext},
    {"diesen", Term::kThis},
    {"diese", Term::kThis},
    {"dieser", Term::kThis},
    {"kommenden", Term::kThis},
    {"am", Term::kOn},
    {"um", Term::kAt},
    {"von", Term::kFrom},
    {"vom", Term::kFrom},
    {"ab", Term::kAt},
    {"bis", Term::kTo},
    {"bis zum", Term::kTo},
    {"bis", Term::kUntil},
    {"bis zum", Term::kUntil},
    {"für", Term::kFor},
    {"ganztägig", Term::kAllDay},
    {"jeden", Term::kEvery},
    {"jede", Term::kEvery},
    {"jedes", Term::kEvery},
    {"alle", Term::kEvery},
    {"täglich", Term::kRepeats, valueIn(Unit::kDay)},
    {"wöchentlich", Term::kRepeats, valueIn(Unit::kWeek)},
    {"monatlich", Term::kRepeats, valueIn(Unit::kMonth)},
    {"jährlich", Term::kRepeats, valueIn(Unit::kYear)},
    {"werktags", Term::kWeekdays},
    {"werktag", Term::kWeekdays},
    {"ersten", Term::kOrdinal, 1},
    {"erster", Term::kOrdinal, 1},
    {"zweiten", Term::kOrdinal, 2},
    {"dritten", Term::kOrdinal, 3},
    {"vierten", Term::kOrdinal, 4},
    {"letzten", Term::kOrdinal, -1},
    {"letzter", Term::kOrdinal, -1},
    {"im monat", Term::kOfMonth},
    {"des monats", Term::kOfMonth},
    {"mal", Term::kTimes},
    {"und", Term::kAnd},
    {"vorher", Term::kBefore},
    {"davor", Term::kBefore},
    {"am tag davor", Term::kDayBefore},
    {"am vortag", Term::kDayBefore},
    {"zu beginn", Term::kAtStart},
    {"nie", Term::kNever},
};

/// The first of these that is set to something.
std::string environment(std::initializer_list<const char*> names) {
  for (const char* name : names) {
    const char* value = std::getenv(name);
    if (value != nullptr && *value != '\0') { return value; }
  }
  return {};
}

}  // namespace

WordsSetting settingOfUser(store::LocalTime now) {
  WordsSetting setting{now};
  const std::vector<std::string> languages = preferredLanguages();
  setting.german = std::any_of(languages.begin(), languages.end(),
                               [](const std::string& language) { return language.starts_with("de"); });
  const std::string dates = environment({"LC_ALL", "LC_TIME", "LANG"});
  if (dates.starts_with("en_US")) {
    setting.slashes = WordsSetting::Slashes::kMonthFirst;
  } else if (dates.find('_') != std::string::npos) {
    setting.slashes = WordsSetting::Slashes::kDayFirst;
  }
  return setting;
}

std::optional<int> valueOf(std::string_view text, Term term, const WordsSetting& setting) {
  const auto isMeant = [&](const TermWord& word) { return word.term == term && word.text == text; };
  if (setting.german) {
    const auto* found = std::find_if(std::begin(kGerman), std::end(kGerman), isMeant);
    if (found != std::end(kGerman)) { return found->value; }
  }
  const auto* found = std::find_if(std::begin(kEnglish), std::end(kEnglish), isMeant);
  return found != std::end(kEnglish) ? std::optional(found->value) : std::nullopt;
}

int longestOf(Term term) {
  int longest = 1;
  const auto look = [&](const TermWord& word) {
    if (word.term != term) { return; }
    longest = std::max(longest, 1 + static_cast<int>(std::count(word.text.begin(), word.text.end(), ' ')));
  };
  std::for_each(std::begin(kEnglish), std::end(kEnglish), look);
  std::for_each(std::begin(kGerman), std::end(kGerman), look);
  return longest;
}

}  // namespace orlocal::host
