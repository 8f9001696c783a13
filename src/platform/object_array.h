#pragma once

#include <cstddef>
#include <memory>

namespace orlocal {

/// An immutable, ordered result of a query. Its objects may be made only when asked for, so that holding a long result
/// costs little. The same index may give a new object each time.
template <class T>
class ObjectArray {
 public:
  virtual ~ObjectArray() = default;
  virtual std::size_t count() const = 0;
  /// `index` is 0-based and below `count()`. Null when the object has gone from the store meanwhile.
  virtual std::shared_ptr<T> objectAtIndex(std::size_t index) const = 0;
};

}  // namespace orlocal
