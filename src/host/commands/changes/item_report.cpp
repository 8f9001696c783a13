#include "host/commands/changes/item_report.h"

#include <ostream>

#include <fmt/format.h>

#include "base/translation.h"
#include "base/try.h"
#include "host/commands/choosing/item_choice.h"
#include "host/commands/command_line/json_text.h"
#include "host/commands/command_line/terminal_text.h"
#include "host/commands/command_line/told_line.h"
#include "host/commands/command_line/trouble.h"
#include "host/commands/describing/item_json.h"
#include "host/commands/words/day_words.h"
#include "host/commands/words/item_words.h"
#include "host/commands/words/rule_words.h"
#include "store/edits/event_times.h"

namespace orlocal::host {
namespace {

using store::Item;
using store::ItemKind;
using store::LocalDay;
using store::LocalTime;

std::string dueInWords(const Times& due) {
  return tr("due {}", due.allDay ? shortDay(LocalDay(due.start)) : timesInWords(due));
}

}  // namespace

std::optional<Times> shownTimesOf(const Item& item, const std::optional<store::Occurrence>& occurrence,
                                  const store::Zone& viewer) {
  if (item.kind == ItemKind::kReminder) {
    if (!item.due) { return std::nullopt; }
    const LocalTime due = viewer.toLocal(store::momentOf(*item.due, viewer));
    const bool wholeDay = item.due->kind == store::CalendarTime::Kind::kDate;
    return Times{due, wholeDay ? due + 86'400 : due, wholeDay};
  }
  const store::ShownTimes shown = store::shownTimes(item, occurrence, viewer);
  if (!shown.start) { return std::nullopt; }
  Times times{viewer.toLocal(*shown.start), viewer.toLocal(shown.end.value_or(*shown.start)), shown.allDay};
  if (times.allDay) { times = {LocalTime(LocalDay(times.start)), LocalTime(LocalDay(times.end) + 1), true}; }
  return times;
}

std::string quotedTitle(const Item& item) { return '"' + printable(item.title.value_or("")) + '"'; }

std::string itemLine(const Item& item, const store::Calendar& calendar, const store::Zone& viewer,
                     const std::optional<store::Occurrence>& occurrence) {
  std::string line = quotedTitle(item);
  if (!item.itemIdentifier.empty()) { line += fmt::format(" ({})", shortIdentifier(item)); }
  std::string parts;
  const auto add = [&](const std::string& part) { parts += (parts.empty() ? ": " : ", ") + part; };
  if (const auto times = shownTimesOf(item, occurrence, viewer)) {
    add(item.kind == ItemKind::kEvent ? timesInWords(*times) : dueInWords(*times));
  } else {
    add(tr("no date"));
  }
  for (const store::RecurrenceRule& rule : item.recurrence.rules) { add(ruleWords(rule, std::nullopt, viewer)); }
  for (const store::Alarm& alarm : item.alarms) { add(tr("alarm {}", alarmWords(alarm, item.kind, viewer))); }
  if (item.location) { add(tr("at {}", printable(*item.location))); }
  if (item.completed) { add(tr("done")); }
  add(tr("in {}", printable(calendar.title)));
  return line + parts;
}

std::vector<Overlap> overlapsOfWritten(ChangeRun& run, const Item& item, std::vector<store::ItemId> own) {
  own.push_back(item.id);
  if (item.series) { own.push_back(*item.series); }
  auto overlaps = overlapsOf(run.store(), run.viewer(), item, own);
  if (overlaps) { return *std::move(overlaps); }
  tellTrouble(run.context().streams.err,
              tr("What {} overlaps cannot be told: {}", quotedTitle(item), overlaps.error().message));
  return {};
}

Status tellItem(ChangeRun& run, const Outcome& outcome, const Item& item, const store::Calendar& calendar,
                const std::optional<std::vector<Overlap>>& overlaps) {
  std::ostream& out = run.context().streams.out;
  const bool json = run.context().options.json;
  if (!json) {
    tellLine(run.context().streams, translated(run.dryRun() ? outcome.rehearsed : outcome.done) + ' ' +
                                        itemLine(item, calendar, run.viewer()));
  }
  if (!json && (!overlaps || overlaps->empty())) { return {}; }
  ORLOCAL_TRY(const auto names, CalendarNames::of(run.store()));
  if (json) {
    nlohmann::json told = itemJson(item, std::nullopt, names, run.viewer());
    if (overlaps) { told["overlaps"] = overlapsJson(*overlaps, names, run.viewer()); }
    printJson(told, out);
    return {};
  }
  std::optional<LocalDay> day;
  if (const auto times = shownTimesOf(item, std::nullopt, run.viewer()); times && item.recurrence.empty()) {
    day = LocalDay(times->start);
  }
  for (const std::string& line : overlapLines(*overlaps, day, names, run.viewer())) { out << line << '\n'; }
  return {};
}

}  // namespace orlocal::host
