#include "host/calc/session.h"

#include <utility>

#include "base/try.h"
#include "host/calc/builtins.h"
#include "host/calc/calc_failure.h"
#include "host/calc/evaluator.h"
#include "host/calc/parser.h"

namespace orlocal::host::calc {

/// What functions of the language ask, and the evaluator that calls them.
class Session::Context : public CallContext {
 public:
  Context(FunctionLibrary& library, Limits limits)
      : m_library(library), m_limits(limits), m_evaluator(library, *this, limits) {}

  Result<NodePtr> read(std::string_view source) const { return parse(source, m_library); }

  Evaluator& evaluator() { return m_evaluator; }

  Value evaluate(std::string_view source) override {
    const Result<NodePtr> program = read(source);
    if (!program) {
      note(describe(source, program.error()));
      return Value::invalid();
    }
    return m_evaluator.runWithin(**program);
  }

  bool isValidExpression(std::string_view source) override { return read(source).has_value(); }

  std::size_t textLimit() const override { return m_limits.textLength; }

  void note(std::string reason) override { m_evaluator.note(std::move(reason)); }

 private:
  FunctionLibrary& m_library;
  Limits m_limits;
  Evaluator m_evaluator;
};

Session::Session(FunctionLibrary& library, Limits limits) : m_context(std::make_unique<Context>(library, limits)) {}
Session::~Session() = default;

Result<Outcome> Session::evaluate(std::string_view source) {
  ORLOCAL_TRY(const NodePtr program, m_context->read(source));
  return m_context->evaluator().run(*program);
}

Status Session::check(std::string_view source) const {
  ORLOCAL_CHECK(m_context->read(source));
  return {};
}

void Session::interrupt() noexcept { m_context->evaluator().interrupt(); }

std::vector<std::string> Session::variableNames() const { return m_context->evaluator().variableNames(); }

}  // namespace orlocal::host::calc
