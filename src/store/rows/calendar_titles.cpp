#include "store/rows/calendar_titles.h"

#include <algorithm>
#include <vector>

#include "base/try.h"

namespace orlocal::store {

Result<std::optional<Calendar>> CalendarTitles::find(CalendarKind kind, std::string_view title) {
  ORLOCAL_CHECK(learn());
  const auto found = m_titles->find(std::pair(kind, std::string(title)));
  return found != m_titles->end() ? std::optional(found->second) : std::nullopt;
}

void CalendarTitles::add(const Calendar& calendar) {
  if (m_titles) { m_titles->try_emplace(std::pair(calendar.kind, calendar.title), calendar); }
}

Status CalendarTitles::learn() {
  if (m_titles) { return {}; }
  m_titles.emplace();
  for (const CalendarKind kind : {CalendarKind::kEvents, CalendarKind::kReminders}) {
    ORLOCAL_TRY(std::vector<Calendar> all, m_rows.ofKind(kind));
    std::sort(all.begin(), all.end(), [](const Calendar& a, const Calendar& b) { return a.id < b.id; });
    for (const Calendar& calendar : all) { m_titles->try_emplace(std::pair(kind, calendar.title), calendar); }
  }
  return {};
}

}  // namespace orlocal::store
