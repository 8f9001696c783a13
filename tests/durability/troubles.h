#pragma once

#include <string>
#include <vector>

#include "durability/file_calls.h"

namespace orlocal::test {

/// What can go wrong while something is changed.
struct Trouble {
  enum class Sort {
    kFailingCalls,  ///< calls of one kind fail
    kDeath,         ///< the process is killed before a call
    kDeathInWrite,  ///< the process is killed with half of a write done
    kPowerCut,      ///< the disk loses what was not synced
  };
  enum class Lasting {
    kOnce,
    kUntilTold,    ///< until the change has said whether it was done; its user goes on with the store
    kUntilClosed,  ///< until its user has closed the store
  };

  std::string name;
  Sort sort = Sort::kFailingCalls;
  // Of calls that fail:
  FileCall call = FileCall::kWrite;
  int error = 0;          ///< 0: the call works, on half of the bytes
  bool cutShort = false;  ///< before it fails it writes half of the bytes
  Lasting lasting = Lasting::kOnce;
  bool mustGoOn = false;  ///< it is no reason to give up
};

/// All of them, those of one column of the table one after the other.
const std::vector<Trouble>& troubles();
/// The column of the table that it counts in.
const char* columnOf(const Trouble& trouble);

}  // namespace orlocal::test
