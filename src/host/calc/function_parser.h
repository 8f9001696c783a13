#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <variant>
#include <vector>

#include "base/result.h"
#include "host/calc/ast.h"
#include "host/calc/builtins.h"
#include "host/calc/function_library.h"
#include "host/calc/token_stream.h"
#include "host/calc/visible_names.h"

namespace orlocal::host::calc {

class ExpressionParser;

/// Reads what begins with a name: a function of the language or of the library with its arguments, or a variable of an
/// enclosing Let or While.
class FunctionParser {
 public:
  /// All of them outlive the parser.
  FunctionParser(TokenStream& tokens, ExpressionParser& expressions, const std::vector<Signature>& signatures);

  /// What the name that is next begins.
  Result<NodePtr> parseName();

 private:
  Result<NodePtr> parseBuiltin(const Token& name, const Builtin& builtin);
  Result<NodePtr> parseCall(const Token& name, const Builtin& builtin);
  Result<NodePtr> parseLibraryCall(const Token& name, const Signature& signature);

  using Arguments = std::vector<NodePtr>;
  Status parseArguments(Arguments& arguments);
  Status parseSubstituteArguments(Arguments& arguments);
  Status parseArgument(Arguments& arguments);
  Status parsePair(Arguments& arguments);

  Result<NodePtr> parseGet();
  Result<NodePtr> parseLet();
  Result<NodePtr> parseWhile();
  Result<std::vector<Binding>> parseBindings();
  Result<Binding> parseBinding();
  Result<Binding> parseBindingOf(std::variant<LocalVariable, Variable> target);

  TokenStream& m_tokens;
  ExpressionParser& m_expressions;
  std::unordered_map<std::string, const Signature*> m_signatures;  ///< by lower-case name
  VisibleNames m_names;
};

}  // namespace orlocal::host::calc
