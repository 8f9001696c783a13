#include <utility>

#include "host/calc/arguments.h"
#include "host/calc/evaluator.h"
#include "host/calc/operators.h"

namespace orlocal::host::calc {

Value Evaluator::on(const Unary& unary) {
  Value operand = eval(*unary.operand);
  switch (unary.operation) {
    case TokenKind::kNot:
      return operand.isValid() ? truth(!operand.asBoolean()) : operand;
    case TokenKind::kMinus:
      return operand.isValid() ? Value::ofNumber(-operand.asNumber()) : operand;
    default:
      return operand;
  }
}

Value Evaluator::on(const Chain& chain) {
  if (chain.links.front().operation == TokenKind::kConcatenate) { return concatenateAll(chain); }
  Value left = eval(*chain.first);
  for (const Chain::Link& link : chain.links) {
    if (m_interrupted) { return stop(); }
    left = join(left, link);
  }
  return left;
}

Value Evaluator::join(Value& left, const Chain::Link& link) {
  switch (link.operation) {
    case TokenKind::kAnd:
    case TokenKind::kOr:
    case TokenKind::kXor:
      return joinLogically(left, link);
    case TokenKind::kPlus:
    case TokenKind::kMinus:
    case TokenKind::kTimes:
    case TokenKind::kDivide:
    case TokenKind::kPower:
      return calculate(link.operation, left, eval(*link.operand));
    default:
      return compare(link.operation, left, eval(*link.operand));
  }
}

/// `and` and `or` leave their right side alone when the left one decides.
Value Evaluator::joinLogically(Value& left, const Chain::Link& link) {
  if (!left.isValid()) { return left; }
  const bool first = left.asBoolean();
  if (link.operation == TokenKind::kAnd && !first) { return truth(false); }
  if (link.operation == TokenKind::kOr && first) { return truth(true); }
  Value right = eval(*link.operand);
  if (!right.isValid()) { return right; }
  return truth(link.operation == TokenKind::kXor ? first != right.asBoolean() : right.asBoolean());
}

/// One text grows through the whole chain; a text for each link would make long chains quadratic.
Value Evaluator::concatenateAll(const Chain& chain) {
  std::u16string text = eval(*chain.first).asText();
  bool refused = false;
  for (const Chain::Link& link : chain.links) {
    if (m_interrupted) { return stop(); }
    const Value right = eval(*link.operand);
    const std::u16string& tail = right.asText();
    refused = text.size() + tail.size() > m_limits.textLength;
    if (refused) {
      text = tooLong().asText();
    } else {
      text += tail;
    }
  }
  return refused ? Value::invalid() : Value::ofText(std::move(text));
}

}  // namespace orlocal::host::calc
