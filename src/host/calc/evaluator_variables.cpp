#include <cstdint>
#include <utility>

#include <fmt/format.h>

#include "base/translation.h"
#include "host/calc/evaluator.h"

namespace orlocal::host::calc {

Value Evaluator::on(const LocalVariable& variable) {
  const Value* value = m_locals.find(variable.name);
  return value == nullptr ? Value{} : *value;
}

Value Evaluator::on(const Variable& variable) {
  const auto found = m_variables.find(keyOf(variable));
  return found == m_variables.end() ? Value{} : found->second;
}

Value Evaluator::on(const Let& let) {
  const std::size_t scope = m_locals.size();
  assign(let.bindings, scope);
  Value result = eval(*let.result);
  m_locals.leave(scope);
  return result;
}

Value Evaluator::on(const While& loop) {
  const std::size_t scope = m_locals.size();
  assign(loop.initial, scope);
  Value result = loopResult(loop, scope);
  m_locals.leave(scope);
  return result;
}

Value Evaluator::loopResult(const While& loop, std::size_t scope) {
  for (std::size_t iterations = 0;; ++iterations) {
    Value condition = eval(*loop.condition);
    if (m_interrupted) { return stop(); }
    if (!condition.isValid()) { return condition; }
    if (!condition.asBoolean()) { return eval(*loop.result); }
    if (iterations == m_limits.iterations) {
      note(tr("While went round {} times without an end", m_limits.iterations));
      return Value::invalid();
    }
    assign(loop.logic, scope);
  }
}

void Evaluator::assign(const std::vector<Binding>& bindings, std::size_t scope) {
  for (const Binding& binding : bindings) {
    Value value = eval(*binding.value);
    if (const auto* variable = std::get_if<Variable>(&binding.target)) {
      setVariable(keyOf(*variable), std::move(value));
    } else {
      m_locals.set(std::get<LocalVariable>(binding.target).name, std::move(value), scope);
    }
  }
}

/// A variable that holds nothing is none.
void Evaluator::setVariable(std::string key, Value value) {
  if (value.isEmpty() && value.isValid()) {
    m_variables.erase(key);
  } else {
    m_variables.insert_or_assign(std::move(key), std::move(value));
  }
}

std::string Evaluator::keyOf(const Variable& variable) {
  if (!variable.repetition) { return variable.name; }
  const std::int64_t repetition = eval(*variable.repetition).asNumber().toInt64();
  return repetition == 1 ? variable.name : fmt::format("{}[{}]", variable.name, repetition);
}

std::vector<std::string> Evaluator::variableNames() const {
  std::vector<std::string> names;
  for (const auto& [name, value] : m_variables) { names.push_back(name); }
  return names;
}

}  // namespace orlocal::host::calc
