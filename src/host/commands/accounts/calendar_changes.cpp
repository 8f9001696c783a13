#include <algorithm>
#include <memory>
#include <string>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "accounts/account_book.h"
#include "base/translation.h"
#include "base/try.h"
#include "host/commands/accounts/account_commands.h"
#include "host/commands/accounts/account_words.h"
#include "host/commands/command_line/store_session.h"
#include "host/commands/command_line/terminal_text.h"
#include "store/icalendar/calendar_color.h"

namespace orlocal::host {
namespace {

using store::Calendar;
using store::CalendarField;
using store::CalendarKind;

constexpr const char* kKindWords[] = {"events", "reminders"};

struct NewWords {
  std::string title, account, kind = kKindWords[0];
};

Result<store::SourceId> sourceFor(store::CalendarStore& store, const std::string& account) {
  if (!account.empty()) {
    ORLOCAL_TRY(const auto found, accounts::AccountBook(store).named(account));
    if (!isSubscription(found)) { return found.source; }
    return failure(ErrorCode::kRefused, tr("\"{}\" is a subscription and takes no calendars.", account));
  }
  ORLOCAL_TRY(const auto sources, store.sources());
  const auto local = std::find_if(sources.begin(), sources.end(), [](const store::Source& source) {
    return source.type == store::Source::Type::kLocal;
  });
  if (local != sources.end()) { return local->id; }
  return failure(ErrorCode::kNotFound, tr("The calendar store has no place for calendars of this machine's own."));
}

Result<ExitStatus> makeNew(const NewWords& words, bool dryRun) {
  ORLOCAL_TRY(const auto store, openStoreToChange(dryRun, NoStore::kIsMade));
  Calendar calendar;
  calendar.title = words.title;
  calendar.kind = words.kind == kKindWords[0] ? CalendarKind::kEvents : CalendarKind::kReminders;
  ORLOCAL_TRY(calendar.source, sourceFor(*store, words.account));
  ORLOCAL_CHECK(store->saveCalendar(calendar));
  return ExitStatus::kDone;
}

Result<ExitStatus> renameCalendar(const std::string& name, const std::string& title, bool dryRun) {
  ORLOCAL_TRY(const auto store, openStoreToChange(dryRun));
  ORLOCAL_TRY(Calendar calendar, theCalendar(*store, name));
  calendar.title = title;
  ORLOCAL_CHECK(store->saveCalendar(calendar, {CalendarField::kTitle}));
  return ExitStatus::kDone;
}

Result<ExitStatus> recolour(const std::string& name, const std::string& color, bool dryRun) {
  ORLOCAL_TRY(const auto store, openStoreToChange(dryRun));
  ORLOCAL_TRY(Calendar calendar, theCalendar(*store, name));
  calendar.color = store::parseColor(color);
  ORLOCAL_CHECK(store->saveCalendar(calendar, {CalendarField::kColor}));
  return ExitStatus::kDone;
}

Result<ExitStatus> removeCalendarNamed(const std::string& name, bool dryRun) {
  ORLOCAL_TRY(const auto store, openStoreToChange(dryRun));
  ORLOCAL_TRY(const Calendar calendar, theCalendar(*store, name));
  ORLOCAL_CHECK(store->removeCalendar(calendar.identifier));
  return ExitStatus::kDone;
}

struct DefaultWords {
  std::string which;
  bool events = false, reminders = false;
};

/// For what it holds or, of a calendar of both, for what the words say.
Result<ExitStatus> makeDefault(const DefaultWords& words, bool dryRun, CommandContext& context) {
  ORLOCAL_TRY(const auto store, openStoreToChange(dryRun));
  const auto kind = words.events == words.reminders
                        ? std::nullopt
                        : std::optional(words.events ? store::ItemKind::kEvent : store::ItemKind::kReminder);
  ORLOCAL_TRY(const Calendar calendar, theCalendar(*store, words.which, kind));
  for (const auto each : {store::ItemKind::kEvent, store::ItemKind::kReminder}) {
    if (kind ? each != *kind : !calendar.holds(each)) { continue; }
    ORLOCAL_CHECK(store->makeDefault(calendar.identifier, store::calendarKindOf(each)));
    const std::string title = printable(calendar.title);
    if (each == store::ItemKind::kEvent) {
      context.streams.out << (dryRun ? tr("New events would go to \"{}\".\n", title)
                                     : tr("New events go to \"{}\".\n", title));
    } else {
      context.streams.out << (dryRun ? tr("New reminders would go to \"{}\".\n", title)
                                     : tr("New reminders go to \"{}\".\n", title));
    }
  }
  return ExitStatus::kDone;
}

std::string objectionToColor(const std::string& words) {
  if (store::parseColor(words)) { return {}; }
  return tr("\"{}\" is no colour; write #RRGGBB or a name such as steelblue", words);
}

constexpr const char* kWhich =
    translatable("Its title; its identifier or \"TITLE (ACCOUNT)\" where several have that title");

}  // namespace

void registerCalendarChanges(CommandLine& line, CLI::App& calendars) {
  const auto dryRun = std::make_shared<bool>(false);
  const auto addDryRun = [dryRun](CLI::App& command) {
    command.add_flag("--dry-run", *dryRun, "Say whether it can be done, and change nothing");
  };
  const auto made = std::make_shared<NewWords>();
  CLI::App& add = line.addUnder(calendars, "new", "Make a calendar or reminder list.",
                                [made, dryRun](CommandContext&) { return makeNew(*made, *dryRun); });
  addDryRun(add);
  add.footer("  orlocal calendars new Holidays\n  orlocal calendars new Chores --kind reminders --account Cloud");
  add.add_option("title", made->title, "Its title")->type_name("TITLE")->required();
  add.add_option("--account", made->account, "On this account's server, at the next sync (default: here alone)")
      ->type_name("NAME");
  add.add_option("--kind", made->kind, "What it holds")
      ->type_name("events|reminders")
      ->check(CLI::IsMember({kKindWords[0], kKindWords[1]}))
      ->capture_default_str();

  struct Change {
    std::string which, value;
  };
  const auto renamed = std::make_shared<Change>();
  CLI::App& renaming = line.addUnder(
      calendars, "rename", "Give a calendar another title.",
      [renamed, dryRun](CommandContext&) { return renameCalendar(renamed->which, renamed->value, *dryRun); });
  addDryRun(renaming);
  renaming.footer("  orlocal calendars rename Work Office");
  renaming.add_option("calendar", renamed->which, kWhich)->type_name("OLD")->required();
  renaming.add_option("title", renamed->value, "Its title from now on")->type_name("NEW")->required();

  const auto recoloured = std::make_shared<Change>();
  CLI::App& recolouring = line.addUnder(
      calendars, "recolour", "Give a calendar another colour.",
      [recoloured, dryRun](CommandContext&) { return recolour(recoloured->which, recoloured->value, *dryRun); });
  addDryRun(recolouring);
  recolouring.footer("  orlocal calendars recolour Work '#2E8B57'");
  recolouring.add_option("calendar", recoloured->which, kWhich)->type_name("TITLE")->required();
  recolouring.add_option("colour", recoloured->value, "#RRGGBB, or the name of a colour")
      ->type_name("COLOUR")
      ->check(objectionToColor)
      ->required();

  const auto removed = std::make_shared<std::string>();
  CLI::App& removing =
      line.addUnder(calendars, "remove",
                    "Remove a calendar with all that is in it; one of an account goes on its server,\n"
                    "too, at the next sync.",
                    [removed, dryRun](CommandContext&) { return removeCalendarNamed(*removed, *dryRun); });
  addDryRun(removing);
  removing.footer("  orlocal calendars remove Holidays");
  removing.add_option("calendar", *removed, kWhich)->type_name("TITLE")->required();

  const auto standard = std::make_shared<DefaultWords>();
  CLI::App& choosing =
      line.addUnder(calendars, "default", "Choose where new events or reminders go.",
                    [standard, dryRun](CommandContext& context) { return makeDefault(*standard, *dryRun, context); });
  choosing.footer("  orlocal calendars default Work");
  choosing.add_option("calendar", standard->which, kWhich)->type_name("TITLE")->required();
  choosing.add_flag("--events", standard->events, "For events");
  choosing.add_flag("--reminders", standard->reminders, "For reminders");
  addDryRun(choosing);
}

}  // namespace orlocal::host
