#include <memory>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include "base/translation.h"
#include "base/try.h"
#include "host/commands/changes/change_commands.h"
#include "host/commands/changes/change_run.h"
#include "host/commands/changes/item_fields.h"
#include "host/commands/changes/item_report.h"
#include "host/commands/command_line/store_session.h"

namespace orlocal::host {
namespace {

using store::Calendar;
using store::ItemEdit;
using store::ItemField;
using store::ItemKind;

struct NewItemWords {
  std::vector<std::string> text;
  std::string calendar, list;
  bool reminder = false, dryRun = false;
  FieldWords fields;

  std::string sentence() const { return fmt::format("{}", fmt::join(text, " ")); }
  ItemKind kind() const { return reminder || !list.empty() ? ItemKind::kReminder : ItemKind::kEvent; }
};

/// What it is called and when it is, by the text and the options.
Read<TitleAndWhen> readSentence(const NewItemWords& words, const WordsSetting& setting) {
  const std::string text = words.sentence();
  TitleAndWhen read;
  if (!words.fields.title) {
    auto sentence = readTitleAndWhen(text, setting);
    if (!sentence) { return tl::unexpected(Misread{sentence.error(), text}); }
    read = *std::move(sentence);
  } else if (!text.empty()) {
    auto when = readWhen(text, setting);
    if (!when) { return tl::unexpected(Misread{when.error(), text}); }
    read.when = *std::move(when);
  }
  if (words.fields.title) { read.title = *words.fields.title; }
  if (read.title.empty()) {
    return tl::unexpected(Misread{
        {ErrorCode::kInvalid, tr("There is no title; write one before the time, or --title TEXT"), std::nullopt},
        text});
  }
  auto when = withOptions(std::move(read.when), words.fields, setting);
  if (!when) { return tl::unexpected(when.error()); }
  read.when = *std::move(when);
  return read;
}

Result<Calendar> targetOf(store::CalendarStore& store, const NewItemWords& words) {
  const std::string& name = words.list.empty() ? words.calendar : words.list;
  if (!name.empty()) { return theCalendar(store, name, words.kind()); }
  ORLOCAL_TRY(const auto standard, store.defaultCalendar(store::calendarKindOf(words.kind())));
  if (standard) { return *standard; }
  return failure(ErrorCode::kNotFound, tr("No calendar here takes it; make one with: orlocal calendars new TITLE"));
}

/// The times of an event, or the due date of a reminder that has one.
Read<std::optional<Times>> readTimes(const NewItemWords& words, const When& when, const WordsSetting& setting) {
  const bool reminder = words.kind() == ItemKind::kReminder;
  const std::string text = words.sentence();
  if (reminder && when.empty()) { return std::nullopt; }
  if (reminder && (when.end || when.length || when.lastDay)) {
    return tl::unexpected(Misread{
        {ErrorCode::kInvalid, tr("A reminder is due at a moment and has no length; leave the end out"), std::nullopt},
        text});
  }
  const auto times = timesOf(when, setting);
  if (!times) { return tl::unexpected(Misread{times.error(), text}); }
  return *times;
}

Read<ItemEdit> editFor(const NewItemWords& words, const TitleAndWhen& read, const ChangeRun& run) {
  ItemEdit edit;
  edit.values.kind = words.kind();
  if (auto put = putTexts(words.fields, edit); !put) { return tl::unexpected(put.error()); }
  edit.values.title = read.title;
  const auto zone = zoneFor(words.fields, run.viewer());
  if (!zone) { return tl::unexpected(zone.error()); }
  const auto times = readTimes(words, read.when, run.setting());
  if (!times) { return tl::unexpected(times.error()); }
  const store::LocalTime start = *times ? (*times)->start : store::LocalTime();
  if (auto put = putAlarms(words.fields, run.setting(), start, edit); !put) { return tl::unexpected(put.error()); }
  if (!*times) { return edit; }
  edit.values.endOrDue() = calendarTime((*times)->start, (*times)->allDay, *zone);
  if (words.kind() == ItemKind::kEvent) {
    edit.values.start = edit.values.end;
    edit.values.end = calendarTime((*times)->end, (*times)->allDay, *zone);
  }
  if (read.when.repeat) { edit.values.recurrence.rules = {ruleFor(*read.when.repeat, **times, *zone)}; }
  return edit;
}

Result<ExitStatus> makeItem(const NewItemWords& words, CommandContext& context) {
  ORLOCAL_TRY(ChangeRun run, ChangeRun::begin(context, words.dryRun, NoStore::kIsMade));
  const auto read = readSentence(words, run.setting());
  if (!read) { return tellMisread(context, read.error().why, read.error().text); }
  auto edit = editFor(words, *read, run);
  if (!edit) { return tellMisread(context, edit.error().why, edit.error().text); }
  ORLOCAL_TRY(const Calendar calendar, targetOf(run.store(), words));
  edit->values.calendar = calendar.id;
  run.beginCommand("new " + quotedTitle(edit->values));
  const bool event = words.kind() == ItemKind::kEvent;
  ORLOCAL_TRY(store::Item made,
              about(edit->values, event ? run.store().saveEvent(*edit, std::nullopt, store::Span::kThis)
                                        : run.store().saveReminder(*edit)));
  const auto overlaps = overlapsOfWritten(run, made);
  // What was not made has no name that it could be found by.
  if (run.dryRun()) { made.identifier = made.itemIdentifier = made.uid = {}; }
  ORLOCAL_CHECK(tellItem(run, {translatable("Made"), translatable("Would make")}, made, calendar, overlaps));
  return ExitStatus::kDone;
}

}  // namespace

void registerNewCommand(CommandLine& line) {
  const auto words = std::make_shared<NewItemWords>();
  CLI::App& command = line.add("new",
                               "Make an event or a reminder: new \"Lunch with Grace tomorrow 12:30 1h\".\n"
                               "What stands at the end says when; quotes and --title keep words in the title.",
                               [words](CommandContext& context) { return makeItem(*words, context); });
  command.footer(
      "  orlocal new \"Lunch with Grace tomorrow 12:30 1h\" --alarm 15m\n"
      "  orlocal new \"Review every friday at 14h\" --calendar Work --until 2026-12-18\n"
      "  orlocal new --reminder \"Pay rent friday\" --repeat monthly");
  command.add_option("text", words->text, "Its title, then when it is")->type_name("WORDS");
  command.add_flag("--reminder", words->reminder, "A reminder instead of an event");
  command.add_option("--list", words->list, "A reminder, in this list")->type_name("TITLE");
  command
      .add_option("--calendar", words->calendar, "The calendar that it goes to (default: the one that is the default)")
      ->type_name("TITLE");
  addFieldOptions(command, words->fields);
  command.add_flag("--dry-run", words->dryRun, "Say what would be made, and make nothing");
}

}  // namespace orlocal::host
