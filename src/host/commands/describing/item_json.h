#pragma once

#include <map>
#include <optional>
#include <string>

#include <nlohmann/json.hpp>

#include "base/result.h"
#include "store/calendar_store.h"

namespace orlocal::host {

/// The calendars of a store and where they come from.
class CalendarNames {
 public:
  static Result<CalendarNames> of(store::CalendarStore& store);

  /// Null when there is no such calendar.
  const store::Calendar* calendar(store::CalendarId id) const;
  /// The title of the account, subscription or other source that the calendar is of; none of this machine's own.
  std::optional<std::string> account(const store::Calendar& calendar) const;
  /// What it is called among the others that hold such items: its title, with the account or the end of the identifier
  /// behind it where several share that title: "Work (Ada's)".
  std::string name(const store::Calendar& calendar) const;

 private:
  std::map<store::CalendarId, store::Calendar> m_calendars;
  std::map<store::SourceId, store::Source> m_sources;
};

/// An item in JSON, as every command prints it: see docs/schema/item.json. With an occurrence, start and end are those
/// of it.
nlohmann::json itemJson(const store::Item& item, const std::optional<store::Occurrence>& occurrence,
                        const CalendarNames& names, const store::Zone& viewer);

}  // namespace orlocal::host
