#pragma once

#include <optional>

#include "store/model/model.h"

namespace orlocal::accounts {

/// When `later` ends, if it is the series `base`, ended sooner, and its times are those of before else: what a split
/// and a removal from an occurrence on leave. The moment is that of the last start that may still be in it. None when
/// more was changed, or the end cannot be told for certain.
std::optional<store::Moment> endedSooner(const store::WholeItem& base, const store::WholeItem& later);

/// Whether exceptions and changed occurrences are the same in both but for original starts up to `end`.
bool differOnlyUpTo(store::Moment end, const store::WholeItem& base, const store::WholeItem& later);

}  // namespace orlocal::accounts
