#pragma once

#include <atomic>
#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "host/calc/ast.h"
#include "host/calc/builtins.h"
#include "host/calc/local_variables.h"
#include "host/calc/outcome.h"

namespace orlocal::host::calc {

/// Works out what calculations come to, one after the other, and keeps their `$` and `$$` variables. One thread, except
/// for `interrupt`.
class Evaluator {
 public:
  /// `context` is what functions of the language ask; it and the library outlive the evaluator.
  Evaluator(FunctionLibrary& library, CallContext& context, Limits limits)
      : m_library(library), m_context(context), m_limits(limits) {}

  /// A plug-in may evaluate while one of its functions runs: each calculation has its own failures and names.
  Outcome run(const Node& program);

  /// A part of the running calculation that was given as text: it has its own names, and its failures are that one's.
  Value runWithin(const Node& program);

  /// Adds a reason to the failures of the running calculation.
  void note(std::string reason);

  void interrupt() noexcept { m_interrupted = true; }

  /// Of all `$` and `$$` variables that hold something, in order.
  std::vector<std::string> variableNames() const;

 private:
  Value eval(const Node& node);
  std::vector<Value> evalAll(const std::vector<NodePtr>& nodes);
  Value stop();
  Value tooLong();

  template <class Content>
  Value on(const std::unique_ptr<const Content>& apart) {
    return on(*apart);
  }
  Value on(const Literal& literal) { return *literal.value; }
  Value on(const LocalVariable& variable);
  Value on(const Variable& variable);
  Value on(const Unary& unary);
  Value on(const Chain& chain);
  Value on(const Call& call);
  Value on(const GetCall& call) { return call.entry->body(); }
  Value on(const LibraryCall& call);
  Value on(const Let& let);
  Value on(const While& loop);

  Value join(Value& left, const Chain::Link& link);
  Value joinLogically(Value& left, const Chain::Link& link);
  Value concatenateAll(const Chain& chain);
  Value evalCase(const Call& call);
  Value evalChoose(const Call& call);
  Value loopResult(const While& loop, std::size_t scope);

  void assign(const std::vector<Binding>& bindings, std::size_t scope);
  void setVariable(std::string key, Value value);
  std::string keyOf(const Variable& variable);

  FunctionLibrary& m_library;
  CallContext& m_context;
  Limits m_limits;
  std::map<std::string, Value> m_variables;
  LocalVariables m_locals;
  std::vector<std::string> m_failures;
  int m_depth = 0;
  std::atomic<bool> m_interrupted = false;
};

}  // namespace orlocal::host::calc
