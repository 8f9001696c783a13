#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <vector>

#include "base/result.h"

namespace orlocal::store {

/// A copy, an export or another file in the making whose program ended without a word. Nobody finishes it.
struct LeftDraft {
  std::filesystem::path file;
  std::uintmax_t bytes = 0;  ///< with what SQLite left beside it
};

/// Those of this user's own in a folder that nobody has written for so long, by their names; other people's for root.
/// What cannot be looked at is left out.
std::vector<LeftDraft> draftsLeftIn(const std::filesystem::path& folder, std::chrono::seconds unwrittenFor);

/// Removes it with what lies beside it.
Status removeLeft(const LeftDraft& draft);

}  // namespace orlocal::store
