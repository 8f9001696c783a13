#include <algorithm>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include "base/translation.h"
#include "base/try.h"
#include "host/commands/command_line/command.h"
#include "host/commands/command_line/json_text.h"
#include "host/commands/command_line/store_session.h"
#include "host/commands/command_line/terminal_text.h"
#include "host/commands/describing/format_option.h"
#include "host/commands/describing/item_json.h"
#include "host/commands/views/view_commands.h"

namespace orlocal::host {
namespace {

struct TypeName {
  store::Source::Type type;
  const char* name;
};
constexpr TypeName kTypeNames[] = {{store::Source::Type::kLocal, translatable("local")},
                                   {store::Source::Type::kCalDav, "CalDAV"},
                                   {store::Source::Type::kExchange, "Exchange"},
                                   {store::Source::Type::kSubscription, translatable("subscription")},
                                   {store::Source::Type::kBirthday, translatable("birthdays")}};

const char* nameOf(store::Source::Type type) {
  const auto* found = std::find_if(std::begin(kTypeNames), std::end(kTypeNames),
                                   [type](const TypeName& row) { return row.type == type; });
  return found != std::end(kTypeNames) ? found->name : "?";
}

std::string colorText(const std::optional<store::Rgb>& color) {
  if (!color) { return ""; }
  const auto [red, green, blue] = color->bytes();
  return fmt::format("#{:02X}{:02X}{:02X}", red, green, blue);
}

/// A calendar with what the store says of it beside its own fields.
struct Listed {
  store::Calendar calendar;
  bool isDefault;
};

Result<std::vector<Listed>> listed(store::CalendarStore& store) {
  std::vector<Listed> all;
  for (const auto kind : {store::CalendarKind::kEvents, store::CalendarKind::kReminders}) {
    ORLOCAL_TRY(const auto standard, store.defaultCalendar(kind));
    ORLOCAL_TRY(auto calendars, store.calendars(kind));
    for (auto& calendar : calendars) {
      const bool isDefault = standard && standard->id == calendar.id;
      if (calendar.kind == store::CalendarKind::kBoth && kind == store::CalendarKind::kReminders) {
        const auto known =
            std::find_if(all.begin(), all.end(), [&](const Listed& row) { return row.calendar.id == calendar.id; });
        known->isDefault = known->isDefault || isDefault;
        continue;
      }
      all.push_back({std::move(calendar), isDefault});
    }
  }
  return all;
}

std::string notesOn(const Listed& row) {
  std::vector<std::string> notes;
  if (row.isDefault) { notes.emplace_back(tr("default")); }
  if (row.calendar.subscribed) { notes.emplace_back(tr("subscribed")); }
  if (row.calendar.readOnly) { notes.emplace_back(tr("read-only")); }
  return fmt::format("{}", fmt::join(notes, ", "));
}

const char* kindOf(const Listed& row) {
  constexpr const char* kNames[] = {translatable("events"), translatable("reminders"), translatable("both")};
  return kNames[static_cast<std::size_t>(row.calendar.kind)];
}

void printTable(const std::vector<Listed>& rows, const CalendarNames& names, const Ink& ink, std::ostream& out) {
  std::vector<std::vector<std::string>> cells{{tr("TITLE"), tr("HOLDS"), tr("FROM"), tr("COLOUR"), ""}};
  for (const Listed& row : rows) {
    cells.push_back({printable(names.name(row.calendar)), translated(kindOf(row)),
                     translated(nameOf(row.calendar.type)), colorText(row.calendar.color), notesOn(row)});
  }
  std::vector<std::size_t> widths(cells.front().size());
  for (const auto& row : cells) {
    for (std::size_t i = 0; i < row.size(); ++i) { widths[i] = std::max(widths[i], displayWidth(row[i])); }
  }
  for (std::size_t r = 0; r < cells.size(); ++r) {
    std::string text;
    for (std::size_t i = 0; i < cells[r].size(); ++i) { text += padded(cells[r][i], widths[i]) + "  "; }
    text.erase(text.find_last_not_of(' ') + 1);
    if (r == 0) {
      out << (ink.on() ? "  " : "") << ink.dim(text) << '\n';
    } else {
      out << (ink.on() ? ink.colored(rows[r - 1].calendar.color, "● ") : "") << text << '\n';
    }
  }
}

nlohmann::json asJson(const std::vector<Listed>& rows, const CalendarNames& names) {
  nlohmann::json json = nlohmann::json::array();
  for (const Listed& row : rows) {
    const auto color = colorText(row.calendar.color);
    json.push_back({{"title", row.calendar.title},
                    {"identifier", row.calendar.identifier},
                    {"holds", kindOf(row)},
                    {"from", nameOf(row.calendar.type)},
                    {"account", jsonText(names.account(row.calendar))},
                    {"notes", jsonText(row.calendar.notes)},
                    {"colour", color.empty() ? nlohmann::json(nullptr) : nlohmann::json(color)},
                    {"default", row.isDefault},
                    {"readOnly", row.calendar.readOnly},
                    {"subscribed", row.calendar.subscribed}});
  }
  return json;
}

Result<ExitStatus> runCalendars(const FormatOption& format, CommandContext& context) {
  ORLOCAL_TRY(const auto store, openUserStore());
  ORLOCAL_TRY(const auto rows, listed(*store));
  ORLOCAL_TRY(const CalendarNames names, CalendarNames::of(*store));
  if (context.options.json) {
    printJson(asJson(rows, names), context.streams.out);
  } else if (format.isGiven()) {
    format.print(asJson(rows, names), context.streams.out);
  } else {
    printTable(rows, names, Ink(context.streams.colors), context.streams.out);
  }
  return ExitStatus::kDone;
}

}  // namespace

CLI::App& registerCalendarsCommand(CommandLine& line) {
  const auto format = std::make_shared<FormatOption>(RowKind::kCalendar);
  CLI::App& command = line.add("calendars", "List the calendars and reminder lists of the store, or change them.",
                               [format](CommandContext& context) { return runCalendars(*format, context); });
  format->addTo(command);
  command.footer("  orlocal calendars\n  orlocal calendars new Holidays");
  return command;
}

}  // namespace orlocal::host
