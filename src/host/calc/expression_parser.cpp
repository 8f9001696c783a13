#include "host/calc/expression_parser.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

#include "base/translation.h"
#include "base/try.h"
#include "host/calc/calc_failure.h"
#include "host/calc/nesting_level.h"
#include "host/calc/parser.h"
#include "host/calc/stack_room.h"
#include "host/calc/text_tools.h"
#include "host/fmwrapper/unicode.h"

namespace orlocal::host::calc {

namespace {

struct RankedOperator {
  TokenKind kind;
  int rank;
};

constexpr RankedOperator kOperators[] = {
    {TokenKind::kOr, 1},    {TokenKind::kXor, 1},         {TokenKind::kAnd, 2},     {TokenKind::kEqual, 3},
    {TokenKind::kLess, 3},  {TokenKind::kLessOrEqual, 3}, {TokenKind::kGreater, 3}, {TokenKind::kGreaterOrEqual, 3},
    {TokenKind::kPlus, 5},  {TokenKind::kNotEqual, 3},    {TokenKind::kMinus, 5},   {TokenKind::kConcatenate, 4},
    {TokenKind::kTimes, 6}, {TokenKind::kDivide, 6},      {TokenKind::kPower, 7},
};
constexpr int kLoosest = 1;

int rankOf(TokenKind kind) {
  const auto* found = std::ranges::find(kOperators, kind, &RankedOperator::kind);
  return found == std::end(kOperators) ? 0 : found->rank;
}

Result<Value> literalValue(const Token& token) {
  if (token.kind == TokenKind::kText) { return Value::ofUtf8(token.text); }
  if (token.kind == TokenKind::kPilcrow) { return Value::ofText(std::u16string(1, kReturn)); }
  Number number = Number::parse(toUtf16(token.text));
  if (!number.isNumber()) { return unreadable(token.offset, tr("this number is beyond what a calculation can hold")); }
  return Value::ofNumber(number);
}

}  // namespace

ExpressionParser::ExpressionParser(std::string_view source, const std::vector<Signature>& signatures)
    : m_tokens(source), m_functions(m_tokens, *this, signatures), m_startPlace(stackPlace()) {}

Result<NodePtr> ExpressionParser::parseAll() {
  if (m_tokens.peek().kind == TokenKind::kEnd) { return makeNode(Literal{std::make_shared<const Value>()}); }
  ORLOCAL_TRY(NodePtr result, parseExpression());
  if (const Token& next = m_tokens.peek(); next.kind != TokenKind::kEnd) {
    return unreadable(next.offset, tr("an operator is missing before {}", m_tokens.nameOf(next)));
  }
  return result;
}

Result<NodePtr> ExpressionParser::parseExpression() { return parseFrom(kLoosest); }

/// Everything that operators of this rank and tighter ones join.
Result<NodePtr> ExpressionParser::parseFrom(int loosest) {
  Result<NodePtr> joined = parseUnary();
  while (joined && rankOf(m_tokens.peek().kind) >= loosest) { joined = parseChain(*std::move(joined)); }
  return joined;
}

/// What operators of the rank of the next one join to `first`.
Result<NodePtr> ExpressionParser::parseChain(NodePtr first) {
  const int rank = rankOf(m_tokens.peek().kind);
  Chain chain{std::move(first), {}};
  while (rankOf(m_tokens.peek().kind) == rank) {
    const TokenKind operation = m_tokens.peek().kind;
    m_tokens.advance();
    ORLOCAL_TRY(NodePtr operand, parseFrom(rank + 1));
    chain.links.push_back({operation, std::move(operand)});
  }
  chain.links.shrink_to_fit();
  return makeNode(std::move(chain));
}

Result<NodePtr> ExpressionParser::parseUnary() {
  if (!hasRoomForALevel()) { return nestedTooDeeply(); }
  const NestingLevel level(m_depth);
  switch (m_tokens.peek().kind) {
    case TokenKind::kMinus:
    case TokenKind::kPlus:
    case TokenKind::kNot:
      return parseSigned();
    default:
      return parsePrimary();
  }
}

Result<NodePtr> ExpressionParser::parseSigned() {
  const TokenKind sign = m_tokens.peek().kind;
  m_tokens.advance();
  Result<NodePtr> operand = parseUnary();
  if (operand) { operand = makeNode(Unary{sign, *std::move(operand)}); }
  return operand;
}

bool ExpressionParser::hasRoomForALevel() const {
  // What is built as deep as this must also be let go again.
  return m_depth < kMaximumNesting && stackRoom() >= m_startPlace - stackPlace();
}

Failed ExpressionParser::nestedTooDeeply() const {
  const std::string reason = m_depth >= kMaximumNesting
                                 ? tr("this is nested more than {} levels deep", kMaximumNesting)
                                 : tr("this is nested too deeply for the stack of this process; nest it less, or allow "
                                      "a larger one (ulimit -s)");
  return unreadable(m_tokens.peek().offset, reason, ErrorCode::kUnsupported);
}

// Keeps nothing of its own while it reads on: a calculation nests as deep as the stack has room for these calls.
Result<NodePtr> ExpressionParser::parsePrimary() {
  switch (m_tokens.peek().kind) {
    case TokenKind::kNumber:
    case TokenKind::kText:
    case TokenKind::kPilcrow:
      return parseLiteral();
    case TokenKind::kVariable:
    case TokenKind::kGlobalVariable:
      return parseVariableNode();
    case TokenKind::kName:
      return m_functions.parseName();
    case TokenKind::kOpen:
      return parseBracketed();
    default:
      return valueMissing();
  }
}

Failed ExpressionParser::valueMissing() const {
  const Token& token = m_tokens.peek();
  return unreadable(token.offset, tr("a value is expected here, not {}", m_tokens.nameOf(token)));
}

Result<NodePtr> ExpressionParser::parseBracketed() {
  m_tokens.advance();
  ORLOCAL_TRY(NodePtr inner, parseExpression());
  ORLOCAL_CHECK(m_tokens.expect(TokenKind::kClose, ")"));
  return inner;
}

/// A literal, sharing the value of an equal one before it.
Result<NodePtr> ExpressionParser::parseLiteral() {
  const Token token = m_tokens.take();
  std::shared_ptr<const Value>& value = m_literals[static_cast<char>(token.kind) + token.text];
  if (!value) {
    ORLOCAL_TRY(Value read, literalValue(token));
    value = std::make_shared<const Value>(std::move(read));
  }
  return makeNode(Literal{value});
}

Result<NodePtr> ExpressionParser::parseVariableNode() {
  ORLOCAL_TRY(Variable variable, parseVariable());
  return makeNode(std::move(variable));
}

Result<Variable> ExpressionParser::parseVariable() {
  const Token name = m_tokens.take();
  Variable variable{(name.kind == TokenKind::kGlobalVariable ? "$$" : "$") + lowerName(name.text), nullptr};
  if (m_tokens.takeIf(TokenKind::kOpenList)) {
    ORLOCAL_TRY(variable.repetition, parseExpression());
    ORLOCAL_CHECK(m_tokens.expect(TokenKind::kCloseList, "]"));
  }
  return variable;
}

}  // namespace orlocal::host::calc
