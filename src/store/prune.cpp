#include "store/prune.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "base/try.h"
#include "store/edits/item_writer.h"

namespace orlocal::store {
namespace {

/// A UID as problems have it: of a very long one the beginning.
bool isNamed(const std::unordered_set<std::string>& refused, std::string_view uid) {
  return std::ranges::any_of(refused, [&](std::string_view each) {
    constexpr std::string_view kCut = "…";
    return each.ends_with(kCut) ? uid.starts_with(each.substr(0, each.size() - kCut.size())) : uid == each;
  });
}

class Pruning {
 public:
  Pruning(CalendarStore& store, const std::vector<ImportReport>& brought, const PruneOptions& options)
      : m_store(store), m_options(options) {
    for (const ImportReport& report : brought) {
      for (const ImportedItem& item : report.items) { m_brought.insert(item.id); }
      for (const Problem& problem : report.problems) { m_refused.insert(problem.uid); }
      m_spokenOf.insert(report.calendars.begin(), report.calendars.end());
      for (const ImportedItem& item : report.items) { m_spokenOf.insert(item.calendar); }
    }
    m_refused.erase("");
  }

  Result<std::vector<ImportedItem>> run() {
    ORLOCAL_TRY(const auto writer, m_store.startWriting());
    for (const CalendarKind kind : {CalendarKind::kEvents, CalendarKind::kReminders}) {
      ORLOCAL_TRY(const auto calendars, writer->calendars(kind));
      for (const Calendar& calendar : calendars) {
        if (isMeant(calendar, kind)) { ORLOCAL_CHECK(prune(*writer, calendar, kind)); }
      }
    }
    if (!m_removed.empty()) { ORLOCAL_CHECK(writer->commit()); }
    return std::move(m_removed);
  }

 private:
  bool isMeant(const Calendar& calendar, CalendarKind kind) const {
    const auto& titles = kind == CalendarKind::kEvents ? m_options.calendarTitles : m_options.listTitles;
    const bool named = std::ranges::find(titles, calendar.title) != titles.end();
    const bool subscribed = m_options.subscriptions && calendar.subscribed;
    return (named || subscribed) && m_spokenOf.contains(calendar.id);
  }

  Status prune(ItemWriter& writer, const Calendar& calendar, CalendarKind kind) {
    std::vector<ImportedItem> others;
    ORLOCAL_CHECK(m_store.forEachItem(calendar.id, [&](const Item& main, const std::vector<Item>&) {
      if (calendarKindOf(main.kind) != kind || m_brought.contains(main.id) || isNamed(m_refused, main.uid)) {
        return Status();
      }
      others.push_back({ImportedItem::Outcome::kRemoved, 0, calendar.id, main.id, main.uid,
                        itemInWords(main.title, main.start ? main.start : main.due)});
      return Status();
    }));
    for (ImportedItem& other : others) {
      ORLOCAL_CHECK(writer.remove(other.id));
      m_removed.push_back(std::move(other));
    }
    return {};
  }

  CalendarStore& m_store;
  const PruneOptions& m_options;
  std::unordered_set<ItemId> m_brought;
  std::unordered_set<std::string> m_refused;
  std::unordered_set<CalendarId> m_spokenOf;
  std::vector<ImportedItem> m_removed;
};

}  // namespace

Result<std::vector<ImportedItem>> removeOthers(CalendarStore& store, const std::vector<ImportReport>& brought,
                                               const PruneOptions& options) {
  return Pruning(store, brought, options).run();
}

}  // namespace orlocal::store
