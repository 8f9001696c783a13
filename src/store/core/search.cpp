#include "store/core/search.h"

#include <algorithm>
#include <set>
#include <tuple>

#include "base/translation.h"
#include "base/try.h"
#include "store/core/store_core.h"

namespace orlocal::store {
namespace {

struct Ranked {
  SearchHit hit;
  bool inTitle = false;
  std::optional<Moment> at;
  std::optional<ItemId> series;
};

/// What the title has comes first, then what stands in better places, then what is later.
bool isBefore(const Ranked& left, const Ranked& right) {
  const auto key = [](const Ranked& each) { return std::make_tuple(!each.inTitle, each.hit.fields.front()); };
  if (key(left) != key(right)) { return key(left) < key(right); }
  if (left.at != right.at) { return left.at > right.at; }
  return left.hit.item < right.hit.item;
}

}  // namespace

Status Search::fill() {
  for (bool all = false; !all;) {
    ORLOCAL_TRY(WriteTurn turn, m_core.beginWriting());
    ORLOCAL_TRY(all, m_index.catchUp());
    ORLOCAL_CHECK(turn.commit());
  }
  return {};
}

Status Search::followLog() {
  {
    ORLOCAL_TRY(const Transaction snapshot, m_core.beginReading());
    ORLOCAL_TRY(const bool far, m_index.isFarBehind());
    if (!far) { return {}; }
  }
  auto filled = fill();
  if (filled) { return {}; }
  switch (filled.error().code) {
    case ErrorCode::kBusy:
    case ErrorCode::kFull:
    case ErrorCode::kNotPermitted:
      // What cannot be written is looked at, row by row.
      return {};
    default:
      return filled;
  }
}

Status Search::rebuild() {
  {
    ORLOCAL_TRY(WriteTurn turn, m_core.beginWriting());
    ORLOCAL_CHECK(m_index.startAnew());
    ORLOCAL_CHECK(turn.commit());
  }
  return fill();
}

Result<bool> Search::isInRange(const Item& item, const SearchQuery& query) {
  if (!query.from && !query.to) { return true; }
  if (item.kind == ItemKind::kEvent && !item.series) {
    ORLOCAL_TRY(const auto found, m_queries.occurrences({query.from, query.to, {item.calendar}, item.id}));
    return !found.empty();
  }
  const auto& anchor = item.kind == ItemKind::kReminder ? item.due : item.start;
  if (!anchor) { return false; }
  const Moment start = momentOf(*anchor, m_core.options.viewer);
  const Moment end = item.end ? momentOf(*item.end, m_core.options.viewer) : start;
  return (!query.to || start < *query.to) && (!query.from || end > *query.from || start >= *query.from);
}

Result<std::vector<SearchHit>> Search::run(const SearchQuery& query) {
  const SearchTerms terms(query.text);
  if (terms.empty()) {
    return failure(ErrorCode::kInvalid, tr("There is no word to search for; write some letters or digits."));
  }
  ORLOCAL_CHECK(followLog());
  ORLOCAL_TRY(const Transaction snapshot, m_core.beginReading());
  ORLOCAL_TRY(const auto candidates, m_index.candidates(terms));
  std::vector<Ranked> found;
  std::set<ItemId> series;
  for (const ItemId id : candidates) {
    ORLOCAL_TRY(const auto item, m_core.rows.read(id));
    if (item == nullptr || (query.kind && item->kind != *query.kind)) { continue; }
    if (std::find(query.calendars.begin(), query.calendars.end(), item->calendar) == query.calendars.end()) {
      continue;
    }
    auto places = terms.in(*item);
    if (!places) { continue; }
    ORLOCAL_TRY(const bool within, isInRange(*item, query));
    if (!within) { continue; }
    const auto& anchor = item->anchor();
    found.push_back({{id, std::move(places->fields)},
                     places->allInTitle,
                     anchor ? std::optional(momentOf(*anchor, m_core.options.viewer)) : std::nullopt,
                     item->series});
    if (!item->series) { series.insert(id); }
  }
  std::erase_if(found, [&](const Ranked& each) { return each.series && series.contains(*each.series); });
  std::sort(found.begin(), found.end(), isBefore);
  std::vector<SearchHit> hits;
  for (Ranked& each : found) { hits.push_back(std::move(each.hit)); }
  return hits;
}

}  // namespace orlocal::store
