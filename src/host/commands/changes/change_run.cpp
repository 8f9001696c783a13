#include "host/commands/changes/change_run.h"

#include <istream>
#include <ostream>
#include <utility>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <pwd.h>
#include <unistd.h>

#include "base/text.h"
#include "base/translation.h"
#include "base/try.h"
#include "host/commands/command_line/store_session.h"
#include "host/commands/command_line/terminal_text.h"
#include "host/commands/command_line/trouble.h"
#include "host/commands/words/date_words.h"
#include "host/commands/words/day_words.h"
#include "host/commands/words/time_words.h"

namespace orlocal::host {
namespace {

using store::ItemKind;
using store::Span;

constexpr const char* kSpanRemedy =
    translatable("add --all, or --occurrence DAY with --this (that one alone) or --future (it and the later ones)");

/// The day of `--occurrence`, and the time behind it where one was written.
struct OccurrenceWords {
  store::LocalDay day;
  std::optional<std::string> time;
};

Result<OccurrenceWords> readOccurrence(const std::string& text, const WordsSetting& setting) {
  WordCursor words(text, setting);
  ORLOCAL_TRY(const auto day, takeDay(words));
  if (!day) { return words.refused(tr("This is no day; write the occurrence's, such as 2026-11-02 or friday")); }
  OccurrenceWords read{*day, std::nullopt};
  words.take(Term::kAt);
  ORLOCAL_TRY(const auto time, takeTime(words, true));
  if (time) { read.time = fmt::format("{:02}:{:02}", time->count() / 60, time->count() % 60); }
  if (!words.done()) { return words.refused(tr("This is no time of day")); }
  return read;
}

/// In English or in the language of the question.
bool saysYes(const std::string& answer) {
  return answer == "y" || answer == "yes" || answer == translated("y") || answer == translated("yes");
}

Result<bool> repeats(store::CalendarStore& store, const store::Item& item) {
  if (!item.recurrence.empty()) { return true; }
  ORLOCAL_TRY(const auto whole, store.wholeItem(item.id));
  return whole && !whole->changed.empty();
}

/// How much of the series; none when it was told that nobody says.
Result<std::optional<Span>> spanFor(ChangeRun& run, const TargetWords& words, const ChosenItem& chosen,
                                    const char* question) {
  if (words.all) { return Span::kAll; }
  if (words.future) { return Span::kFuture; }
  if (chosen.occurrence) { return Span::kThis; }
  const std::string title = printable(chosen.item->title.value_or(""));
  const auto answer = run.answer(tr("\"{}\" repeats. {} [y/N] ", title, translated(question)));
  if (!answer) {
    tellUsage(run.context(), tr("\"{}\" repeats; {}.", title, translated(kSpanRemedy)));
    return std::nullopt;
  }
  if (saysYes(*answer)) { return Span::kAll; }
  run.context().streams.err << tr("Nothing was done. For a part of the series {}.\n", translated(kSpanRemedy));
  return std::nullopt;
}

}  // namespace

ChangeRun::ChangeRun(CommandContext& context, std::shared_ptr<store::CalendarStore> store, bool dryRun)
    : m_context(context),
      m_store(std::move(store)),
      m_viewer(store::Zone::ofUser()),
      m_setting(settingOfUser(m_viewer.toLocal(store::now()))),
      m_dryRun(dryRun) {}

Result<ChangeRun> ChangeRun::begin(CommandContext& context, bool dryRun, NoStore noStore) {
  ORLOCAL_TRY(auto store, openStoreToChange(dryRun, noStore));
  return ChangeRun(context, std::move(store), dryRun);
}

std::string ChangeRun::person() {
  const uid_t id = ::geteuid();
  const passwd* user = ::getpwuid(id);
  return fmt::format("{} {}", id, user != nullptr ? user->pw_name : "");
}

void ChangeRun::beginCommand(std::string words) { m_store->beginCommand({person(), std::move(words)}); }

std::optional<std::string> ChangeRun::answer(const std::string& question) {
  Streams& streams = m_context.streams;
  if (!streams.inIsTerminal) { return std::nullopt; }
  streams.err << question << std::flush;
  std::string line;
  std::getline(streams.in, line);
  return caseFolded(trimmed(line));
}

Result<std::optional<bool>> ChangeRun::agreed(const std::string& question, bool yes) {
  if (yes || m_dryRun) { return true; }
  const auto said = answer(tr("{} [y/N] ", question));
  if (said) {
    const bool wanted = saysYes(*said);
    if (!wanted) { m_context.streams.err << tr("Nothing was done.\n"); }
    return wanted;
  }
  tellUsage(m_context, tr("{} Add --yes.", question));
  return std::nullopt;
}

ExitStatus tellUsage(CommandContext& context, std::string_view sentence) {
  tellTrouble(context.streams.err, sentence);
  return ExitStatus::kUsage;
}

ExitStatus tellMisread(CommandContext& context, const Failure& why, std::string_view text) {
  tellUsage(context, why.message);
  if (!why.place || *why.place > text.size()) { return ExitStatus::kUsage; }
  const std::string before = printable(text.substr(0, *why.place));
  const std::string_view rest = text.substr(*why.place);
  const std::string word = printable(rest.substr(0, rest.find_first_of(" \t\n")));
  context.streams.err << "  " << printable(text) << "\n  " << std::string(displayWidth(before), ' ')
                      << std::string(std::max<std::size_t>(displayWidth(word), 1), '^') << '\n';
  return ExitStatus::kUsage;
}

void addTargetOptions(CLI::App& command, TargetWords& words) {
  command.add_option("--in", words.calendars, "Only in this calendar or reminder list; may be repeated")
      ->type_name("TITLE")
      ->allow_extra_args(false);
  CLI::Option* occurrence =
      command
          .add_option("--occurrence", words.occurrence, "The occurrence of a series on this day, perhaps with its time")
          ->type_name("DAY");
  CLI::Option* thisOne = command.add_flag("--this", words.thisOne, "That occurrence alone")->needs(occurrence);
  CLI::Option* future =
      command.add_flag("--future", words.future, "That occurrence and the later ones")->needs(occurrence);
  command.add_flag("--all", words.all, "All of a series")->excludes(thisOne)->excludes(future);
  thisOne->excludes(future);
}

Result<std::optional<Target>> chooseTarget(ChangeRun& run, const TargetWords& words, const char* question,
                                           std::optional<ItemKind> kind) {
  ItemWords item{.what = words.what, .calendars = words.calendars, .kind = kind};
  if (!words.occurrence.empty()) {
    const auto occurrence = readOccurrence(words.occurrence, run.setting());
    if (!occurrence) {
      tellMisread(run.context(), occurrence.error(), words.occurrence);
      return std::nullopt;
    }
    item.day = occurrence->day;
    item.time = occurrence->time;
  }
  ORLOCAL_TRY(ChosenItem chosen, chooseItem(run.store(), run.viewer(), item));
  Target target{chosen, chosen.item, std::nullopt, Span::kAll};
  if (chosen.item->kind == ItemKind::kReminder) { return target; }
  ORLOCAL_TRY(const bool series, repeats(run.store(), *chosen.item));
  if (!series) { return target; }
  ORLOCAL_TRY(const auto span, spanFor(run, words, chosen, question));
  if (!span) { return std::nullopt; }
  target.span = *span;
  if (*span == Span::kAll) { return target; }
  target.occurrence = chosen.occurrence;
  ORLOCAL_TRY(target.row, run.store().item(chosen.occurrence->item));
  if (target.row == nullptr) {
    return failure(ErrorCode::kNotFound, tr("The occurrence is no longer in the calendar store."));
  }
  return target;
}

}  // namespace orlocal::host
