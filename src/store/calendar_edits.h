#pragma once

#include "store/store_core.h"

namespace orlocal::store {

/// Saves and removes calendars. See `CalendarStore`.
class CalendarEdits {
 public:
  explicit CalendarEdits(StoreCore& core) : m_core(core) {}

  Status save(Calendar& calendar);
  Status remove(std::string_view identifier);

 private:
  StoreCore& m_core;
};

}  // namespace orlocal::store
