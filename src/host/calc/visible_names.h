#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace orlocal::host::calc {

/// The names that the enclosing Let and While have given to variables, while a calculation is read.
class VisibleNames {
 public:
  /// Names given, the same one as often as it was given.
  std::size_t size() const { return m_given.size(); }

  bool contains(const std::string& name) const { return m_visible.contains(name); }

  void enter(const std::string& name) {
    const auto visible = m_visible.try_emplace(name, 0).first;
    ++visible->second;
    m_given.push_back(visible);
  }

  /// Forgets the names that came after the first `size` ones.
  void leave(std::size_t size) {
    for (; m_given.size() > size; m_given.pop_back()) {
      if (--m_given.back()->second == 0) { m_visible.erase(m_given.back()); }
    }
  }

 private:
  std::map<std::string, int> m_visible;  ///< each with how often it was given
  std::vector<std::map<std::string, int>::iterator> m_given;
};

}  // namespace orlocal::host::calc
