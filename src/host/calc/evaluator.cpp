#include "host/calc/evaluator.h"

#include <cstdint>
#include <utility>

#include <fmt/format.h>

#include "base/translation.h"
#include "host/calc/nesting_level.h"
#include "host/calc/stack_room.h"

namespace orlocal::host::calc {

namespace {

/// Reasons that one calculation keeps; a loop over something faulty has one for each round.
constexpr std::size_t kMostFailures = 100;

}  // namespace

Outcome Evaluator::run(const Node& program) {
  std::vector<std::string> failures = std::exchange(m_failures, {});
  LocalVariables locals = std::exchange(m_locals, {});
  if (m_depth == 0) { m_interrupted = false; }
  Outcome outcome;
  outcome.value = eval(program);
  outcome.failures = std::exchange(m_failures, std::move(failures));
  m_locals = std::move(locals);
  return outcome;
}

Value Evaluator::runWithin(const Node& program) {
  LocalVariables locals = std::exchange(m_locals, {});
  Value value = eval(program);
  m_locals = std::move(locals);
  return value;
}

void Evaluator::note(std::string reason) {
  if (m_failures.size() < kMostFailures) {
    m_failures.push_back(std::move(reason));
  } else if (m_failures.size() == kMostFailures) {
    m_failures.push_back(tr("and more, which are not kept"));
  }
}

Value Evaluator::eval(const Node& node) {
  if (m_interrupted) { return stop(); }
  if (m_depth >= m_limits.depth) {
    note(tr("the calculation is more than {} calls deep", m_limits.depth));
    return Value::invalid();
  }
  if (stackRoom() == 0) {
    note(
        tr("the calculation is nested too deeply for the stack of this process; nest it less, or allow a larger one "
           "(ulimit -s)"));
    return Value::invalid();
  }
  const NestingLevel level(m_depth);
  return std::visit([this](const auto& content) { return on(content); }, node.content);
}

/// Every level of an interrupted calculation ends with this; the reason is given once.
Value Evaluator::stop() {
  static const std::string kReason = "interrupted";
  if (m_failures.empty() || m_failures.back() != kReason) { m_failures.push_back(kReason); }
  return Value::invalid();
}

Value Evaluator::tooLong() {
  note(tr("a text would be longer than {} characters", m_limits.textLength));
  return Value::invalid();
}

std::vector<Value> Evaluator::evalAll(const std::vector<NodePtr>& nodes) {
  std::vector<Value> values;
  values.reserve(nodes.size());
  for (const NodePtr& node : nodes) { values.push_back(eval(*node)); }
  return values;
}

Value Evaluator::on(const Call& call) {
  if (call.function->form == Form::kCase) { return evalCase(call); }
  if (call.function->form == Form::kChoose) { return evalChoose(call); }
  const std::vector<Value> arguments = evalAll(call.arguments);
  if (m_interrupted) { return stop(); }
  Value result = call.function->body(m_context, arguments);
  if (result.type() == fmx::kText && result.asText().size() > m_limits.textLength) { return tooLong(); }
  return result;
}

Value Evaluator::evalCase(const Call& call) {
  std::size_t at = 0;
  for (; at + 1 < call.arguments.size(); at += 2) {
    Value test = eval(*call.arguments[at]);
    if (!test.isValid()) { return test; }
    if (test.asBoolean()) { return eval(*call.arguments[at + 1]); }
  }
  return at < call.arguments.size() ? eval(*call.arguments[at]) : Value{};
}

Value Evaluator::evalChoose(const Call& call) {
  Value test = eval(*call.arguments.front());
  if (!test.isValid()) { return test; }
  const std::int64_t choice = test.asNumber().toInt64();
  if (choice < 0 || static_cast<std::size_t>(choice) + 1 >= call.arguments.size()) { return {}; }
  return eval(*call.arguments[static_cast<std::size_t>(choice) + 1]);
}

Value Evaluator::on(const LibraryCall& call) {
  const std::vector<Value> arguments = evalAll(call.arguments);
  if (m_interrupted) { return stop(); }
  Result<Value> result = m_library.call(call.name, arguments);
  if (result) { return std::move(*result); }
  note(std::move(result.error().message));
  return Value::invalid();
}

}  // namespace orlocal::host::calc
