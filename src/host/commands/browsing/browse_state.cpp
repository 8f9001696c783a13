#include "host/commands/browsing/browse_state.h"

#include <algorithm>
#include <utility>

#include "base/translation.h"
#include "host/commands/browsing/browse_presses.h"
#include "host/commands/views/day_grids.h"
#include "host/commands/words/day_words.h"

namespace orlocal::host {
namespace {

using store::LocalDay;

constexpr int kDaysListed = 14;
constexpr int kDaysInMonthGrid = 42;

/// A thing wherever it stands: a series goes by its first row, an occurrence by where the rule put it.
bool isSame(const AgendaLine& a, const AgendaLine& b) {
  if (a.when.has_value() != b.when.has_value()) { return false; }
  if (!a.when) { return a.item->id == b.item->id; }
  return a.when->event == b.when->event && a.when->originalStart == b.when->originalStart;
}

const std::vector<AgendaLine>* linesOn(const BrowseState& state, LocalDay day) {
  static const std::vector<AgendaLine> kNone;
  const auto found = state.days.lines.find(day);
  return found == state.days.lines.end() ? &kNone : &found->second;
}

/// Chooses what is sought, else the first thing of the day; in the list, else what comes first there.
void choose(BrowseState& state) {
  state.chosen.reset();
  std::optional<std::size_t> ofDay, sought;
  std::size_t row = 0;
  for (const BrowseSection& section : browseSections(state)) {
    for (const AgendaLine& line : *section.lines) {
      if (!ofDay && section.day == state.day) { ofDay = row; }
      const bool isSought = line.item->id == state.sought || (line.when && line.when->event == state.sought);
      if (!sought && isSought) { sought = row; }
      ++row;
    }
  }
  state.chosen = sought ? sought : ofDay;
  if (!state.chosen && state.inList && row > 0) { state.chosen = 0; }
}

}  // namespace

BrowseRange daysNeeded(const BrowseState& state) {
  const LocalDay first = weekStart(LocalDay(state.day.year(), state.day.month(), 1), state.firstWeekday);
  return {first, std::max(first + (kDaysInMonthGrid - 1), state.day + kDaysListed)};
}

std::vector<BrowseSection> browseSections(const BrowseState& state) {
  std::vector<BrowseSection> sections;
  const bool isToday = state.day == state.today();
  if (isToday && !state.days.overdue.empty()) {
    sections.push_back({tr("Overdue"), std::nullopt, &state.days.overdue});
  }
  for (LocalDay day = state.day; day < state.day + kDaysListed; ++day) {
    const auto* lines = linesOn(state, day);
    if (day != state.day && lines->empty()) { continue; }
    sections.push_back({longDay(day) + (day == state.today() ? tr(" (today)") : ""), day, lines});
  }
  if (isToday && !state.days.undated.empty()) {
    sections.push_back({tr("No date"), std::nullopt, &state.days.undated});
  }
  return sections;
}

std::vector<const AgendaLine*> browseRows(const BrowseState& state) {
  std::vector<const AgendaLine*> rows;
  for (const BrowseSection& section : browseSections(state)) {
    for (const AgendaLine& line : *section.lines) { rows.push_back(&line); }
  }
  return rows;
}

const AgendaLine* chosenRow(const BrowseState& state) {
  const auto rows = browseRows(state);
  return state.chosen && *state.chosen < rows.size() ? rows[*state.chosen] : nullptr;
}

void goTo(BrowseState& state, LocalDay day, store::ItemId item) {
  state.day = day;
  state.inList = state.inList || item != 0;
  state.sought = item;
  choose(state);
}

void takeDays(BrowseState& state, BrowseDays days) {
  const AgendaLine* chosen = chosenRow(state);
  const auto before = chosen != nullptr ? std::optional(*chosen) : std::nullopt;
  const auto index = state.chosen;
  state.days = std::move(days);
  const auto rows = browseRows(state);
  // What lasts for several days stands in several rows: the one that is nearest to where it stood.
  std::optional<std::size_t> same;
  const auto distance = [&](std::size_t row) { return row > *index ? row - *index : *index - row; };
  for (std::size_t row = 0; before && row < rows.size(); ++row) {
    if (isSame(*rows[row], *before) && (!same || distance(row) < distance(*same))) { same = row; }
  }
  if (same && state.sought == 0) {
    state.chosen = same;
  } else if (before && state.inList && !rows.empty() && state.sought == 0) {
    // What stood beside it.
    state.chosen = std::min(*index, rows.size() - 1);
  } else {
    choose(state);
  }
  state.sought = 0;
  state.inList = state.inList && !rows.empty();
}

BrowseWish press(BrowseState& state, const BrowseKey& key) {
  if (key.name == BrowseKey::Name::kOther) { return {}; }
  state.message.clear();
  state.sent.reset();
  state.sought = 0;
  if (auto* prompt = std::get_if<BrowsePrompt>(&state.over)) { return pressInPrompt(state, *prompt, key); }
  if (auto* question = std::get_if<BrowseQuestion>(&state.over)) { return pressInQuestion(state, *question, key); }
  if (auto* page = std::get_if<BrowsePage>(&state.over)) { return pressInPage(state, *page, key); }
  if (auto* menu = std::get_if<BrowseMenu>(&state.over)) { return pressInMenu(state, *menu, key); }
  return pressInCalendar(state, key);
}

}  // namespace orlocal::host
