#include "host/commands/changes/item_fields.h"

#include <algorithm>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "base/text.h"
#include "base/translation.h"
#include "host/commands/words/alarm_words.h"
#include "host/commands/words/date_words.h"
#include "host/commands/words/item_words.h"
#include "host/commands/words/repeat_words.h"
#include "store/edits/event_times.h"

namespace orlocal::host {
namespace {

using store::ItemEdit;
using store::ItemField;
using store::LocalDay;
using store::LocalTime;

struct PriorityWord {
  std::string_view word;
  int priority;
};
constexpr PriorityWord kPriorities[] = {{"none", 0}, {"high", 1}, {"medium", 5}, {"low", 9}, {"", 0}};

tl::unexpected<Misread> misread(Failure why, std::string text) {
  return tl::unexpected<Misread>(Misread{std::move(why), std::move(text)});
}
tl::unexpected<Misread> misread(std::string sentence, const std::string& text) {
  return misread(Failure{ErrorCode::kInvalid, std::move(sentence), std::nullopt}, text);
}

/// What `--start` says takes the place of what the text said of it.
Read<void> putStart(const std::string& text, const WordsSetting& setting, When& when) {
  const auto said = readWhen(text, setting);
  if (!said) { return misread(said.error(), text); }
  if (said->day) { when.day = said->day; }
  if (said->lastDay) { when.lastDay = said->lastDay; }
  if (said->start) {
    when.start = said->start;
    when.end = said->end;
  }
  if (said->length) { when.length = said->length; }
  if (said->repeat) { when.repeat = said->repeat; }
  when.allDay = when.allDay || said->allDay;
  return {};
}

Read<void> putEnd(const std::string& text, const WordsSetting& setting, When& when) {
  const auto said = readWhen(text, setting);
  if (!said) { return misread(said.error(), text); }
  if (!said->day && !said->start) { return misread(tr("The end is a day, a time of day, or both"), text); }
  when.length.reset();
  when.end = said->start;
  when.lastDay = said->day;
  return {};
}

Read<void> putRepeat(const FieldWords& words, const WordsSetting& setting, When& when) {
  if (words.repeat && !words.repeat->empty()) {
    const auto rule = readRepeat(*words.repeat, setting);
    if (!rule) { return misread(rule.error(), *words.repeat); }
    when.repeat = *rule;
  }
  if (words.until) {
    const auto day = readDay(*words.until, setting);
    if (!day) { return misread(day.error(), *words.until); }
    if (!when.repeat) { return misread(tr("--until needs --repeat: how does it repeat until then?"), *words.until); }
    when.repeat->until = store::CalendarTime{store::CalendarTime::Kind::kDate, LocalTime(*day), {}};
    when.repeat->count.reset();
  }
  if (words.count) {
    if (!when.repeat) {
      return misread(tr("--count needs --repeat: how does it repeat?"), std::to_string(*words.count));
    }
    when.repeat->count = *words.count;
    when.repeat->until.reset();
  }
  return {};
}

}  // namespace

void addFieldOptions(CLI::App& command, FieldWords& words) {
  command.add_option("--title", words.title, "Its title, to the letter")->type_name("WORDS");
  command.add_option("--start", words.start, "When it starts or, of a reminder, is due: tomorrow 12:30")
      ->type_name("WHEN");
  command.add_option("--end", words.end, "When it ends: 13:30, or its last day")->type_name("WHEN");
  command.add_option("--duration", words.duration, "How long it lasts: 1h30m, 2 days")->type_name("LENGTH");
  command.add_flag("--all-day", words.allDay, "It lasts whole days");
  command.add_option("--zone", words.zone, "The time zone of its times: America/New_York")->type_name("ZONE");
  command.add_option("--repeat", words.repeat, "daily, every 2 weeks, weekdays, mon,wed, last friday, FREQ=…")
      ->type_name("HOW");
  command.add_option("--until", words.until, "The last day on which it may repeat")->type_name("DAY");
  command.add_option("--count", words.count, "How often it happens")->type_name("N")->check(CLI::Range(1, 1'000'000));
  command.add_option("--alarm", words.alarms, "15m, 1h before, at start, at 9:00 the day before; may be repeated")
      ->type_name("WHEN")
      ->allow_extra_args(false);
  command.add_option("--location", words.location, "Where it is")->type_name("WORDS");
  command.add_option("--notes", words.notes, "What else is to say")->type_name("WORDS");
  command.add_option("--url", words.url, "A link")->type_name("URL");
  command.add_option("--category", words.categories, "What it is filed under; may be repeated")
      ->type_name("WORD")
      ->allow_extra_args(false);
  command.add_option("--priority", words.priority, "1 (highest) to 9, high, medium, low, none")->type_name("P");
}

Read<When> withOptions(When when, const FieldWords& words, const WordsSetting& setting) {
  if (words.start) {
    if (auto put = putStart(*words.start, setting, when); !put) { return tl::unexpected(put.error()); }
  }
  if (words.end) {
    if (auto put = putEnd(*words.end, setting, when); !put) { return tl::unexpected(put.error()); }
  }
  if (words.duration) {
    const auto length = readLength(*words.duration, setting);
    if (!length) { return misread(length.error(), *words.duration); }
    when.length = *length;
    when.end.reset();
    when.lastDay.reset();
  }
  when.allDay = when.allDay || words.allDay;
  if (when.allDay) {
    when.start.reset();
    when.end.reset();
  }
  if (auto put = putRepeat(words, setting, when); !put) { return tl::unexpected(put.error()); }
  return when;
}

Read<void> putTexts(const FieldWords& words, ItemEdit& edit) {
  const auto put = [&](ItemField field, const std::optional<std::string>& text,
                       std::optional<std::string> store::Item::*member) {
    if (!text) { return; }
    edit.set.add(field);
    edit.values.*member = text->empty() ? std::nullopt : text;
  };
  put(ItemField::kTitle, words.title, &store::Item::title);
  put(ItemField::kLocation, words.location, &store::Item::location);
  put(ItemField::kNotes, words.notes, &store::Item::notes);
  put(ItemField::kUrl, words.url, &store::Item::url);
  if (!words.categories.empty()) {
    std::vector<std::string> names;
    for (const std::string& category : words.categories) {
      if (const auto name = trimmed(category); !name.empty()) { names.emplace_back(name); }
    }
    edit.set.add(ItemField::kCategories);
    setCategories(names, edit.values);
  }
  if (!words.priority) { return {}; }
  const std::string word = caseFolded(*words.priority);
  const auto* named = std::find_if(std::begin(kPriorities), std::end(kPriorities),
                                   [&](const PriorityWord& each) { return each.word == word; });
  const auto number = named != std::end(kPriorities) ? std::optional(named->priority) : wholeNumber(word);
  if (!number || *number > 9) {
    return misread(tr("\"{}\" is no priority; write 1 (highest) to 9, high, medium, low or none", *words.priority),
                   *words.priority);
  }
  edit.set.add(ItemField::kPriority);
  edit.values.priority = *number;
  return {};
}

Read<void> putAlarms(const FieldWords& words, const WordsSetting& setting, LocalTime start, ItemEdit& edit) {
  if (words.alarms.empty()) { return {}; }
  edit.set.add(ItemField::kAlarms);
  edit.values.alarms.clear();
  // A reminder has no start as a rule; its alarms count from when it is due.
  const bool fromDue = edit.values.kind == store::ItemKind::kReminder && !edit.values.start;
  for (const std::string& text : words.alarms) {
    if (text.empty() || caseFolded(text) == "none") { continue; }
    const auto alarm = readAlarm(text, setting);
    if (!alarm) { return misread(alarm.error(), text); }
    store::Alarm made;
    made.trigger = store::AlarmOffset{offsetOf(*alarm, start), fromDue};
    edit.values.alarms.push_back(std::move(made));
  }
  return {};
}

store::RecurrenceRule ruleFor(store::RecurrenceRule rule, const Times& times, const store::Zone& zone) {
  // Of times of day the last moment is said in UTC (RFC 5545, 3.3.10).
  if (!rule.until || times.allDay || rule.until->kind != store::CalendarTime::Kind::kDate) { return rule; }
  const LocalTime last = LocalTime(LocalDay(rule.until->local) + 1) - 1;
  rule.until = store::CalendarTime{store::CalendarTime::Kind::kUtc, store::Zone().toLocal(zone.toMoment(last)), {}};
  return rule;
}

Read<store::Zone> zoneFor(const FieldWords& words, const store::Zone& usual) {
  if (!words.zone) { return usual; }
  if (const auto zone = store::Zone::named(*words.zone)) { return *zone; }
  return misread(tr("There is no time zone \"{}\"; write its name such as Europe/Berlin or UTC", *words.zone),
                 *words.zone);
}

store::CalendarTime calendarTime(LocalTime time, bool allDay, const store::Zone& zone) {
  if (allDay) { return {store::CalendarTime::Kind::kDate, LocalTime(LocalDay(time)), {}}; }
  return store::zonedTime(zone.toMoment(time), zone);
}

}  // namespace orlocal::host
