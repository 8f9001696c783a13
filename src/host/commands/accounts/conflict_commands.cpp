#include <algorithm>
#include <iterator>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include "accounts/sync/conflict_choice.h"
#include "accounts/sync/conflict_view.h"
#include "base/translation.h"
#include "base/try.h"
#include "host/commands/accounts/account_commands.h"
#include "host/commands/accounts/account_words.h"
#include "host/commands/command_line/json_text.h"
#include "host/commands/command_line/store_session.h"
#include "host/commands/command_line/terminal_text.h"
#include "store/remote_reader.h"

namespace orlocal::host {
namespace {

using accounts::ConflictChoice;
using Json = nlohmann::json;
using store::Conflict;

struct ChoiceWord {
  const char* word;
  ConflictChoice choice;
};
constexpr ChoiceWord kChoices[] = {
    {"mine", ConflictChoice::kMine}, {"theirs", ConflictChoice::kTheirs}, {"both", ConflictChoice::kBoth}};

struct KeepWords {
  std::string choice;
  std::vector<store::ConflictId> ids;
};

/// A conflict and where it is.
struct PlacedConflict {
  Conflict conflict;
  std::string calendar;
};

Result<std::vector<PlacedConflict>> placedConflicts(store::CalendarStore& store) {
  store::RemoteReader reader(store);
  ORLOCAL_TRY(auto conflicts, reader.conflicts());
  if (conflicts.empty()) { return std::vector<PlacedConflict>(); }
  ORLOCAL_TRY(const auto mirrors, reader.allMirrors());
  ORLOCAL_TRY(const auto calendars, allCalendars(store));
  std::vector<PlacedConflict> placed;
  for (Conflict& conflict : conflicts) {
    std::string title;
    for (const store::Mirror& mirror : mirrors) {
      if (mirror.id != conflict.mirror) { continue; }
      const auto found = std::find_if(calendars.begin(), calendars.end(),
                                      [&](const store::Calendar& each) { return each.id == mirror.calendar; });
      if (found != calendars.end()) { title = found->title; }
    }
    placed.push_back({std::move(conflict), std::move(title)});
  }
  return placed;
}

Result<PlacedConflict> conflictWith(const std::vector<PlacedConflict>& all, store::ConflictId id) {
  const auto found =
      std::find_if(all.begin(), all.end(), [&](const PlacedConflict& each) { return each.conflict.id == id; });
  if (found != all.end()) { return *found; }
  return failure(ErrorCode::kNotFound,
                 tr("There is no conflict {}; orlocal conflicts lists those that there are.", id));
}

Json asJson(const PlacedConflict& each) {
  return {{"id", each.conflict.id},
          {"calendar", each.calendar},
          {"item", each.conflict.title},
          {"fields", accounts::fieldsOf(each.conflict)},
          {"mine", jsonText(each.conflict.mine)},
          {"theirs", jsonText(each.conflict.theirs)}};
}

Result<ExitStatus> listConflicts(CommandContext& context) {
  ORLOCAL_TRY(const auto store, openUserStore());
  ORLOCAL_TRY(const auto all, placedConflicts(*store));
  Json list = Json::array();
  std::vector<std::vector<std::string>> rows{{"ID", tr("CALENDAR"), tr("ITEM"), tr("WHAT DIFFERS")}};
  for (const PlacedConflict& each : all) {
    list.push_back(asJson(each));
    rows.push_back({std::to_string(each.conflict.id), each.calendar, each.conflict.title,
                    fmt::format("{}", fmt::join(accounts::fieldsOf(each.conflict), ", "))});
  }
  std::ostream& out = context.streams.out;
  if (context.options.json) {
    printJson(list, out);
  } else if (all.empty()) {
    out << tr("There are no conflicts.\n");
  } else {
    printColumns(rows, context.streams);
    out << tr(
        "\norlocal conflicts show ID shows both versions; orlocal conflicts keep mine, theirs or both decides.\n");
  }
  return ExitStatus::kDone;
}

void printVersion(const char* whose, const std::optional<std::string>& text, const std::vector<std::string>& lines,
                  std::ostream& out) {
  if (!text) {
    out << tr("  {:<7} (removed)\n", whose);
  } else if (lines.empty()) {
    out << tr("  {:<7} (nothing)\n", whose);
  }
  for (const std::string& line : lines) { out << fmt::format("  {:<7} {}\n", whose, printable(line)); }
}

Result<ExitStatus> showConflict(store::ConflictId id, CommandContext& context) {
  ORLOCAL_TRY(const auto store, openUserStore());
  ORLOCAL_TRY(const auto all, placedConflicts(*store));
  ORLOCAL_TRY(const PlacedConflict found, conflictWith(all, id));
  std::ostream& out = context.streams.out;
  if (context.options.json) {
    printJson(asJson(found), out);
    return ExitStatus::kDone;
  }
  const Conflict& conflict = found.conflict;
  out << tr("{} in {}: {}\n", printable(conflict.title), printable(found.calendar),
            printable(fmt::format("{}", fmt::join(accounts::fieldsOf(conflict), ", "))));
  for (const accounts::FieldVersions& field : accounts::differencesOf(conflict)) {
    out << printable(field.field) << '\n';
    printVersion("mine", conflict.mine, field.mine, out);
    printVersion("theirs", conflict.theirs, field.theirs, out);
  }
  return ExitStatus::kDone;
}

Result<ExitStatus> keepChosen(const KeepWords& words, CommandContext& context) {
  ORLOCAL_TRY(const auto store, openUserStore());
  ORLOCAL_TRY(const auto all, placedConflicts(*store));
  std::vector<Conflict> chosen;
  for (const store::ConflictId id : words.ids) {
    ORLOCAL_TRY(PlacedConflict found, conflictWith(all, id));
    const bool twice = std::any_of(chosen.begin(), chosen.end(), [&](const Conflict& each) { return each.id == id; });
    if (!twice) { chosen.push_back(std::move(found.conflict)); }
  }
  const auto* row = std::find_if(std::begin(kChoices), std::end(kChoices),
                                 [&](const ChoiceWord& each) { return words.choice == each.word; });
  for (const Conflict& conflict : chosen) { ORLOCAL_CHECK(accounts::settle(*store, conflict, row->choice)); }
  if (!context.options.json) {
    context.streams.out << trn("{} conflict settled; the next orlocal sync tells the server.\n",
                               "{} conflicts settled; the next orlocal sync tells the server.\n", chosen.size(),
                               chosen.size());
  }
  return ExitStatus::kDone;
}

}  // namespace

void registerConflictCommands(CommandLine& line) {
  CLI::App& conflicts = line.add("conflicts",
                                 "List what was changed both here and on a server and could not be merged. The\n"
                                 "server's version stands until you decide.",
                                 listConflicts);
  conflicts.footer("  orlocal conflicts");
  const auto id = std::make_shared<store::ConflictId>(0);
  CLI::App& show = line.addUnder(conflicts, "show", "Show both versions of what differs.",
                                 [id](CommandContext& context) { return showConflict(*id, context); });
  show.footer("  orlocal conflicts show 3");
  show.add_option("id", *id, "The conflict")->type_name("ID")->required();

  const auto words = std::make_shared<KeepWords>();
  CLI::App& keeping = line.addUnder(conflicts, "keep", "Decide which version stands.",
                                    [words](CommandContext& context) { return keepChosen(*words, context); });
  keeping.footer("  orlocal conflicts keep mine 3 4");
  std::vector<std::string> choices;
  for (const ChoiceWord& row : kChoices) { choices.emplace_back(row.word); }
  keeping
      .add_option("choice", words->choice,
                  "mine: the version of this machine; theirs: the server's; both: the server's, and mine as a further\n"
                  "item")
      ->type_name("mine|theirs|both")
      ->check(CLI::IsMember(choices))
      ->required();
  keeping.add_option("ids", words->ids, "The conflicts")->type_name("ID")->required();
}

}  // namespace orlocal::host
