#pragma once

#include <cstdint>
#include <limits>

namespace orlocal::fuzz {

// What the functions' arguments are chosen from: the words that they understand, and some that they do not.

inline constexpr const char* kTypes[] = {"event",    "reminder", "calendar", "reminderlist",   "task",
                                         "attendee", "alarm",    "Event",    "recurrencerule", "nonsense"};
inline constexpr const char* kProperties[] = {"uid",
                                              "title",
                                              "notes",
                                              "location",
                                              "url",
                                              "startdate",
                                              "enddate",
                                              "isallday",
                                              "calendartitle",
                                              "calendaruid",
                                              "duedate",
                                              "completeddate",
                                              "iscompleted",
                                              "priority",
                                              "color",
                                              "absolutetrigger",
                                              "relativetrigger",
                                              "action",
                                              "emailaddress",
                                              "sound",
                                              "occurrence",
                                              "externaluid",
                                              "isdetached",
                                              "isrecurring",
                                              "modifieddate",
                                              "timezone",
                                              "attendeecount",
                                              "hasattendees",
                                              "hasalarms",
                                              "nextalarmdate",
                                              "datestamp",
                                              "email",
                                              "address",
                                              "commonname",
                                              "status",
                                              "role",
                                              "type",
                                              "recurrencetype",
                                              "recurrenceinterval",
                                              "firstdayoftheweek",
                                              "daysoftheweek",
                                              "daysofthemonth",
                                              "monthsoftheyear",
                                              "weeksoftheyear",
                                              "nthweekdaysofthemonth",
                                              "recurrenceend",
                                              "occurrencecount",
                                              "usesenddate",
                                              "hasend",
                                              "iseditable",
                                              "issubscribed",
                                              "allowsmodification",
                                              "Title",
                                              "nonsense"};
inline constexpr const char* kSpans[] = {"this", "future", "all", "", "Future", "nonsense"};
inline constexpr const char* kActions[] = {"display", "sound", "email", "procedure", "", "nonsense"};
inline constexpr const char* kStates[] = {"", "incomplete", "completed", "incompleted", "all", "nonsense"};
inline constexpr const char* kFrequencies[] = {"daily", "weekly", "monthly", "yearly", "hourly", ""};
inline constexpr const char* kTitles[] = {"",    "Choir",   "Calendar", "Reminders", "Choir\rCalendar",
                                          "all", "Nowhere", "Choir\n"};
inline constexpr const char* kLists[] = {"",           "1", "2\r4\r6", "31",   "-1",
                                         "1\r31\r-31", "0", "13",      "x\r2", "99999999999999999999"};
inline constexpr const char* kValues[] = {"True",
                                          "False",
                                          "none",
                                          "high",
                                          "255 128 0",
                                          "1 2",
                                          "-900",
                                          "display",
                                          "",
                                          "mailto:ann@example.org",
                                          "one line\rand another",
                                          "\x1b[31m",
                                          "\u202eback\u2069"};
inline constexpr const char* kDateTexts[] = {
    "2026-11-02 09:00:00",       "2026-11-02", "2026-10-25 02:30:00", "2027-03-28 02:30:00",   "2026-02-30", "9:15",
    "2026-11-02 09:00:00 +0100", "0001-01-01", "4000-12-31 23:59:59", "1999-12-31 24:00:00.5", "tomorrow",   "?"};
inline constexpr std::int16_t kYears[] = {2026, 2027, 2025, 2030, 1999, 1970, 1, 4000, 0, -1, 2100};
inline constexpr double kFractions[] = {0.5, -0.5, 1e300, -1e300, 2147483647.5, 1e-300};
inline constexpr std::int64_t kNumbers[] = {
    1, 2, 0, -1, 3, 5, -900, 60, 31, 1000, 2147483647, -2147483648LL, std::numeric_limits<std::int64_t>::max()};

/// How the arguments of a function are meant, a letter each; what the letters stand for is in `Caller::assign`.
struct Meant {
  std::int16_t id;
  const char* arguments;
};
inline constexpr Meant kMeant[] = {{151, "t"},    {152, "t"},       {153, "tn"},     {154, "tud"}, {155, "tpp"},
                                   {156, "ddcu"}, {157, "csd"},     {158, "c"},      {159, "tpv"}, {160, "t"},
                                   {161, "tw"},   {162, "fnlllDn"}, {163, "tdavnv"}, {164, "tn"},  {165, ""},
                                   {166, "t"},    {167, "tudw"},    {168, "t"}};

}  // namespace orlocal::fuzz
