#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "host/calc/lexer.h"
#include "host/fmwrapper/value.h"

namespace orlocal::host::calc {

struct Builtin;
struct GetEntry;
struct Signature;

struct Node;
using NodePtr = std::unique_ptr<const Node>;

/// Equal literals of a calculation share one value, so that a long one takes little memory.
struct Literal {
  std::shared_ptr<const Value> value;
};

/// A variable of an enclosing Let or While, by its lower-case name.
struct LocalVariable {
  std::string name;
};

/// `$name`, `$$name`, either with a repetition in brackets. The name is in lower case, its dollar signs included.
struct Variable {
  std::string name;
  NodePtr repetition;  ///< null: the first
};

struct Unary {
  TokenKind operation;  ///< kPlus, kMinus or kNot
  NodePtr operand;
};

/// Operands joined by operators of one rank, evaluated from left to right. Long chains cost no depth.
struct Chain {
  NodePtr first;
  struct Link {
    TokenKind operation;
    NodePtr operand;
  };
  std::vector<Link> links;
};

/// A function of the language. The arguments of the bracketed form of Substitute stand here one after the other.
struct Call {
  const Builtin* function;
  std::vector<NodePtr> arguments;
};

/// `Get ( … )`.
struct GetCall {
  const GetEntry* entry;
};

/// A function from the library, such as one that a plug-in registered.
struct LibraryCall {
  std::string name;
  std::vector<NodePtr> arguments;
};

struct Binding {
  std::variant<LocalVariable, Variable> target;
  NodePtr value;
};

struct Let {
  std::vector<Binding> bindings;
  NodePtr result;
};

struct While {
  std::vector<Binding> initial;
  NodePtr condition;
  std::vector<Binding> logic;
  NodePtr result;
};

/// The rare large kinds stand apart: most nodes are literals, and a calculation may have half a million of them.
struct Node {
  std::variant<Literal, LocalVariable, Variable, Unary, Chain, Call, GetCall, std::unique_ptr<const LibraryCall>,
               std::unique_ptr<const Let>, std::unique_ptr<const While>>
      content;
};

template <class Content>
NodePtr makeNode(Content content) {
  return std::make_unique<const Node>(Node{std::move(content)});
}

/// For the large kinds.
template <class Content>
NodePtr makeNodeApart(Content content) {
  return makeNode(std::make_unique<const Content>(std::move(content)));
}

}  // namespace orlocal::host::calc
