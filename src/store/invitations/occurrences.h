#pragma once

#include "base/result.h"
#include "store/model/model.h"

namespace orlocal::store {

/// The changed occurrence of `whole` that the recurrence id names, made of the series when it has not been changed
/// yet; of a changed occurrence that came without its series that one. Null when there is no such occurrence.
Result<Item*> occurrenceIn(WholeItem& whole, const CalendarTime& recurrenceId);

}  // namespace orlocal::store
