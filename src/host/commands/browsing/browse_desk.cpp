#include "host/commands/browsing/browse_desk.h"

#include <sstream>
#include <utility>

#include <fmt/format.h>

#include "base/translation.h"
#include "base/try.h"
#include "host/commands/browsing/browse_picture.h"
#include "host/commands/command_line/store_session.h"
#include "host/commands/command_line/terminal_text.h"
#include "host/commands/command_line/trouble.h"
#include "host/commands/views/item_card.h"
#include "host/commands/views/item_lines.h"
#include "host/commands/views/next_occurrences.h"

namespace orlocal::host {
namespace {

using store::LocalDay;

constexpr std::size_t kNextShown = 5;
constexpr std::size_t kMostFound = 500;

/// What a command said, without the program's name before it.
std::string saidBy(std::string text) {
  constexpr std::string_view kName = "orlocal: ";
  if (text.starts_with(kName)) { text.erase(0, kName.size()); }
  text.erase(text.find_last_not_of('\n') + 1);
  return text;
}

/// Where something stands in the list, and how that is said.
struct Place {
  LocalDay day;
  std::string words;
};
Result<Place> placeOf(store::CalendarStore& store, const store::Item& item, const BrowseState& state) {
  ORLOCAL_TRY(const auto when, nextOrLast(store, item, store::now()));
  const auto dayOf = [&](store::Moment moment) { return LocalDay(state.viewer.toLocal(moment)); };
  if (when) { return Place{dayOf(when->start), spanWords(when->start, when->end, item.allDay(), state.viewer)}; }
  if (item.completed) { return Place{dayOf(*item.completed), tr("done")}; }
  if (item.due) { return Place{dayOf(store::momentOf(*item.due, state.viewer)), timeWords(*item.due, state.viewer)}; }
  // What has no date stands where today is.
  return Place{state.today(), tr("no date")};
}

}  // namespace

BrowseDesk::BrowseDesk(CommandContext& context, Registration registerAll, store::CalendarStore& store,
                       CalendarChoice shown)
    : m_context(context), m_registerAll(registerAll), m_store(store), m_shown(std::move(shown)) {}

Status BrowseDesk::refresh(BrowseState& state) {
  const auto [first, last] = daysNeeded(state);
  const std::uint64_t generation = m_store.generation();
  if (generation == m_generation && state.days.first <= first && state.days.last >= last) { return {}; }
  ORLOCAL_TRY(BrowseDays days, readBrowseDays(m_store, state.viewer, first, last, m_shown));
  takeDays(state, std::move(days));
  m_generation = generation;
  return {};
}

void BrowseDesk::serve(const BrowseWish& wish, BrowseState& state) {
  const Status done = withoutThrowing([&]() -> Status {
    switch (wish.kind) {
      case BrowseWish::Kind::kRun:
        return run(wish.words, state);
      case BrowseWish::Kind::kShow:
        return show(state);
      case BrowseWish::Kind::kSearch:
        return search(wish.words.front(), state);
      case BrowseWish::Kind::kNothing:
      case BrowseWish::Kind::kQuit:
        break;
    }
    return {};
  });
  if (!done) { state.message = done.error().message; }
}

Status BrowseDesk::run(const std::vector<std::string>& words, BrowseState& state) {
  std::istringstream in;
  std::ostringstream out, err;
  GlobalOptions options = m_context.options;
  options.json = false;
  Streams streams{in, out, err};
  CommandContext context{options, streams, m_context.programFile};
  ORLOCAL_TRY(const store::LogPosition before, m_store.newestChange());
  const ExitStatus status = CommandsInPlace(context, m_registerAll).run(words);
  state.message = saidBy(out.str() + err.str());
  if (status == ExitStatus::kDone) {
    const bool brings = words.front() == "new" || words.front() == "undo";
    return brings ? goToWhatCame(before, state) : Status();
  }
  // What was typed can be put right.
  if (state.sent) { state.over = *state.sent; }
  return {};
}

Status BrowseDesk::goToWhatCame(store::LogPosition since, BrowseState& state) {
  ORLOCAL_TRY(const auto commits, m_store.outsideCommits(since));
  if (commits.empty()) { return {}; }
  const store::OutsideCommit& last = commits.back();
  const auto& inserted = last.events.inserted.empty() ? last.reminders.inserted : last.events.inserted;
  if (inserted.empty()) { return {}; }
  ORLOCAL_TRY(const auto came, m_store.itemWithIdentifier(inserted.front()));
  if (came == nullptr) { return {}; }
  ORLOCAL_TRY(const Place place, placeOf(m_store, *came, state));
  // The keys go on moving where they did.
  const bool inList = state.inList;
  goTo(state, place.day, came->id);
  state.inList = inList;
  return {};
}

Status BrowseDesk::show(BrowseState& state) {
  const AgendaLine* row = chosenRow(state);
  if (row == nullptr) { return {}; }
  ORLOCAL_TRY(const auto item, m_store.item(row->when ? row->when->event : row->item->id));
  if (item == nullptr) { return failure(ErrorCode::kNotFound, tr("It is no longer in the calendar store.")); }
  ORLOCAL_TRY(const ItemFacts facts, factsOf(m_store, *item, row->when, kNextShown));
  BrowsePage page;
  page.title = shownTitle(facts.item, Ink(false));
  page.lines = cardLines(cardOf(facts, state.days.names, state.viewer), state.size.columns);
  state.over = std::move(page);
  return {};
}

Status BrowseDesk::search(const std::string& text, BrowseState& state) {
  store::SearchQuery query;
  query.text = text;
  ORLOCAL_TRY(const auto calendars, calendarsChosen(m_store, m_shown));
  for (const store::Calendar& calendar : calendars) { query.calendars.push_back(calendar.id); }
  ORLOCAL_TRY(const auto hits, m_store.search(query));
  BrowseMenu menu;
  menu.title = tr("Found for \"{}\"", printable(text));
  for (const store::SearchHit& hit : hits) {
    if (menu.rows.size() == kMostFound) { break; }
    ORLOCAL_TRY(const auto item, m_store.item(hit.item));
    if (item == nullptr) { continue; }
    ORLOCAL_TRY(const Place place, placeOf(m_store, *item, state));
    BrowseMenu::Row row;
    row.day = place.day;
    const store::Calendar* calendar = state.days.names.calendar(item->calendar);
    if (calendar != nullptr) { row.color = calendar->color; }
    row.item = hit.item;
    row.text = fmt::format("{}  {}", shownTitle(*item, Ink(false)), place.words);
    menu.rows.push_back(std::move(row));
  }
  if (menu.rows.empty()) {
    state.message = tr("Nothing is found for \"{}\".", printable(text));
  } else {
    state.over = std::move(menu);
  }
  return {};
}

}  // namespace orlocal::host
