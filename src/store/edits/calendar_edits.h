#pragma once

#include "store/core/store_core.h"
#include "store/edits/calendar_edit.h"

namespace orlocal::store {

/// Saves and removes calendars. See `CalendarStore`.
class CalendarEdits {
 public:
  explicit CalendarEdits(StoreCore& core) : m_core(core) {}

  Status save(Calendar& calendar, CalendarFields set);
  Status makeDefault(std::string_view identifier, CalendarKind kind);
  Status remove(std::string_view identifier);

 private:
  StoreCore& m_core;
};

}  // namespace orlocal::store
