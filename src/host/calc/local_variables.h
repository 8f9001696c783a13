#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "host/fmwrapper/value.h"

namespace orlocal::host::calc {

/// The variables of the enclosing Let and While, the innermost last. A name leads to its innermost variable at once,
/// however many there are.
class LocalVariables {
 public:
  std::size_t size() const { return m_variables.size(); }

  /// Null when no variable has that name.
  const Value* find(const std::string& name) const;

  /// Sets the variable of that name at or after `scope`; makes one when there is none.
  void set(const std::string& name, Value value, std::size_t scope);

  /// Forgets all variables after the first `size` ones.
  void leave(std::size_t size);

 private:
  static constexpr std::size_t kNone = SIZE_MAX;

  struct Variable {
    const std::string* name;  ///< the key in `m_latest`
    std::size_t outer;        ///< the variable of that name that this one hides
    Value value;
  };

  std::vector<Variable> m_variables;
  std::unordered_map<std::string, std::size_t> m_latest;
};

}  // namespace orlocal::host::calc
