#pragma once

#include "store/model/model.h"

namespace orlocal::store {

/// One occurrence of an event in the answer to a range query.
struct Occurrence {
  Moment start;
  Moment end;            ///< exclusive; for whole days the midnight after the last one in the viewer's zone
  Moment originalStart;  ///< where the rule put it; equal to `start` unless it was changed
  ItemId item = 0;       ///< the row to read: the event, the series, or the changed occurrence
  ItemId event = 0;      ///< the row whose identifier names it in public: the event or the series

  friend bool operator==(const Occurrence&, const Occurrence&) = default;
};

/// How much of a series a change is about.
enum class Span : std::uint8_t {
  kThis = 0,    ///< one occurrence
  kFuture = 1,  ///< it and the later ones
  kAll = 2,     ///< the whole series
};

}  // namespace orlocal::store
