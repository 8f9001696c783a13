#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <string>
#include <utility>
#include <vector>

namespace orlocal {

/// A platform exception: a name such as "NSRangeException" and a reason for people. Caught only where a back end's
/// contract says so; everywhere else it leaves the plug-in.
class Exception : public std::exception {
 public:
  Exception(std::string name, std::string reason) : m_name(std::move(name)), m_reason(std::move(reason)) {}

  const std::string& name() const { return m_name; }
  const std::string& reason() const { return m_reason; }
  const char* what() const noexcept override { return m_reason.c_str(); }

 private:
  std::string m_name;
  std::string m_reason;
};

/// Raises the platform's range exception unless the 0-based `index` names one of `count` objects.
inline void checkIndex(std::int64_t index, std::size_t count) {
  if (index >= 0 && static_cast<std::uint64_t>(index) < count) { return; }
  throw Exception("NSRangeException",
                  "index " + std::to_string(index) + " beyond bounds of a list of " + std::to_string(count) + " items");
}

/// The element of `list` at the 0-based `index`, or the platform's range exception.
template <class T>
const T& objectAtIndex(const std::vector<T>& list, std::int64_t index) {
  checkIndex(index, list.size());
  return list[static_cast<std::size_t>(index)];
}

}  // namespace orlocal
