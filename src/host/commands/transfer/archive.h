#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "base/result.h"

// Archives, which may be made to hurt: nothing of them is ever written to a disk, and names in them are only names.
namespace orlocal::host {

/// What one archive may hold; past it, it is refused as a whole.
struct ArchiveLimits {
  std::size_t members = 10'000;
  std::uint64_t expandedBytes = std::uint64_t{1} << 30;
  /// So many times its own size, where it expands to more than `freeBytes`.
  std::uint64_t ratio = 200;
  std::uint64_t freeBytes = std::uint64_t{16} << 20;
};

/// Takes a member's name and bytes, or why it cannot be read. Returns false to stop.
using MemberVisitor = std::function<bool(std::string_view name, Result<std::string> bytes)>;

/// Visits the files of a zip archive by name, but those that begin with a dot and what the Finder adds. Folders in it
/// are passed over. Before the first is visited the sizes that the archive tells are held against the limits; a member
/// that is larger than it tells is damaged. Fails, and visits nothing, when it is no archive or exceeds a limit. `name`
/// stands in errors.
Status visitZip(std::string_view bytes, const std::string& name, const ArchiveLimits& limits,
                const MemberVisitor& visit);

/// What a gzip file holds, with all the members that stand in it one after another.
Result<std::string> expandedGzip(std::string_view bytes, const std::string& name, const ArchiveLimits& limits);

}  // namespace orlocal::host
