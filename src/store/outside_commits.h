#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "store/result.h"

namespace orlocal::store {

class ChangeLog;

/// What one commit of somebody else did to events. Each list holds the events' public identifiers, each once, in the
/// order in which they were touched; an event stands in one list: inserted before updated, deleted before both.
struct OutsideCommit {
  std::vector<std::string> inserted, updated, deleted;

  bool empty() const { return inserted.empty() && updated.empty() && deleted.empty(); }
};

/// The commits of others after the log's row `position`, in their order, those without events left out; moves
/// `position` to the newest row. Inside a read transaction.
Result<std::vector<OutsideCommit>> outsideCommitsAfter(ChangeLog& log, std::int64_t& position);

}  // namespace orlocal::store
