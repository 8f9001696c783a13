#include "host/calc/session.h"

#include <atomic>
#include <cstdint>
#include <map>
#include <unordered_map>
#include <utility>

#include <fmt/format.h>

#include "base/try.h"
#include "host/calc/arguments.h"
#include "host/calc/ast.h"
#include "host/calc/builtins.h"
#include "host/calc/calc_failure.h"
#include "host/calc/nesting_level.h"
#include "host/calc/operators.h"
#include "host/calc/parser.h"
#include "host/calc/stack_room.h"
#include "host/calc/text_tools.h"

namespace orlocal::host::calc {

namespace {

/// The variables of the enclosing Let and While, the innermost last. A name leads to its innermost variable at once,
/// however many there are.
class Locals {
 public:
  std::size_t size() const { return m_variables.size(); }

  const Value* find(const std::string& name) const {
    const auto latest = m_latest.find(name);
    return latest == m_latest.end() ? nullptr : &m_variables[latest->second].value;
  }

  /// Sets the variable of that name at or after `scope`; makes one when there is none.
  void set(const std::string& name, Value value, std::size_t scope) {
    const auto [latest, isNew] = m_latest.try_emplace(name, m_variables.size());
    if (!isNew && latest->second >= scope) {
      m_variables[latest->second].value = std::move(value);
      return;
    }
    const std::size_t outer = isNew ? kNone : std::exchange(latest->second, m_variables.size());
    m_variables.push_back({&latest->first, outer, std::move(value)});
  }

  /// Forgets all variables after the first `size` ones.
  void leave(std::size_t size) {
    for (; m_variables.size() > size; m_variables.pop_back()) {
      const Variable& variable = m_variables.back();
      const auto latest = m_latest.find(*variable.name);
      if (variable.outer == kNone) {
        m_latest.erase(latest);
      } else {
        latest->second = variable.outer;
      }
    }
  }

 private:
  static constexpr std::size_t kNone = SIZE_MAX;

  struct Variable {
    const std::string* name;  ///< the key in `m_latest`
    std::size_t outer;        ///< the variable of that name that this one hides
    Value value;
  };

  std::vector<Variable> m_variables;
  std::unordered_map<std::string, std::size_t> m_latest;
};

/// Reasons that one calculation keeps; a loop over something faulty has one for each round.
constexpr std::size_t kMostFailures = 100;

}  // namespace

class Session::Evaluator : public CallContext {
 public:
  Evaluator(FunctionLibrary& library, Limits limits) : m_library(library), m_limits(limits) {}

  Result<Outcome> run(std::string_view source) {
    ORLOCAL_TRY(const NodePtr program, parse(source, m_library));
    // A plug-in may evaluate while one of its functions runs: that calculation has its own failures and names.
    std::vector<std::string> failures = std::exchange(m_failures, {});
    Locals locals = std::exchange(m_locals, {});
    if (m_depth == 0) m_interrupted = false;
    Outcome outcome;
    outcome.value = eval(*program);
    outcome.failures = std::exchange(m_failures, std::move(failures));
    m_locals = std::move(locals);
    return outcome;
  }

  Status check(std::string_view source) const {
    ORLOCAL_CHECK(parse(source, m_library));
    return {};
  }

  void interrupt() noexcept { m_interrupted = true; }

  std::vector<std::string> variableNames() const {
    std::vector<std::string> names;
    for (const auto& [name, value] : m_variables) names.push_back(name);
    return names;
  }

  Value evaluate(std::string_view source) override {
    const Result<NodePtr> program = parse(source, m_library);
    if (!program) {
      note(describe(source, program.error()));
      return Value::invalid();
    }
    Locals locals = std::exchange(m_locals, {});
    Value value = eval(**program);
    m_locals = std::move(locals);
    return value;
  }

  bool isValidExpression(std::string_view source) override { return parse(source, m_library).has_value(); }

  std::size_t textLimit() const override { return m_limits.textLength; }

  void note(std::string reason) override {
    if (m_failures.size() < kMostFailures) {
      m_failures.push_back(std::move(reason));
    } else if (m_failures.size() == kMostFailures) {
      m_failures.push_back("and more, which are not kept");
    }
  }

 private:
  Value eval(const Node& node) {
    if (m_interrupted) return stop();
    if (m_depth >= m_limits.depth) {
      note(fmt::format("the calculation is more than {} calls deep", m_limits.depth));
      return Value::invalid();
    }
    if (stackRoom() == 0) {
      note(
          "the calculation is nested too deeply for the stack of this process; nest it less, or allow a larger one "
          "(ulimit -s)");
      return Value::invalid();
    }
    const NestingLevel level(m_depth);
    return std::visit([this](const auto& content) { return on(content); }, node.content);
  }

  /// Every level of an interrupted calculation ends with this; the reason is given once.
  Value stop() {
    static const std::string kReason = "interrupted";
    if (m_failures.empty() || m_failures.back() != kReason) m_failures.push_back(kReason);
    return Value::invalid();
  }

  template <class Content>
  Value on(const std::unique_ptr<const Content>& apart) {
    return on(*apart);
  }

  Value on(const Literal& literal) { return *literal.value; }

  Value on(const LocalVariable& variable) {
    const Value* value = m_locals.find(variable.name);
    return value == nullptr ? Value{} : *value;
  }

  Value on(const Variable& variable) {
    const auto found = m_variables.find(keyOf(variable));
    return found == m_variables.end() ? Value{} : found->second;
  }

  Value on(const Unary& unary) {
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

  Value on(const Chain& chain) {
    if (chain.links.front().operation == TokenKind::kConcatenate) return concatenateAll(chain);
    Value left = eval(*chain.first);
    for (const Chain::Link& link : chain.links) {
      if (m_interrupted) return stop();
      left = join(left, link);
    }
    return left;
  }

  /// `and` and `or` leave their right side alone when the left one decides.
  Value join(Value& left, const Chain::Link& link) {
    const bool logical =
        link.operation == TokenKind::kAnd || link.operation == TokenKind::kOr || link.operation == TokenKind::kXor;
    if (logical) {
      if (!left.isValid()) return left;
      const bool first = left.asBoolean();
      if (link.operation == TokenKind::kAnd && !first) return truth(false);
      if (link.operation == TokenKind::kOr && first) return truth(true);
      const Value right = eval(*link.operand);
      if (!right.isValid()) return right;
      return truth(link.operation == TokenKind::kXor ? first != right.asBoolean() : right.asBoolean());
    }
    const Value right = eval(*link.operand);
    switch (link.operation) {
      case TokenKind::kPlus:
      case TokenKind::kMinus:
      case TokenKind::kTimes:
      case TokenKind::kDivide:
      case TokenKind::kPower:
        return calculate(link.operation, left, right);
      default:
        return compare(link.operation, left, right);
    }
  }

  /// One text grows through the whole chain; a text for each link would make long chains quadratic.
  Value concatenateAll(const Chain& chain) {
    std::u16string text = eval(*chain.first).asText();
    bool refused = false;
    for (const Chain::Link& link : chain.links) {
      if (m_interrupted) return stop();
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

  Value tooLong() {
    note(fmt::format("a text would be longer than {} characters", m_limits.textLength));
    return Value::invalid();
  }

  Value on(const Call& call) {
    if (call.function->form == Form::kCase) return evalCase(call);
    if (call.function->form == Form::kChoose) return evalChoose(call);
    const std::vector<Value> arguments = evalAll(call.arguments);
    if (m_interrupted) return stop();
    Value result = call.function->body(*this, arguments);
    if (result.type() == fmx::kText && result.asText().size() > m_limits.textLength) return tooLong();
    return result;
  }

  Value evalCase(const Call& call) {
    std::size_t at = 0;
    for (; at + 1 < call.arguments.size(); at += 2) {
      Value test = eval(*call.arguments[at]);
      if (!test.isValid()) return test;
      if (test.asBoolean()) return eval(*call.arguments[at + 1]);
    }
    return at < call.arguments.size() ? eval(*call.arguments[at]) : Value{};
  }

  Value evalChoose(const Call& call) {
    Value test = eval(*call.arguments.front());
    if (!test.isValid()) return test;
    const std::int64_t choice = test.asNumber().toInt64();
    if (choice < 0 || static_cast<std::size_t>(choice) + 1 >= call.arguments.size()) return {};
    return eval(*call.arguments[static_cast<std::size_t>(choice) + 1]);
  }

  Value on(const GetCall& call) { return call.entry->body(); }

  Value on(const LibraryCall& call) {
    const std::vector<Value> arguments = evalAll(call.arguments);
    if (m_interrupted) {
      return stop();
    }
    Result<Value> result = m_library.call(call.name, arguments);
    if (result) {
      return std::move(*result);
    }
    note(std::move(result.error().message));
    return Value::invalid();
  }

  std::vector<Value> evalAll(const std::vector<NodePtr>& nodes) {
    std::vector<Value> values;
    values.reserve(nodes.size());
    for (const NodePtr& node : nodes) values.push_back(eval(*node));
    return values;
  }

  Value on(const Let& let) {
    const std::size_t scope = m_locals.size();
    assign(let.bindings, scope);
    Value result = eval(*let.result);
    m_locals.leave(scope);
    return result;
  }

  Value on(const While& loop) {
    const std::size_t scope = m_locals.size();
    assign(loop.initial, scope);
    Value result = loopResult(loop, scope);
    m_locals.leave(scope);
    return result;
  }

  Value loopResult(const While& loop, std::size_t scope) {
    for (std::size_t iterations = 0;; ++iterations) {
      Value condition = eval(*loop.condition);
      if (m_interrupted) return stop();
      if (!condition.isValid()) return condition;
      if (!condition.asBoolean()) return eval(*loop.result);
      if (iterations == m_limits.iterations) {
        note(fmt::format("While went round {} times without an end", m_limits.iterations));
        return Value::invalid();
      }
      assign(loop.logic, scope);
    }
  }

  void assign(const std::vector<Binding>& bindings, std::size_t scope) {
    for (const Binding& binding : bindings) {
      Value value = eval(*binding.value);
      if (const auto* variable = std::get_if<Variable>(&binding.target)) {
        setVariable(keyOf(*variable), std::move(value));
      } else {
        m_locals.set(std::get<LocalVariable>(binding.target).name, std::move(value), scope);
      }
    }
  }

  /// A variable that holds nothing is none.
  void setVariable(std::string key, Value value) {
    if (value.isEmpty() && value.isValid()) {
      m_variables.erase(key);
    } else {
      m_variables.insert_or_assign(std::move(key), std::move(value));
    }
  }

  std::string keyOf(const Variable& variable) {
    if (!variable.repetition) return variable.name;
    const std::int64_t repetition = eval(*variable.repetition).asNumber().toInt64();
    return repetition == 1 ? variable.name : fmt::format("{}[{}]", variable.name, repetition);
  }

  FunctionLibrary& m_library;
  Limits m_limits;
  std::map<std::string, Value> m_variables;
  Locals m_locals;
  std::vector<std::string> m_failures;
  int m_depth = 0;
  std::atomic<bool> m_interrupted = false;
};

Session::Session(FunctionLibrary& library, Limits limits) : m_evaluator(std::make_unique<Evaluator>(library, limits)) {}
Session::~Session() = default;

Result<Outcome> Session::evaluate(std::string_view source) { return m_evaluator->run(source); }
Status Session::check(std::string_view source) const { return m_evaluator->check(source); }
void Session::interrupt() noexcept { m_evaluator->interrupt(); }
std::vector<std::string> Session::variableNames() const { return m_evaluator->variableNames(); }

}  // namespace orlocal::host::calc
