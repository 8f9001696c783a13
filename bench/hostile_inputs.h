#pragma once

#include <cstddef>
#include <span>
#include <string>

namespace orlocal::bench {

/// A kind of input that somebody could send to make a reader work long, or take much memory.
struct HostileShape {
  enum class Kind { kCalendar, kContacts };

  const char* name;
  Kind kind;
  /// A text of about so many bytes; the same for the same size.
  std::string (*make)(std::size_t bytes);
};

std::span<const HostileShape> hostileShapes();

}  // namespace orlocal::bench
