#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "store/model/model.h"
#include "store/rows/calendar_rows.h"

namespace orlocal::store {

/// The oldest calendar of each kind and title; read at once, as a file may name thousands.
class CalendarTitles {
 public:
  explicit CalendarTitles(CalendarRows& rows) : m_rows(rows) {}

  Result<std::optional<Calendar>> find(CalendarKind kind, std::string_view title);
  /// One that was made since.
  void add(const Calendar& calendar);

 private:
  Status learn();

  CalendarRows& m_rows;
  std::optional<std::map<std::pair<CalendarKind, std::string>, Calendar>> m_titles;
};

}  // namespace orlocal::store
