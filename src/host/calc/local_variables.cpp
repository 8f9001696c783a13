#include "host/calc/local_variables.h"

#include <utility>

namespace orlocal::host::calc {

const Value* LocalVariables::find(const std::string& name) const {
  const auto latest = m_latest.find(name);
  return latest == m_latest.end() ? nullptr : &m_variables[latest->second].value;
}

void LocalVariables::set(const std::string& name, Value value, std::size_t scope) {
  const auto [latest, isNew] = m_latest.try_emplace(name, m_variables.size());
  if (!isNew && latest->second >= scope) {
    m_variables[latest->second].value = std::move(value);
    return;
  }
  const std::size_t outer = isNew ? kNone : std::exchange(latest->second, m_variables.size());
  m_variables.push_back({&latest->first, outer, std::move(value)});
}

void LocalVariables::leave(std::size_t size) {
  for (; m_variables.size() > size; m_variables.pop_back()) {
    const Variable& variable = m_variables.back();
    const auto latest = m_latest.find(*variable.name);
    if (variable.outer == kNone) {
      m_latest.erase(latest);
    } else {
      latest->second = variable.outer;
    }
  }
}

}  // namespace orlocal::host::calc
