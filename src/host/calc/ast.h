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

struct Literal {
  Value value;
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
    std::size_t offset;
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

struct Node {
  std::size_t offset;  ///< where it begins in the source
  std::variant<Literal, LocalVariable, Variable, Unary, Chain, Call, GetCall, LibraryCall, Let, While> content;
};

}  // namespace orlocal::host::calc
