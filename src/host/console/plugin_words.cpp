#include "host/console/plugin_words.h"

#include <algorithm>
#include <iterator>

#include "base/text.h"
#include "base/translation.h"

namespace orlocal::host {

namespace {

constexpr PluginWord kWords[] = {
    {WordKind::kType, "calendar", translatable("what holds events")},
    {WordKind::kType, "reminderlist", translatable("what holds reminders")},
    {WordKind::kType, "event", translatable("of the last fetch, or new")},
    {WordKind::kType, "reminder", translatable("of the last fetch, or new")},
    {WordKind::kType, "task", translatable("the same as reminder")},
    {WordKind::kType, "attendee", translatable("of the open event")},
    {WordKind::kType, "alarm", translatable("of the open event or reminder")},
    {WordKind::kRule, "recurrencerule", translatable("of the open event")},
    {WordKind::kSpan, "this", translatable("the open occurrence alone")},
    {WordKind::kSpan, "future", translatable("the open occurrence and the later ones")},
    {WordKind::kSpan, "all", translatable("the series")},
    {WordKind::kProperty, "absolutetrigger", translatable("of an alarm: its moment")},
    {WordKind::kProperty, "action", translatable("of an alarm: what it does")},
    {WordKind::kProperty, "address", translatable("of an attendee: the postal address")},
    {WordKind::kProperty, "allowsmodification", translatable("of a calendar: its items may be changed")},
    {WordKind::kProperty, "attendeecount", translatable("of an event: how many are invited")},
    {WordKind::kProperty, "calendartitle", translatable("of an event or reminder: its calendar")},
    {WordKind::kProperty, "calendaruid", translatable("of an event or reminder: its calendar's identifier")},
    {WordKind::kProperty, "color", translatable("of a calendar: three numbers from 0 to 255")},
    {WordKind::kProperty, "commonname", translatable("of an attendee: the name")},
    {WordKind::kProperty, "completeddate", translatable("of a reminder: when it was done")},
    {WordKind::kProperty, "datestamp", translatable("of an event or reminder: when it was changed")},
    {WordKind::kProperty, "daysofthemonth", translatable("of a rule: numbers, one a line")},
    {WordKind::kProperty, "daysoftheweek", translatable("of a rule: numbers from 1 (Sunday), one a line")},
    {WordKind::kProperty, "duedate", translatable("of a reminder: when it is due")},
    {WordKind::kProperty, "emailaddress", translatable("of an alarm: where it writes to")},
    {WordKind::kProperty, "enddate", translatable("of an event, or of a rule's end")},
    {WordKind::kProperty, "externaluid", translatable("of an event or reminder: its identifier in other programs")},
    {WordKind::kProperty, "firstdayoftheweek", translatable("of a rule")},
    {WordKind::kProperty, "hasalarm", translatable("of an event or reminder")},
    {WordKind::kProperty, "hasalarms", translatable("of an event or reminder")},
    {WordKind::kProperty, "hasattendees", translatable("of an event")},
    {WordKind::kProperty, "hasend", translatable("of a rule")},
    {WordKind::kProperty, "isallday", translatable("of an event")},
    {WordKind::kProperty, "iscompleted", translatable("of a reminder")},
    {WordKind::kProperty, "isdetached", translatable("of an event: an occurrence that was changed")},
    {WordKind::kProperty, "iseditable", translatable("of a calendar: it can be saved itself")},
    {WordKind::kProperty, "isrecurring", translatable("of an event")},
    {WordKind::kProperty, "issubscribed", translatable("of a calendar")},
    {WordKind::kProperty, "location", translatable("of an event: the place")},
    {WordKind::kProperty, "modifieddate", translatable("of an event")},
    {WordKind::kProperty, "monthsoftheyear", translatable("of a rule: numbers, one a line")},
    {WordKind::kProperty, "nextalarmdate", translatable("of an event or reminder")},
    {WordKind::kProperty, "notes", translatable("of a calendar, event or reminder")},
    {WordKind::kProperty, "nthweekdaysofthemonth", translatable("of a rule")},
    {WordKind::kProperty, "occurrence",
     translatable("of an event: the date that tells this occurrence from the others")},
    {WordKind::kProperty, "occurrencecount", translatable("of a rule's end")},
    {WordKind::kProperty, "priority", translatable("of a reminder")},
    {WordKind::kProperty, "recurrenceend", translatable("of a rule; a further argument says what of it")},
    {WordKind::kProperty, "recurrenceinterval", translatable("of a rule")},
    {WordKind::kProperty, "recurrencetype", translatable("of a rule")},
    {WordKind::kProperty, "relativetrigger", translatable("of an alarm: seconds from the start or due moment")},
    {WordKind::kProperty, "sound", translatable("of an alarm")},
    {WordKind::kProperty, "startdate", translatable("of an event")},
    {WordKind::kProperty, "status", translatable("of an attendee: the answer")},
    {WordKind::kProperty, "timezone", translatable("of an event")},
    {WordKind::kProperty, "title", translatable("of a calendar, event or reminder")},
    {WordKind::kProperty, "type", translatable("of a calendar: where it comes from")},
    {WordKind::kProperty, "uid", translatable("of a calendar, event or reminder: its identifier")},
    {WordKind::kProperty, "url", translatable("of an event, reminder or alarm")},
    {WordKind::kProperty, "usesenddate", translatable("of a rule's end")},
    {WordKind::kProperty, "weeksoftheyear", translatable("of a rule: numbers, one a line")},
    {WordKind::kRecurrence, "daily", translatable("it repeats every day")},
    {WordKind::kRecurrence, "weekly", translatable("it repeats every week")},
    {WordKind::kRecurrence, "monthly", translatable("it repeats every month")},
    {WordKind::kRecurrence, "yearly", translatable("it repeats every year")},
    {WordKind::kAction, "display", translatable("shows a notice")},
    {WordKind::kAction, "email", translatable("writes to an address")},
    {WordKind::kAction, "sound", translatable("plays a sound")},
    {WordKind::kAction, "procedure", translatable("runs something; none can be made")},
    {WordKind::kPriority, "none", translatable("of a reminder")},
    {WordKind::kPriority, "high", translatable("of a reminder")},
    {WordKind::kPriority, "medium", translatable("of a reminder")},
    {WordKind::kPriority, "low", translatable("of a reminder")},
    {WordKind::kStatus, "incomplete", translatable("reminders that are open")},
    {WordKind::kStatus, "completed", translatable("reminders that are done")},
    {WordKind::kForm, "text", translatable("the reason as a sentence")},
    {WordKind::kForm, "number", translatable("the code")},
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

const char* nameOf(WordKind kind) {
  constexpr const char* kNames[] = {translatable("type"),     translatable("type"),       translatable("span"),
                                    translatable("property"), translatable("recurrence"), translatable("action"),
                                    translatable("priority"), translatable("status"),     translatable("form"),
                                    translatable("title")};
  return kNames[static_cast<std::size_t>(kind)];
}

std::string_view exampleOf(std::string_view function) {
  const auto* const found = std::find_if(std::begin(kExamples), std::end(kExamples),
                                         [&](const ExampleRow& row) { return equalsNoCase(row.function, function); });
  return found == std::end(kExamples) ? std::string_view() : found->example;
}

}  // namespace orlocal::host
