#include "host/console/plugin_words.h"

#include <algorithm>
#include <iterator>

#include "base/text.h"

namespace orlocal::host {

namespace {

constexpr PluginWord kWords[] = {
    {WordKind::kType, "calendar", "what holds events"},
    {WordKind::kType, "reminderlist", "what holds reminders"},
    {WordKind::kType, "event", "of the last fetch, or new"},
    {WordKind::kType, "reminder", "of the last fetch, or new"},
    {WordKind::kType, "task", "the same as reminder"},
    {WordKind::kType, "attendee", "of the open event"},
    {WordKind::kType, "alarm", "of the open event or reminder"},
    {WordKind::kRule, "recurrencerule", "of the open event"},
    {WordKind::kSpan, "this", "the open occurrence alone"},
    {WordKind::kSpan, "future", "the open occurrence and the later ones"},
    {WordKind::kSpan, "all", "the series"},
    {WordKind::kProperty, "absolutetrigger", "of an alarm: its moment"},
    {WordKind::kProperty, "action", "of an alarm: what it does"},
    {WordKind::kProperty, "address", "of an attendee: the postal address"},
    {WordKind::kProperty, "allowsmodification", "of a calendar: its items may be changed"},
    {WordKind::kProperty, "attendeecount", "of an event: how many are invited"},
    {WordKind::kProperty, "calendartitle", "of an event or reminder: its calendar"},
    {WordKind::kProperty, "calendaruid", "of an event or reminder: its calendar's identifier"},
    {WordKind::kProperty, "color", "of a calendar: three numbers from 0 to 255"},
    {WordKind::kProperty, "commonname", "of an attendee: the name"},
    {WordKind::kProperty, "completeddate", "of a reminder: when it was done"},
    {WordKind::kProperty, "datestamp", "of an event or reminder: when it was changed"},
    {WordKind::kProperty, "daysofthemonth", "of a rule: numbers, one a line"},
    {WordKind::kProperty, "daysoftheweek", "of a rule: numbers from 1 (Sunday), one a line"},
    {WordKind::kProperty, "duedate", "of a reminder: when it is due"},
    {WordKind::kProperty, "emailaddress", "of an alarm: where it writes to"},
    {WordKind::kProperty, "enddate", "of an event, or of a rule's end"},
    {WordKind::kProperty, "externaluid", "of an event or reminder: its identifier in other programs"},
    {WordKind::kProperty, "firstdayoftheweek", "of a rule"},
    {WordKind::kProperty, "hasalarm", "of an event or reminder"},
    {WordKind::kProperty, "hasalarms", "of an event or reminder"},
    {WordKind::kProperty, "hasattendees", "of an event"},
    {WordKind::kProperty, "hasend", "of a rule"},
    {WordKind::kProperty, "isallday", "of an event"},
    {WordKind::kProperty, "iscompleted", "of a reminder"},
    {WordKind::kProperty, "isdetached", "of an event: an occurrence that was changed"},
    {WordKind::kProperty, "iseditable", "of a calendar: it can be saved itself"},
    {WordKind::kProperty, "isrecurring", "of an event"},
    {WordKind::kProperty, "issubscribed", "of a calendar"},
    {WordKind::kProperty, "location", "of an event: the place"},
    {WordKind::kProperty, "modifieddate", "of an event"},
    {WordKind::kProperty, "monthsoftheyear", "of a rule: numbers, one a line"},
    {WordKind::kProperty, "nextalarmdate", "of an event or reminder"},
    {WordKind::kProperty, "notes", "of a calendar, event or reminder"},
    {WordKind::kProperty, "nthweekdaysofthemonth", "of a rule"},
    {WordKind::kProperty, "occurrence", "of an event: the date that tells this occurrence from the others"},
    {WordKind::kProperty, "occurrencecount", "of a rule's end"},
    {WordKind::kProperty, "priority", "of a reminder"},
    {WordKind::kProperty, "recurrenceend", "of a rule; a further argument says what of it"},
    {WordKind::kProperty, "recurrenceinterval", "of a rule"},
    {WordKind::kProperty, "recurrencetype", "of a rule"},
    {WordKind::kProperty, "relativetrigger", "of an alarm: seconds from the start or due moment"},
    {WordKind::kProperty, "sound", "of an alarm"},
    {WordKind::kProperty, "startdate", "of an event"},
    {WordKind::kProperty, "status", "of an attendee: the answer"},
    {WordKind::kProperty, "timezone", "of an event"},
    {WordKind::kProperty, "title", "of a calendar, event or reminder"},
    {WordKind::kProperty, "type", "of a calendar: where it comes from"},
    {WordKind::kProperty, "uid", "of a calendar, event or reminder: its identifier"},
    {WordKind::kProperty, "url", "of an event, reminder or alarm"},
    {WordKind::kProperty, "usesenddate", "of a rule's end"},
    {WordKind::kProperty, "weeksoftheyear", "of a rule: numbers, one a line"},
    {WordKind::kRecurrence, "daily", "every day"},
    {WordKind::kRecurrence, "weekly", "every week"},
    {WordKind::kRecurrence, "monthly", "every month"},
    {WordKind::kRecurrence, "yearly", "every year"},
    {WordKind::kAction, "display", "shows a notice"},
    {WordKind::kAction, "email", "writes to an address"},
    {WordKind::kAction, "sound", "plays a sound"},
    {WordKind::kAction, "procedure", "runs something; none can be made"},
    {WordKind::kPriority, "none", "of a reminder"},
    {WordKind::kPriority, "high", "of a reminder"},
    {WordKind::kPriority, "medium", "of a reminder"},
    {WordKind::kPriority, "low", "of a reminder"},
    {WordKind::kStatus, "incomplete", "reminders that are open"},
    {WordKind::kStatus, "completed", "reminders that are done"},
    {WordKind::kForm, "text", "the reason as a sentence"},
    {WordKind::kForm, "number", "the code"},
};

struct ArgumentRow {
  std::string_view function;
  std::size_t argument;
  WordKind kind;
};
constexpr ArgumentRow kArguments[] = {
    {"Orlo_GetItemCountForType", 0, WordKind::kType},
    {"Orlo_OpenItemAt", 0, WordKind::kType},
    {"Orlo_OpenItemWithUID", 0, WordKind::kType},
    {"Orlo_GetProperty", 0, WordKind::kType},
    {"Orlo_GetProperty", 0, WordKind::kRule},
    {"Orlo_GetProperty", 1, WordKind::kProperty},
    {"Orlo_GetProperty", 2, WordKind::kProperty},
    {"Orlo_EventsFetch", 2, WordKind::kTitle},
    {"Orlo_RemindersFetch", 0, WordKind::kTitle},
    {"Orlo_RemindersFetch", 1, WordKind::kStatus},
    {"Orlo_CalOpenCalendarWithTitle", 0, WordKind::kTitle},
    {"Orlo_SetProperty", 0, WordKind::kType},
    {"Orlo_SetProperty", 1, WordKind::kProperty},
    {"Orlo_SetProperty", 2, WordKind::kPriority},
    {"Orlo_SetProperty", 2, WordKind::kAction},
    {"Orlo_SetProperty", 2, WordKind::kTitle},
    {"Orlo_GetLastError", 0, WordKind::kForm},
    {"Orlo_SaveItem", 0, WordKind::kType},
    {"Orlo_SaveItem", 1, WordKind::kSpan},
    {"Orlo_AddRecurrence", 0, WordKind::kRecurrence},
    {"Orlo_AddAlarm", 0, WordKind::kType},
    {"Orlo_AddAlarm", 2, WordKind::kAction},
    {"Orlo_RemoveAlarm", 0, WordKind::kType},
    {"Orlo_NewItem", 0, WordKind::kType},
    {"Orlo_RemoveItem", 0, WordKind::kType},
    {"Orlo_RemoveItem", 3, WordKind::kSpan},
    {"Orlo_RemoveAllAlarmsFrom", 0, WordKind::kType},
};

struct ExampleRow {
  std::string_view function;
  std::string_view example;
};
constexpr ExampleRow kExamples[] = {
    {"Orlo_Version", R"(Orlo_Version( "short" ))"},
    {"Orlo_GetItemCountForType", R"(Orlo_GetItemCountForType( "calendar" ))"},
    {"Orlo_OpenItemAt", R"(Orlo_OpenItemAt( "calendar" ; 1 ))"},
    {"Orlo_OpenItemWithUID", R"(Orlo_OpenItemWithUID( "event" ; $uid ))"},
    {"Orlo_GetProperty", R"(Orlo_GetProperty( "calendar" ; "title" ))"},
    {"Orlo_EventsFetch", R"(Orlo_EventsFetch( Get ( CurrentDate ) ; Get ( CurrentDate ) + 7 ; "Work" ; "" ))"},
    {"Orlo_RemindersFetch", R"(Orlo_RemindersFetch( "Reminders" ; "incomplete" ; "" ))"},
    {"Orlo_CalOpenCalendarWithTitle", R"(Orlo_CalOpenCalendarWithTitle( "Calendar" ))"},
    {"Orlo_SetProperty", R"(Orlo_SetProperty( "event" ; "title" ; "Lunch with Grace" ))"},
    {"Orlo_GetLastError", R"(Orlo_GetLastError( "number" ))"},
    {"Orlo_SaveItem", R"(Orlo_SaveItem( "event" ; "this" ))"},
    {"Orlo_AddRecurrence", R"(Orlo_AddRecurrence( "weekly" ; 1 ; "" ; "" ; "" ; "" ; 4 ))"},
    {"Orlo_AddAlarm", R"(Orlo_AddAlarm( "event" ; "" ; "display" ; "" ; -900 ; "" ))"},
    {"Orlo_RemoveAlarm", R"(Orlo_RemoveAlarm( "event" ; 1 ))"},
    {"Orlo_RemoveRecurrence", "Orlo_RemoveRecurrence"},
    {"Orlo_NewItem", R"(Orlo_NewItem( "event" ))"},
    {"Orlo_RemoveItem", R"(Orlo_RemoveItem( "event" ; $uid ; "" ; "all" ))"},
    {"Orlo_RemoveAllAlarmsFrom", R"(Orlo_RemoveAllAlarmsFrom( "event" ))"},
};

}  // namespace

std::span<const PluginWord> pluginWords() { return kWords; }

std::vector<WordKind> kindsFor(std::string_view function, std::size_t argument) {
  std::vector<WordKind> kinds;
  for (const ArgumentRow& row : kArguments) {
    if (row.argument == argument && equalsNoCase(row.function, function)) { kinds.push_back(row.kind); }
  }
  return kinds;
}

std::string_view nameOf(WordKind kind) {
  constexpr std::string_view kNames[] = {"type",   "type",     "span",   "property", "recurrence",
                                         "action", "priority", "status", "form",     "title"};
  return kNames[static_cast<std::size_t>(kind)];
}

std::string_view exampleOf(std::string_view function) {
  const auto* const found = std::find_if(std::begin(kExamples), std::end(kExamples),
                                         [&](const ExampleRow& row) { return equalsNoCase(row.function, function); });
  return found == std::end(kExamples) ? std::string_view() : found->example;
}

}  // namespace orlocal::host
