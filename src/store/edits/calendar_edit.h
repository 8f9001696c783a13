#pragma once

#include <cstdint>

#include "store/edits/field_set.h"

namespace orlocal::store {

/// What a caller can set of a calendar, each by itself.
enum class CalendarField : std::uint8_t {
  kTitle,
  kNotes,
  kColor,
  kSource,
  kOrder,
  kReadOnly,
  kSubscribed,
  kImmutable,
};
using CalendarFields = FieldSet<CalendarField>;

}  // namespace orlocal::store
