#include "store/icalendar/later_changes.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "base/translation.h"
#include "store/icalendar/content_line.h"
#include "store/icalendar/kept_lines.h"
#include "store/recurrence/series_shift.h"
#include "store/time/time_text.h"

namespace orlocal::store {

namespace {

constexpr std::string_view kContinuation = "X-ORLOCAL-LATER:";

/// Each is a series of its own in the end, that the others know of.
constexpr std::size_t kMostChanges = 500;

/// A stretch of the series as it was written, and what changes it.
struct Part {
  Item series;  ///< unchanged; only its times and how it repeats count
  std::optional<LaterChange> change;
  std::vector<Item> changed;
};

/// Whether the series comes at `original`, exceptions apart, and a rule of it goes on from there.
bool begins(const Item& item, const Moment original) {
  Item bare = item;
  bare.recurrence.excluded.clear();
  bare.recurrence.exceptionRules.clear();
  if (!bare.recurrence.rules.empty()) { bare.recurrence.added.clear(); }
  const auto series = Series::compile(bare, Zone());
  if (!series) { return false; }
  ExpansionBudget budget;
  const auto found = series->at(original, budget);
  return found && *found;
}

/// After the properties and before the components, where the line is when it is read again.
void addLine(std::string& extra, const std::string& line) {
  const std::size_t component = extra.starts_with("BEGIN:") ? 0 : extra.find("\nBEGIN:");
  extra.insert(component == std::string::npos ? extra.size() : component == 0 ? 0 : component + 1, line + "\n");
}

/// Cuts the last part; false when the change cannot begin there.
bool cut(std::vector<Part>& parts, LaterChange& change) {
  Item& whole = parts.back().series;
  const auto series = Series::compile(whole, Zone());
  if (!series || !change.item.start || !whole.start) { return false; }
  const Moment original = series->originalStart(*change.item.recurrenceId);
  if (original == series->originalStart(*whole.start)) {
    parts.back().change = std::move(change);
    return true;
  }
  if (!begins(whole, original)) { return false; }
  auto halves = halvesOf(whole, *series, original);
  if (!halves) { return false; }
  Part later{whole, std::nullopt, {}};
  later.series.start = series->recurrenceId(original);
  if (whole.endOrDue()) { later.series.endOrDue()->local += later.series.start->local - whole.start->local; }
  later.series.recurrence = std::move(halves->right);
  whole.recurrence = std::move(halves->left);
  later.change = std::move(change);
  parts.push_back(std::move(later));
  return true;
}

/// What a part is once its change is made.
ItemGroup finished(Part& part, const ItemGroup& group, std::string uid) {
  ItemGroup made{group.calendar, part.change ? part.change->line : group.line, std::nullopt, {}, nullptr, {}};
  Item item = part.change ? std::move(part.change->item) : part.series;
  item.uid = std::move(uid);
  item.recurrenceId.reset();
  item.recurrence = part.series.recurrence;
  if (part.change) {
    item.extra = withoutParametersOf("RECURRENCE-ID", item.extra);
    const auto before = Series::compile(part.series, Zone());
    const Zone viewer;
    const SeriesShift shift(*before, *part.series.start, *item.start, viewer);
    shift.move(item.recurrence, true);
    for (Item& changed : part.changed) { changed.recurrenceId = shift(*changed.recurrenceId); }
  }
  for (Item& changed : part.changed) { changed.uid = item.uid; }
  made.changed = std::move(part.changed);
  if (auto series = Series::compile(item, Zone())) { made.series = std::make_shared<const Series>(std::move(*series)); }
  made.main = std::move(item);
  return made;
}

}  // namespace

void cutAtLaterChanges(ItemGroup& group, std::vector<LaterChange> changes, ReadProblems& problems) {
  const std::shared_ptr<const Series> whole = group.series;
  const auto originalOf = [&](const Item& item) { return whole->originalStart(*item.recurrenceId); };
  std::stable_sort(changes.begin(), changes.end(),
                   [&](const LaterChange& a, const LaterChange& b) { return originalOf(a.item) < originalOf(b.item); });
  std::vector<Part> parts;
  parts.push_back({*group.main, std::nullopt, {}});
  for (LaterChange& change : changes) {
    const bool tooMany = parts.size() > kMostChanges;
    if (!tooMany && cut(parts, change)) { continue; }
    problems.warn(change.line, change.item.uid,
                  tooMany
                      ? tr("the series is changed by RANGE=THISANDFUTURE more than 500 times: only this one is changed")
                      : tr("RANGE=THISANDFUTURE begins at no occurrence of the rule: only this one is changed"));
    group.changed.push_back(std::move(change.item));
  }
  if (parts.size() == 1 && !parts.front().change) { return; }
  for (Item& changed : group.changed) {
    auto part = parts.rbegin();
    while (part + 1 != parts.rend() && originalOf(changed) < whole->originalStart(*part->series.start)) { ++part; }
    part->changed.push_back(std::move(changed));
  }
  const std::string uid = group.main->uid;
  ItemGroup first = finished(parts.front(), group, uid);
  for (std::size_t i = 1; i < parts.size(); ++i) {
    const std::string own = uid + "/" + timeText(*parts[i].series.start);
    addLine(first.main->extra, std::string(kContinuation) + escapeText(own));
    first.later.push_back(finished(parts[i], group, own));
  }
  first.line = group.line;
  group = std::move(first);
}

std::vector<std::string> continuationsOf(const Item& item) {
  std::vector<std::string> uids;
  std::string_view rest = item.extra;
  while (!rest.empty() && !rest.starts_with("BEGIN:")) {
    const std::string_view line = rest.substr(0, rest.find('\n'));
    rest.remove_prefix(std::min(line.size() + 1, rest.size()));
    if (line.starts_with(kContinuation)) { uids.push_back(unescapeText(line.substr(kContinuation.size()))); }
  }
  return uids;
}

}  // namespace orlocal::store
