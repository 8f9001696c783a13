#include "host/calc/session.h"

#include <atomic>
#include <exception>
#include <map>
#include <utility>

#include <fmt/format.h>

#include "host/calc/arguments.h"
#include "host/calc/ast.h"
#include "host/calc/builtins.h"
#include "host/calc/operators.h"
#include "host/calc/parser.h"
#include "host/calc/text_tools.h"

namespace orlocal::host::calc {

class Session::Evaluator : public CallContext {
 public:
  Evaluator(FunctionLibrary& library, Limits limits) : m_library(library), m_limits(limits) {}

  CalcResult<Outcome> run(std::string_view source) {
    CalcResult<NodePtr> program = parse(source, m_library);
    if (!program) return tl::unexpected(program.error());
    // A plug-in may evaluate while one of its functions runs: that calculation has its own failures and names.
    std::vector<std::string> failures = std::exchange(m_failures, {});
    Locals locals = std::exchange(m_locals, {});
    if (m_depth == 0) m_interrupted = false;
    Outcome outcome;
    outcome.value = eval(**program);
    outcome.failures = std::exchange(m_failures, std::move(failures));
    m_locals = std::move(locals);
    return outcome;
  }

  std::optional<CalcError> check(std::string_view source) const {
    const CalcResult<NodePtr> program = parse(source, m_library);
    return program ? std::nullopt : std::optional(program.error());
  }

  void interrupt() noexcept { m_interrupted = true; }

  std::vector<std::string> variableNames() const {
    std::vector<std::string> names;
    for (const auto& [name, value] : m_variables) names.push_back(name);
    return names;
  }

  Value evaluate(std::string_view source) override {
    const CalcResult<NodePtr> program = parse(source, m_library);
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

  void note(std::string reason) override { m_failures.push_back(std::move(reason)); }

 private:
  using Locals = std::vector<std::pair<std::string, Value>>;

  Value eval(const Node& node) {
    if (m_interrupted) return stop();
    if (m_depth >= m_limits.depth) {
      note(fmt::format("the calculation is more than {} calls deep", m_limits.depth));
      return Value::invalid();
    }
    const Depth depth(m_depth);
    return std::visit([this](const auto& content) { return on(content); }, node.content);
  }

  /// One call deeper for as long as it lives.
  class Depth {
   public:
    explicit Depth(int& depth) : m_depth(depth) { ++m_depth; }
    ~Depth() { --m_depth; }
    Depth(const Depth&) = delete;
    Depth& operator=(const Depth&) = delete;

   private:
    int& m_depth;
  };

  /// Every level of an interrupted calculation ends with this; the reason is given once.
  Value stop() {
    static const std::string kReason = "interrupted";
    if (m_failures.empty() || m_failures.back() != kReason) note(kReason);
    return Value::invalid();
  }

  Value on(const Literal& literal) { return literal.value; }

  Value on(const LocalVariable& variable) {
    for (auto local = m_locals.rbegin(); local != m_locals.rend(); ++local) {
      if (local->first == variable.name) return local->second;
    }
    return {};
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
      case TokenKind::kConcatenate:
        return concatenate(left, right);
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

  Value concatenate(const Value& left, const Value& right) {
    const std::u16string& head = left.asText();
    const std::u16string& tail = right.asText();
    if (head.size() + tail.size() > m_limits.textLength) return tooLong();
    return Value::ofText(head + tail);
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
    if (m_interrupted) return stop();
    tl::expected<Value, std::string> result = m_library.call(call.name, arguments);
    if (result) return std::move(*result);
    note(std::move(result.error()));
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
    m_locals.resize(scope);
    return result;
  }

  Value on(const While& loop) {
    const std::size_t scope = m_locals.size();
    assign(loop.initial, scope);
    Value result = loopResult(loop, scope);
    m_locals.resize(scope);
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
        setLocal(std::get<LocalVariable>(binding.target).name, std::move(value), scope);
      }
    }
  }

  void setLocal(const std::string& name, Value value, std::size_t scope) {
    for (std::size_t at = scope; at < m_locals.size(); ++at) {
      if (m_locals[at].first == name) {
        m_locals[at].second = std::move(value);
        return;
      }
    }
    m_locals.emplace_back(name, std::move(value));
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

CalcResult<Outcome> Session::evaluate(std::string_view source) { return m_evaluator->run(source); }
std::optional<CalcError> Session::check(std::string_view source) const { return m_evaluator->check(source); }
void Session::interrupt() noexcept { m_evaluator->interrupt(); }
std::vector<std::string> Session::variableNames() const { return m_evaluator->variableNames(); }

}  // namespace orlocal::host::calc
