#include <memory>

#include <CLI/CLI.hpp>

#include "base/translation.h"
#include "base/try.h"
#include "host/commands/changes/change_commands.h"
#include "host/commands/changes/change_run.h"
#include "host/commands/changes/item_fields.h"
#include "host/commands/changes/item_report.h"
#include "host/commands/command_line/store_session.h"
#include "store/edits/event_times.h"

namespace orlocal::host {
namespace {

using store::Calendar;
using store::ItemEdit;
using store::ItemField;
using store::ItemKind;

struct EditWords {
  TargetWords target;
  std::string calendar;
  bool dryRun = false;
  FieldWords fields;

  /// An empty `--repeat` takes the rules away.
  bool endsRepeating() const { return fields.repeat && fields.repeat->empty(); }
};

/// What an option leaves open is as it was, but for `--until` and `--count`: they are of the rule that it has.
When whenBefore(const store::Item& series, const FieldWords& words) {
  When when;
  const bool ends = words.until || words.count;
  if (ends && !words.repeat && !series.recurrence.rules.empty()) { when.repeat = series.recurrence.rules.front(); }
  return when;
}

void putEventTimes(ItemEdit& edit, const Times& times, const store::Zone& zone, bool inZone) {
  edit.set.add(ItemField::kStart);
  edit.set.add(ItemField::kEnd);
  if (inZone) {
    edit.values.start = calendarTime(times.start, times.allDay, zone);
    edit.values.end = calendarTime(times.end, times.allDay, zone);
    return;
  }
  edit.set.add(ItemField::kAllDay);
  const store::LocalTime end = times.allDay ? times.end - 1 : times.end;
  edit.times = store::ShownTimes{zone.toMoment(times.start), zone.toMoment(end), times.allDay};
}

void putDue(ItemEdit& edit, const Times& times, const store::Zone& zone) {
  const auto before = edit.values.due;
  edit.set.add(ItemField::kDue);
  edit.values.due = calendarTime(times.start, times.allDay, zone);
  // A reminder that starts before it is due keeps the time between both.
  if (!edit.values.start || !before) { return; }
  const auto lead = before->local - edit.values.start->local;
  edit.set.add(ItemField::kStart);
  edit.values.start = edit.values.due;
  edit.values.start->local -= lead;
}

Read<void> putTimes(const EditWords& words, const Target& target, const ChangeRun& run, ItemEdit& edit) {
  const FieldWords& fields = words.fields;
  const bool event = edit.values.kind == ItemKind::kEvent;
  const std::string text = fields.start.value_or(fields.end.value_or(fields.duration.value_or("")));
  const auto zone = zoneFor(fields, run.viewer());
  if (!zone) { return tl::unexpected(zone.error()); }
  const bool clearsDue = !event && fields.start && fields.start->empty();
  FieldWords said = fields;
  if (clearsDue) { said.start.reset(); }
  const auto when = withOptions(whenBefore(*target.chosen.item, said), said, run.setting());
  if (!when) { return tl::unexpected(when.error()); }
  auto times = shownTimesOf(*target.row, target.occurrence, run.viewer());
  const bool moves = said.start || said.end || said.duration || said.zone || said.allDay;
  if (!event && (when->end || when->length || when->lastDay)) {
    return tl::unexpected(Misread{{ErrorCode::kInvalid, tr("A reminder has no length"), std::nullopt}, text});
  }
  if (moves) {
    const auto wanted = times ? timesOf(*when, *times) : timesOf(*when, run.setting());
    if (!wanted) { return tl::unexpected(Misread{wanted.error(), text}); }
    times = *wanted;
    event ? putEventTimes(edit, *times, *zone, said.zone.has_value()) : putDue(edit, *times, *zone);
  }
  if (clearsDue) {
    edit.set.add(ItemField::kDue);
    edit.values.due.reset();
    times.reset();
  }
  if (words.endsRepeating()) {
    edit.set.add(ItemField::kRules);
    edit.values.recurrence = store::Recurrence();
  } else if (when->repeat && times) {
    edit.set.add(ItemField::kRules);
    edit.values.recurrence.rules = {ruleFor(*when->repeat, *times, *zone)};
  } else if (when->repeat) {
    return tl::unexpected(Misread{
        {ErrorCode::kInvalid, tr("A reminder that repeats needs a date; add --start DAY"), std::nullopt}, text});
  }
  return putAlarms(fields, run.setting(), times ? times->start : store::LocalTime(), edit);
}

Result<ExitStatus> changeItem(const EditWords& words, CommandContext& context) {
  ORLOCAL_TRY(ChangeRun run, ChangeRun::begin(context, words.dryRun));
  ORLOCAL_TRY(const auto target, chooseTarget(run, words.target, translatable("Change all of it?")));
  if (!target) { return ExitStatus::kUsage; }
  ItemEdit edit;
  edit.opened = target->row;
  edit.values = *target->row;
  const ItemKind kind = target->row->kind;
  if (auto put = putTexts(words.fields, edit); !put) { return tellMisread(context, put.error().why, put.error().text); }
  if (auto put = putTimes(words, *target, run, edit); !put) {
    return tellMisread(context, put.error().why, put.error().text);
  }
  if (!words.calendar.empty()) {
    ORLOCAL_TRY(const Calendar to, theCalendar(run.store(), words.calendar, kind));
    edit.set.add(ItemField::kCalendar);
    edit.values.calendar = to.id;
  }
  if (edit.set.empty()) {
    return tellUsage(context, tr("Say what is to be changed: --title, --start, --location and so on."));
  }
  run.beginCommand("edit " + quotedTitle(*target->row));
  ORLOCAL_TRY(
      const store::Item written,
      about(*target->row, kind == ItemKind::kEvent ? run.store().saveEvent(edit, target->occurrence, target->span)
                                                   : run.store().saveReminder(edit)));
  ORLOCAL_TRY(const auto calendars, allCalendars(run.store()));
  Calendar calendar = target->chosen.calendar;
  for (const Calendar& each : calendars) {
    if (each.id == written.calendar) { calendar = each; }
  }
  std::optional<std::vector<Overlap>> overlaps;
  if (edit.set.has(ItemField::kStart) || edit.set.has(ItemField::kRules)) {
    overlaps = overlapsOfWritten(run, written, {target->row->id, target->chosen.item->id});
  }
  ORLOCAL_CHECK(tellItem(run, {translatable("Changed"), translatable("Would be")}, written, calendar, overlaps));
  return ExitStatus::kDone;
}

}  // namespace

void registerEditCommand(CommandLine& line) {
  const auto words = std::make_shared<EditWords>();
  CLI::App& command = line.add("edit",
                               "Change an event or a reminder; what no option names stays. An empty text takes\n"
                               "away what is there: --location \"\".",
                               [words](CommandContext& context) { return changeItem(*words, context); });
  command.footer(
      "  orlocal edit Lunch --start '13:00' --location Luigi\n"
      "  orlocal edit Review --occurrence friday --this --duration 2h");
  command.add_option("what", words->target.what, "Its title, words of it, or its identifier or the end of that")
      ->type_name("WHAT")
      ->required();
  addTargetOptions(command, words->target);
  command.add_option("--calendar", words->calendar, "The calendar that it goes to")->type_name("TITLE");
  addFieldOptions(command, words->fields);
  command.add_flag("--dry-run", words->dryRun, "Say how it would be, and change nothing");
}

}  // namespace orlocal::host
