#include "host/calc/parser.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "host/calc/builtins.h"
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

/// How a token is named in a message.
std::string nameOf(const Token& token, std::string_view source) {
  switch (token.kind) {
    case TokenKind::kEnd:
      return "the end";
    case TokenKind::kText:
      return "a text";
    default: {
      // The token's own spelling: up to the next blank or the next ASCII symbol is enough to recognise it by.
      std::size_t length = 1;
      const std::string_view rest = source.substr(token.offset);
      if (token.kind == TokenKind::kName || token.kind == TokenKind::kNumber) length = token.text.size();
      while (length < rest.size() && (static_cast<unsigned char>(rest[length]) & 0xC0U) == 0x80U) ++length;
      return std::string(rest.substr(0, length));
    }
  }
}

/// Unwinds the descent; never leaves this file.
struct Refusal {
  CalcError error;
};

class Parser {
 public:
  Parser(std::string_view source, std::vector<Token> tokens, std::vector<Signature> signatures)
      : m_source(source), m_tokens(std::move(tokens)), m_signatures(std::move(signatures)) {}

  NodePtr run() {
    if (peek().kind == TokenKind::kEnd) return make(0, Literal{});
    NodePtr result = parseExpression();
    if (peek().kind != TokenKind::kEnd) refuse(peek().offset, "an operator is missing before " + name(peek()));
    return result;
  }

 private:
  const Token& peek() const { return m_tokens[m_at]; }
  Token take() { return m_tokens[m_at < m_tokens.size() - 1 ? m_at++ : m_at]; }
  bool takeIf(TokenKind kind) {
    if (peek().kind != kind) return false;
    ++m_at;
    return true;
  }
  std::string name(const Token& token) const { return nameOf(token, m_source); }

  [[noreturn]] static void refuse(std::size_t offset, std::string message) {
    throw Refusal{CalcError{offset, std::move(message)}};
  }

  void expect(TokenKind kind, std::string_view spelling) {
    if (!takeIf(kind)) refuse(peek().offset, fmt::format("{} is expected here, not {}", spelling, name(peek())));
  }

  template <class Content>
  static NodePtr make(std::size_t offset, Content content) {
    return std::make_unique<const Node>(Node{offset, std::move(content)});
  }

  NodePtr parseExpression() { return parseFrom(kLoosest); }

  /// Everything that operators of this rank and tighter ones join.
  NodePtr parseFrom(int loosest) {
    NodePtr left = parseUnary();
    while (rankOf(peek().kind) >= loosest) {
      const int rank = rankOf(peek().kind);
      const std::size_t offset = left->offset;
      Chain chain{std::move(left), {}};
      while (rankOf(peek().kind) == rank) {
        const Token operation = take();
        chain.links.push_back({operation.kind, operation.offset, parseFrom(rank + 1)});
      }
      left = make(offset, std::move(chain));
    }
    return left;
  }

  NodePtr parseUnary() {
    const Nesting nesting(*this);
    const Token& token = peek();
    if (token.kind == TokenKind::kMinus || token.kind == TokenKind::kPlus || token.kind == TokenKind::kNot) {
      const Token operation = take();
      return make(operation.offset, Unary{operation.kind, parseUnary()});
    }
    return parsePrimary();
  }

  NodePtr parsePrimary() {
    const Token token = take();
    switch (token.kind) {
      case TokenKind::kNumber:
        return make(token.offset, Literal{numberLiteral(token)});
      case TokenKind::kText:
        return make(token.offset, Literal{Value::ofUtf8(token.text)});
      case TokenKind::kReturn:
        return make(token.offset, Literal{Value::ofText(std::u16string(1, kReturn))});
      case TokenKind::kVariable:
      case TokenKind::kGlobalVariable:
        return make(token.offset, parseVariable(token));
      case TokenKind::kName:
        return parseName(token);
      case TokenKind::kOpen: {
        NodePtr inner = parseExpression();
        expect(TokenKind::kClose, ")");
        return inner;
      }
      default:
        refuse(token.offset, fmt::format("a value is expected here, not {}", name(token)));
    }
  }

  static Value numberLiteral(const Token& token) {
    Number number = Number::parse(toUtf16(token.text));
    if (!number.isNumber()) refuse(token.offset, "this number is beyond what a calculation can hold");
    return Value::ofNumber(std::move(number));
  }

  Variable parseVariable(const Token& token) {
    Variable variable{(token.kind == TokenKind::kGlobalVariable ? "$$" : "$") + lowerName(token.text), nullptr};
    if (takeIf(TokenKind::kOpenList)) {
      variable.repetition = parseExpression();
      expect(TokenKind::kCloseList, "]");
    }
    return variable;
  }

  NodePtr parseName(const Token& token) {
    const bool called = peek().kind == TokenKind::kOpen;
    const std::string key = lowerName(token.text);
    if (!called && std::ranges::find(m_scope, key) != m_scope.end()) return make(token.offset, LocalVariable{key});
    if (const Builtin* builtin = findBuiltin(token.text)) return parseBuiltin(token, *builtin);
    for (const Signature& signature : m_signatures) {
      if (lowerName(signature.name) == key) return parseLibraryCall(token, signature);
    }
    if (called) refuse(token.offset, fmt::format("there is no function named {}", token.text));
    if (token.text.find("::") != std::string::npos) {
      refuse(token.offset, fmt::format("{} would be a field, and there are none here", token.text));
    }
    refuse(token.offset, fmt::format("there is no function or variable named {}", token.text));
  }

  NodePtr parseBuiltin(const Token& token, const Builtin& builtin) {
    switch (builtin.form) {
      case Form::kLet:
        return parseLet(token);
      case Form::kWhile:
        return parseWhile(token);
      case Form::kGet:
        return parseGet(token);
      case Form::kSubstitute:
        return make(token.offset, Call{&builtin, checked(token, builtin, parseSubstituteArguments())});
      case Form::kFunction:
      case Form::kOneOrAll:
      case Form::kCase:
      case Form::kChoose:
        break;
    }
    return make(token.offset, Call{&builtin, checked(token, builtin, parseArguments())});
  }

  NodePtr parseLibraryCall(const Token& token, const Signature& signature) {
    std::vector<NodePtr> arguments = parseArguments();
    checkCount(token, signature.prototype, signature.minimum, signature.maximum, arguments.size());
    return make(token.offset, LibraryCall{signature.name, std::move(arguments)});
  }

  std::vector<NodePtr> checked(const Token& token, const Builtin& builtin, std::vector<NodePtr> arguments) const {
    checkCount(token, builtin.prototype, builtin.minimum, builtin.maximum, arguments.size());
    if (builtin.form == Form::kOneOrAll && arguments.size() != 1 &&
        arguments.size() != static_cast<std::size_t>(builtin.maximum)) {
      refuse(token.offset,
             fmt::format("{} takes 1 or {} arguments: {}", token.text, builtin.maximum, builtin.prototype));
    }
    return arguments;
  }

  static void checkCount(const Token& token, std::string_view prototype, int minimum, int maximum, std::size_t given) {
    const auto atLeast = static_cast<std::size_t>(std::max(minimum, 0));
    if (given < atLeast) refuse(token.offset, fmt::format("{} has too few arguments: {}", token.text, prototype));
    if (maximum >= 0 && given > static_cast<std::size_t>(maximum)) {
      refuse(token.offset, fmt::format("{} has too many arguments: {}", token.text, prototype));
    }
  }

  /// `( a ; b )`, `( )` or nothing at all.
  std::vector<NodePtr> parseArguments() {
    std::vector<NodePtr> arguments;
    if (!takeIf(TokenKind::kOpen)) return arguments;
    if (takeIf(TokenKind::kClose)) return arguments;
    do {
      arguments.push_back(parseExpression());
    } while (takeIf(TokenKind::kSeparator));
    expect(TokenKind::kClose, "; or )");
    return arguments;
  }

  /// `( text ; from ; to )` or `( text ; [ from ; to ] ; [ from ; to ] … )`.
  std::vector<NodePtr> parseSubstituteArguments() {
    std::vector<NodePtr> arguments;
    expect(TokenKind::kOpen, "(");
    arguments.push_back(parseExpression());
    expect(TokenKind::kSeparator, ";");
    if (peek().kind == TokenKind::kOpenList) {
      do {
        expect(TokenKind::kOpenList, "[");
        arguments.push_back(parseExpression());
        expect(TokenKind::kSeparator, ";");
        arguments.push_back(parseExpression());
        expect(TokenKind::kCloseList, "]");
      } while (takeIf(TokenKind::kSeparator));
    } else {
      arguments.push_back(parseExpression());
      expect(TokenKind::kSeparator, ";");
      arguments.push_back(parseExpression());
    }
    expect(TokenKind::kClose, ")");
    return arguments;
  }

  NodePtr parseGet(const Token& token) {
    expect(TokenKind::kOpen, "(");
    const Token word = take();
    const GetEntry* entry = word.kind == TokenKind::kName ? findGet(word.text) : nullptr;
    if (entry == nullptr) refuse(word.offset, fmt::format("Get does not know {}", name(word)));
    expect(TokenKind::kClose, ")");
    return make(token.offset, GetCall{entry});
  }

  NodePtr parseLet(const Token& token) {
    const std::size_t scope = m_scope.size();
    expect(TokenKind::kOpen, "(");
    Let let{parseBindings(), nullptr};
    expect(TokenKind::kSeparator, ";");
    let.result = parseExpression();
    expect(TokenKind::kClose, ")");
    m_scope.resize(scope);
    return make(token.offset, std::move(let));
  }

  NodePtr parseWhile(const Token& token) {
    const std::size_t scope = m_scope.size();
    expect(TokenKind::kOpen, "(");
    While loop{parseBindings(), nullptr, {}, nullptr};
    expect(TokenKind::kSeparator, ";");
    loop.condition = parseExpression();
    expect(TokenKind::kSeparator, ";");
    loop.logic = parseBindings();
    expect(TokenKind::kSeparator, ";");
    loop.result = parseExpression();
    expect(TokenKind::kClose, ")");
    m_scope.resize(scope);
    return make(token.offset, std::move(loop));
  }

  /// `[ a = 1 ; b = 2 ]`, `[ ]` or `a = 1`. A separator before the closing bracket is forgiven, as the host forgives
  /// it.
  std::vector<Binding> parseBindings() {
    std::vector<Binding> bindings;
    if (!takeIf(TokenKind::kOpenList)) {
      bindings.push_back(parseBinding());
      return bindings;
    }
    while (!takeIf(TokenKind::kCloseList)) {
      bindings.push_back(parseBinding());
      if (peek().kind != TokenKind::kCloseList) expect(TokenKind::kSeparator, "; or ]");
    }
    return bindings;
  }

  Binding parseBinding() {
    const Token token = take();
    Binding binding;
    if (token.kind == TokenKind::kVariable || token.kind == TokenKind::kGlobalVariable) {
      binding.target = parseVariable(token);
    } else if (token.kind == TokenKind::kName) {
      binding.target = LocalVariable{lowerName(token.text)};
    } else {
      refuse(token.offset, fmt::format("a variable is expected here, not {}", name(token)));
    }
    expect(TokenKind::kEqual, "=");
    binding.value = parseExpression();
    // Only now: on its own right side the name still means the outer variable.
    if (token.kind == TokenKind::kName) m_scope.push_back(lowerName(token.text));
    return binding;
  }

  /// Counts one level of nesting for as long as it lives.
  class Nesting {
   public:
    explicit Nesting(Parser& parser) : m_depth(parser.m_depth) {
      if (++m_depth > kMaximumNesting) {
        --m_depth;
        refuse(parser.peek().offset, fmt::format("this is nested more than {} levels deep", kMaximumNesting));
      }
    }
    ~Nesting() { --m_depth; }
    Nesting(const Nesting&) = delete;
    Nesting& operator=(const Nesting&) = delete;

   private:
    int& m_depth;
  };

  std::string_view m_source;
  std::vector<Token> m_tokens;
  std::vector<Signature> m_signatures;
  std::vector<std::string> m_scope;
  std::size_t m_at = 0;
  int m_depth = 0;
};

}  // namespace

CalcResult<NodePtr> parse(std::string_view source, const FunctionLibrary& library) {
  CalcResult<std::vector<Token>> tokens = tokenize(source);
  if (!tokens) return tl::unexpected(tokens.error());
  try {
    return Parser(source, std::move(*tokens), library.signatures()).run();
  } catch (const Refusal& refusal) {
    return tl::unexpected(refusal.error);
  }
}

}  // namespace orlocal::host::calc
