#include <algorithm>

#include <fmt/format.h>

#include "base/translation.h"
#include "host/commands/browsing/browse_picture.h"
#include "host/commands/browsing/browse_presses.h"
#include "host/commands/command_line/folded_text.h"
#include "host/commands/command_line/terminal_text.h"
#include "host/commands/words/day_words.h"

namespace orlocal::host {
namespace {

using store::LocalDay;
using store::LocalTime;

using Kind = BrowseWish::Kind;
using Name = BrowseKey::Name;

constexpr std::size_t kWidestQuotedTitle = 30;

bool isReminder(const AgendaLine& row) { return row.item->kind == store::ItemKind::kReminder; }

/// Whether it is one of several occurrences.
bool isOfSeries(const AgendaLine& row) { return row.when && (row.item->series || !row.item->recurrence.empty()); }

std::string quotedTitleOf(const AgendaLine& row) {
  return '"' + shortened(row.item->title.value_or(""), kWidestQuotedTitle) + '"';
}

/// `command` and what names the thing.
std::vector<std::string> wordsFor(const BrowseState& state, const AgendaLine& row, const char* command) {
  std::vector<std::string> words{command, row.item->itemIdentifier};
  if (const store::Calendar* calendar = state.days.names.calendar(row.item->calendar)) {
    words.insert(words.end(), {"--in", calendar->identifier});
  }
  return words;
}

/// The words that name an occurrence: its day and, where it has one, its time.
std::vector<std::string> occurrenceWords(const BrowseState& state, const AgendaLine& row) {
  const LocalTime start = state.viewer.toLocal(row.when->start);
  const std::string day = isoDay(LocalDay(start));
  return {"--occurrence", row.item->allDay() ? day : day + ' ' + clockTime(start)};
}

/// How much of a series, and the command that does it to that.
std::vector<BrowseQuestion::Answer> spansOf(const BrowseState& state, const AgendaLine& row,
                                            const std::vector<std::string>& words) {
  const auto with = [&](std::vector<std::string> further, const char* span) {
    std::vector<std::string> all = words;
    all.insert(all.end(), further.begin(), further.end());
    all.emplace_back(span);
    return all;
  };
  const auto occurrence = occurrenceWords(state, row);
  return {{"1", tr("this one"), with(occurrence, "--this")},
          {"2", tr("it and the later ones"), with(occurrence, "--future")},
          {"3", tr("all"), with({}, "--all"), true}};
}

void moveBy(BrowseState& state, int days) { goTo(state, state.day + days); }

/// The same day of another month, or its last.
void moveByMonths(BrowseState& state, int months) {
  const cctz::civil_month month = cctz::civil_month(state.day) + months;
  const LocalDay last = LocalDay(month + 1) - 1;
  goTo(state, std::min(LocalDay(month) + (state.day.day() - 1), last));
}

void moveInList(BrowseState& state, int rows) {
  const auto count = static_cast<int>(browseRows(state).size());
  if (count == 0) { return; }
  const int now = state.chosen ? static_cast<int>(*state.chosen) : rows > 0 ? -1 : count;
  state.chosen = static_cast<std::size_t>(std::clamp(now + rows, 0, count - 1));
}

void changePlace(BrowseState& state) {
  if (!state.inList && browseRows(state).empty()) {
    state.message = tr("There is nothing in these days.");
    return;
  }
  state.inList = !state.inList;
  if (!state.inList) {
    goTo(state, state.day);
  } else if (!state.chosen) {
    state.chosen = 0;
  }
}

void askNew(BrowseState& state, bool reminder) {
  BrowsePrompt prompt;
  prompt.label = reminder ? tr("New reminder: ") : tr("New: ");
  prompt.words = {"new"};
  if (reminder) { prompt.words.emplace_back("--reminder"); }
  // Where one calendar is shown, what is made there is of it.
  const auto kind = reminder ? store::ItemKind::kReminder : store::ItemKind::kEvent;
  std::vector<std::string> takers;
  for (const store::Calendar& calendar : state.only) {
    if (calendar.holds(kind)) { takers.push_back(calendar.identifier); }
  }
  if (takers.size() == 1) { prompt.words.insert(prompt.words.end(), {"--calendar", takers.front()}); }
  state.over = std::move(prompt);
}

BrowseWish edit(BrowseState& state, const AgendaLine& row) {
  auto words = wordsFor(state, row, "edit");
  if (isOfSeries(row)) {
    state.over = BrowseQuestion{tr("Change of {}:", quotedTitleOf(row)), spansOf(state, row, words), true};
  } else {
    askForChanges(state, std::move(words), false);
  }
  return {};
}

BrowseWish remove(BrowseState& state, const AgendaLine& row) {
  auto words = wordsFor(state, row, "remove");
  words.emplace_back("--yes");
  std::string question = tr("Remove {}?", quotedTitleOf(row));
  if (!row.item->attendees.empty()) { question += tr(" Nobody tells its attendees."); }
  if (isOfSeries(row)) {
    state.over = BrowseQuestion{question, spansOf(state, row, words)};
  } else {
    state.over = BrowseQuestion{question, {{translated("y"), tr("remove"), words}}};
  }
  return {};
}

BrowseWish completeOrReopen(BrowseState& state, const AgendaLine& row) {
  if (!isReminder(row)) {
    state.message = tr("Only reminders can be done.");
    return {};
  }
  return {Kind::kRun, wordsFor(state, row, row.item->completed ? "reopen" : "done")};
}

BrowseWish askWhere(BrowseState& state, const AgendaLine& row) {
  BrowseMenu menu;
  menu.title = tr("Move {} to", quotedTitleOf(row));
  for (const store::Calendar& calendar : state.days.calendars) {
    if (!calendar.holds(row.item->kind) || calendar.readOnly || calendar.id == row.item->calendar) { continue; }
    auto words = wordsFor(state, row, "move");
    words.insert(words.end(), {"--to", calendar.identifier});
    menu.rows.push_back({printable(state.days.names.name(calendar)), calendar.color, std::move(words), {}, 0});
  }
  if (menu.rows.empty()) {
    state.message = tr("There is no other calendar that takes it.");
  } else {
    state.over = std::move(menu);
  }
  return {};
}

BrowseWish withChosen(BrowseState& state, BrowseWish (*act)(BrowseState&, const AgendaLine&)) {
  const AgendaLine* row = chosenRow(state);
  if (row == nullptr) {
    state.message = tr("Nothing is chosen; the tab key leads into the list.");
    return {};
  }
  return act(state, *row);
}

void showKeys(BrowseState& state) {
  BrowsePage page;
  page.title = tr("Keys");
  std::vector<CardLine> card;
  for (const KeyHelp& each : keyHelp()) { card.push_back({translated(each.keys), translated(each.meaning)}); }
  page.lines = cardLines(card, state.size.columns);
  state.over = std::move(page);
}

/// What a key does; letters that move stand for arrows.
struct KeyRow {
  Name name;
  const char* letter;
  BrowseWish (*act)(BrowseState& state);
};
constexpr KeyRow kKeys[] = {
    {Name::kLeft, "h", [](BrowseState& state) { return moveBy(state, -1), BrowseWish{}; }},
    {Name::kRight, "l", [](BrowseState& state) { return moveBy(state, 1), BrowseWish{}; }},
    {Name::kUp, "k",
     [](BrowseState& state) { return state.inList ? moveInList(state, -1) : moveBy(state, -7), BrowseWish{}; }},
    {Name::kDown, "j",
     [](BrowseState& state) { return state.inList ? moveInList(state, 1) : moveBy(state, 7), BrowseWish{}; }},
    {Name::kPageUp, "", [](BrowseState& state) { return moveByMonths(state, -1), BrowseWish{}; }},
    {Name::kPageDown, "", [](BrowseState& state) { return moveByMonths(state, 1), BrowseWish{}; }},
    {Name::kHome, "t", [](BrowseState& state) { return goTo(state, state.today()), BrowseWish{}; }},
    {Name::kTab, "", [](BrowseState& state) { return changePlace(state), BrowseWish{}; }},
    {Name::kEnter, "",
     [](BrowseState& state) {
       return withChosen(state, [](BrowseState&, const AgendaLine&) { return BrowseWish{Kind::kShow}; });
     }},
    {Name::kOther, "n", [](BrowseState& state) { return askNew(state, false), BrowseWish{}; }},
    {Name::kOther, "N", [](BrowseState& state) { return askNew(state, true), BrowseWish{}; }},
    {Name::kOther, "e", [](BrowseState& state) { return withChosen(state, edit); }},
    {Name::kDelete, "x", [](BrowseState& state) { return withChosen(state, remove); }},
    {Name::kOther, " ", [](BrowseState& state) { return withChosen(state, completeOrReopen); }},
    {Name::kOther, "m", [](BrowseState& state) { return withChosen(state, askWhere); }},
    {Name::kOther, "/",
     [](BrowseState& state) {
       state.over = BrowsePrompt{BrowsePrompt::Purpose::kSearch, tr("Search: "), TypedLine()};
       return BrowseWish{};
     }},
    {Name::kOther, "u",
     [](BrowseState&) {
       return BrowseWish{Kind::kRun, {"undo"}};
     }},
    {Name::kOther, "?", [](BrowseState& state) { return showKeys(state), BrowseWish{}; }},
    {Name::kOther, "q", [](BrowseState&) { return BrowseWish{Kind::kQuit}; }},
};

}  // namespace

const std::vector<KeyHelp>& keyHelp() {
  static const std::vector<KeyHelp> kHelp{
      {translatable("arrows hjkl"), translatable("by days and weeks; in the list, up and down")},
      {translatable("PageUp/Down"), translatable("by months")},
      {translatable("Home, t"), translatable("today")},
      {translatable("Tab"), translatable("between the month and the list")},
      {translatable("Enter"), translatable("all that is known of it")},
      {"n, N", translatable("a new event, a new reminder: Lunch with Grace 12:30 1h")},
      {"e", translatable("change its title and its time")},
      {translatable("x, Delete"), translatable("remove it")},
      {translatable("Space"), translatable("a reminder is done, or open again")},
      {"m", translatable("move it to another calendar")},
      {"/", translatable("search")},
      {"u", translatable("undo your last command")},
      {"?", translatable("these keys")},
      {"q", translatable("quit")}};
  return kHelp;
}

BrowseWish pressInCalendar(BrowseState& state, const BrowseKey& key) {
  for (const KeyRow& row : kKeys) {
    const bool byName = row.name != Name::kOther && key.name == row.name;
    if (byName || (*row.letter != '\0' && key.is(row.letter))) { return row.act(state); }
  }
  return {};
}

}  // namespace orlocal::host
