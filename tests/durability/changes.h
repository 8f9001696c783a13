#pragma once

#include <span>

#include "base/result.h"
#include "durability/given_folders.h"
#include "durability/session.h"

namespace orlocal::test {

/// Something that changes a store, or writes files of one.
struct Change {
  const char* name;
  Given given;
  Status (*make)(Session& session);
  /// It puts a file in the place of another, which cannot come back when that alone does not reach the disk.
  bool replaces = false;
};

/// All that the public headers of src/store let anybody change, and all that the program writes of it. Not among them:
/// what others offer as parts of these (`copyChecked`, `DraftEntry`, `FileDraft`, the bell, which every commit rings
/// and the first one hangs up).
std::span<const Change> changes();

}  // namespace orlocal::test
