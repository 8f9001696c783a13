#include "host/calc/function_parser.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

#include "base/translation.h"
#include "base/try.h"
#include "host/calc/calc_failure.h"
#include "host/calc/expression_parser.h"
#include "host/calc/text_tools.h"

namespace orlocal::host::calc {

namespace {

Status checkCount(const Token& name, std::string_view prototype, int minimum, int maximum, std::size_t given) {
  const auto atLeast = static_cast<std::size_t>(std::max(minimum, 0));
  if (given < atLeast) { return unreadable(name.offset, tr("{} has too few arguments: {}", name.text, prototype)); }
  if (maximum >= 0 && given > static_cast<std::size_t>(maximum)) {
    return unreadable(name.offset, tr("{} has too many arguments: {}", name.text, prototype));
  }
  return {};
}

Status checkCount(const Token& name, const Builtin& builtin, std::size_t given) {
  ORLOCAL_CHECK(checkCount(name, builtin.prototype, builtin.minimum, builtin.maximum, given));
  if (builtin.form == Form::kOneOrAll && given != 1 && given != static_cast<std::size_t>(builtin.maximum)) {
    return unreadable(name.offset, tr("{} takes 1 or {} arguments: {}", name.text, builtin.maximum, builtin.prototype));
  }
  return {};
}

Failed unknown(const Token& name, bool called) {
  if (called) { return unreadable(name.offset, tr("there is no function named {}", name.text)); }
  if (name.text.find("::") != std::string::npos) {
    return unreadable(name.offset, tr("{} would be a field, and there are none here", name.text));
  }
  return unreadable(name.offset, tr("there is no function or variable named {}", name.text));
}

}  // namespace

FunctionParser::FunctionParser(TokenStream& tokens, ExpressionParser& expressions,
                               const std::vector<Signature>& signatures)
    : m_tokens(tokens), m_expressions(expressions) {
  for (const Signature& signature : signatures) { m_signatures.emplace(lowerName(signature.name), &signature); }
}

// As the parser of expressions, this and what it dispatches to keep little while they read on.
Result<NodePtr> FunctionParser::parseName() {
  const Token name = m_tokens.take();
  const bool called = m_tokens.peek().kind == TokenKind::kOpen;
  if (!called && m_names.contains(lowerName(name.text))) { return makeNode(LocalVariable{lowerName(name.text)}); }
  if (const Builtin* builtin = findBuiltin(name.text)) { return parseBuiltin(name, *builtin); }
  if (const auto signature = m_signatures.find(lowerName(name.text)); signature != m_signatures.end()) {
    return parseLibraryCall(name, *signature->second);
  }
  return unknown(name, called);
}

Result<NodePtr> FunctionParser::parseBuiltin(const Token& name, const Builtin& builtin) {
  switch (builtin.form) {
    case Form::kLet:
      return parseLet();
    case Form::kWhile:
      return parseWhile();
    case Form::kGet:
      return parseGet();
    case Form::kSubstitute:
    case Form::kFunction:
    case Form::kOneOrAll:
    case Form::kCase:
    case Form::kChoose:
      break;
  }
  return parseCall(name, builtin);
}

Result<NodePtr> FunctionParser::parseCall(const Token& name, const Builtin& builtin) {
  Arguments arguments;
  ORLOCAL_CHECK(builtin.form == Form::kSubstitute ? parseSubstituteArguments(arguments) : parseArguments(arguments));
  ORLOCAL_CHECK(checkCount(name, builtin, arguments.size()));
  return makeNode(Call{&builtin, std::move(arguments)});
}

Result<NodePtr> FunctionParser::parseLibraryCall(const Token& name, const Signature& signature) {
  Arguments arguments;
  ORLOCAL_CHECK(parseArguments(arguments));
  ORLOCAL_CHECK(checkCount(name, signature.prototype, signature.minimum, signature.maximum, arguments.size()));
  return makeNodeApart(LibraryCall{signature.name, std::move(arguments)});
}

/// `( a ; b )`, `( )` or nothing at all.
Status FunctionParser::parseArguments(Arguments& arguments) {
  if (!m_tokens.takeIf(TokenKind::kOpen) || m_tokens.takeIf(TokenKind::kClose)) { return {}; }
  do {
    ORLOCAL_TRY(NodePtr argument, m_expressions.parseExpression());
    arguments.push_back(std::move(argument));
  } while (m_tokens.takeIf(TokenKind::kSeparator));
  return m_tokens.expect(TokenKind::kClose, tr("; or )"));
}

/// `( text ; from ; to )` or `( text ; [ from ; to ] ; [ from ; to ] … )`.
Status FunctionParser::parseSubstituteArguments(Arguments& arguments) {
  ORLOCAL_CHECK(m_tokens.expect(TokenKind::kOpen, "("));
  ORLOCAL_CHECK(parseArgument(arguments));
  ORLOCAL_CHECK(m_tokens.expect(TokenKind::kSeparator, ";"));
  if (m_tokens.peek().kind == TokenKind::kOpenList) {
    do {
      ORLOCAL_CHECK(m_tokens.expect(TokenKind::kOpenList, "["));
      ORLOCAL_CHECK(parsePair(arguments));
      ORLOCAL_CHECK(m_tokens.expect(TokenKind::kCloseList, "]"));
    } while (m_tokens.takeIf(TokenKind::kSeparator));
  } else {
    ORLOCAL_CHECK(parsePair(arguments));
  }
  return m_tokens.expect(TokenKind::kClose, ")");
}

Status FunctionParser::parseArgument(Arguments& arguments) {
  ORLOCAL_TRY(NodePtr argument, m_expressions.parseExpression());
  arguments.push_back(std::move(argument));
  return {};
}

Status FunctionParser::parsePair(Arguments& arguments) {
  ORLOCAL_CHECK(parseArgument(arguments));
  ORLOCAL_CHECK(m_tokens.expect(TokenKind::kSeparator, ";"));
  return parseArgument(arguments);
}

Result<NodePtr> FunctionParser::parseGet() {
  ORLOCAL_CHECK(m_tokens.expect(TokenKind::kOpen, "("));
  const Token word = m_tokens.take();
  const GetEntry* entry = word.kind == TokenKind::kName ? findGet(word.text) : nullptr;
  if (entry == nullptr) { return unreadable(word.offset, tr("Get does not know {}", m_tokens.nameOf(word))); }
  ORLOCAL_CHECK(m_tokens.expect(TokenKind::kClose, ")"));
  return makeNode(GetCall{entry});
}

Result<NodePtr> FunctionParser::parseLet() {
  const std::size_t scope = m_names.size();
  Let let;
  ORLOCAL_CHECK(m_tokens.expect(TokenKind::kOpen, "("));
  ORLOCAL_TRY(let.bindings, parseBindings());
  ORLOCAL_CHECK(m_tokens.expect(TokenKind::kSeparator, ";"));
  ORLOCAL_TRY(let.result, m_expressions.parseExpression());
  ORLOCAL_CHECK(m_tokens.expect(TokenKind::kClose, ")"));
  m_names.leave(scope);
  return makeNodeApart(std::move(let));
}

Result<NodePtr> FunctionParser::parseWhile() {
  const std::size_t scope = m_names.size();
  While loop;
  ORLOCAL_CHECK(m_tokens.expect(TokenKind::kOpen, "("));
  ORLOCAL_TRY(loop.initial, parseBindings());
  ORLOCAL_CHECK(m_tokens.expect(TokenKind::kSeparator, ";"));
  ORLOCAL_TRY(loop.condition, m_expressions.parseExpression());
  ORLOCAL_CHECK(m_tokens.expect(TokenKind::kSeparator, ";"));
  ORLOCAL_TRY(loop.logic, parseBindings());
  ORLOCAL_CHECK(m_tokens.expect(TokenKind::kSeparator, ";"));
  ORLOCAL_TRY(loop.result, m_expressions.parseExpression());
  ORLOCAL_CHECK(m_tokens.expect(TokenKind::kClose, ")"));
  m_names.leave(scope);
  return makeNodeApart(std::move(loop));
}

/// `[ a = 1 ; b = 2 ]`, `[ ]` or `a = 1`. A separator before the closing bracket is forgiven, as the host forgives it.
Result<std::vector<Binding>> FunctionParser::parseBindings() {
  std::vector<Binding> bindings;
  const bool listed = m_tokens.takeIf(TokenKind::kOpenList);
  while (!listed || !m_tokens.takeIf(TokenKind::kCloseList)) {
    ORLOCAL_TRY(Binding binding, parseBinding());
    bindings.push_back(std::move(binding));
    if (!listed) { break; }
    if (m_tokens.peek().kind != TokenKind::kCloseList) {
      ORLOCAL_CHECK(m_tokens.expect(TokenKind::kSeparator, tr("; or ]")));
    }
  }
  return bindings;
}

Result<Binding> FunctionParser::parseBinding() {
  const Token& next = m_tokens.peek();
  if (next.kind == TokenKind::kVariable || next.kind == TokenKind::kGlobalVariable) {
    ORLOCAL_TRY(Variable variable, m_expressions.parseVariable());
    return parseBindingOf(std::move(variable));
  }
  if (next.kind != TokenKind::kName) {
    return unreadable(next.offset, tr("a variable is expected here, not {}", m_tokens.nameOf(next)));
  }
  const std::string name = lowerName(m_tokens.take().text);
  ORLOCAL_TRY(Binding binding, parseBindingOf(LocalVariable{name}));
  // Only now: on its own right side the name still means the outer variable.
  m_names.enter(name);
  return binding;
}

Result<Binding> FunctionParser::parseBindingOf(std::variant<LocalVariable, Variable> target) {
  Binding binding{std::move(target), nullptr};
  ORLOCAL_CHECK(m_tokens.expect(TokenKind::kEqual, "="));
  ORLOCAL_TRY(binding.value, m_expressions.parseExpression());
  return binding;
}

}  // namespace orlocal::host::calc
