#pragma once

#include <cstdint>
#include <map>
#include <vector>

namespace orlocal::store {

/// Which parts of a line of numbers were read.
class ReadParts {
 public:
  struct Part {
    std::int64_t from, to;  ///< [from, to)

    friend bool operator==(const Part&, const Part&) = default;
  };
  /// Those of `part` that were not read yet, in order.
  std::vector<Part> missing(Part part) const;
  void add(Part part);

 private:
  std::map<std::int64_t, std::int64_t> m_parts;  ///< from -> to; none touches another
};

}  // namespace orlocal::store
