#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "base/result.h"
#include "host/calc/ast.h"
#include "host/calc/function_library.h"
#include "host/calc/function_parser.h"
#include "host/calc/token_stream.h"

namespace orlocal::host::calc {

/// Reads operators, literals and brackets; hands what begins with a name to the `FunctionParser`, which comes back for
/// the expressions in it.
class ExpressionParser {
 public:
  /// The source is made of tokens (`TokenStream::check`). Both arguments outlive the parser.
  ExpressionParser(std::string_view source, const std::vector<Signature>& signatures);

  /// All of the source.
  Result<NodePtr> parseAll();

  /// From the next token as far as operators join.
  Result<NodePtr> parseExpression();

  /// The `$` or `$$` variable that is next, with its repetition when one follows.
  Result<Variable> parseVariable();

 private:
  Result<NodePtr> parseFrom(int loosest);
  Result<NodePtr> parseChain(NodePtr first);
  Result<NodePtr> parseUnary();
  Result<NodePtr> parseSigned();
  Result<NodePtr> parsePrimary();
  Result<NodePtr> parseBracketed();
  Result<NodePtr> parseLiteral();
  Result<NodePtr> parseVariableNode();
  Failed valueMissing() const;
  bool hasRoomForALevel() const;
  Failed nestedTooDeeply() const;

  TokenStream m_tokens;
  FunctionParser m_functions;
  std::unordered_map<std::string, std::shared_ptr<const Value>> m_literals;
  int m_depth = 0;
  std::size_t m_startPlace;  ///< on the stack
};

}  // namespace orlocal::host::calc
