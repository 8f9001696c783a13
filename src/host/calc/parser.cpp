#include "host/calc/parser.h"

#include <algorithm>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "host/calc/builtins.h"
#include "host/calc/stack_room.h"
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
  Parser(std::string_view source, const std::vector<Signature>& signatures) : m_source(source), m_tokens(source) {
    for (const Signature& signature : signatures) m_signatures.emplace(lowerName(signature.name), &signature);
    advance();
  }

  NodePtr run() {
    if (peek().kind == TokenKind::kEnd) return make(Literal{std::make_shared<const Value>()});
    NodePtr result = parseExpression();
    if (peek().kind != TokenKind::kEnd) refuse(peek().offset, "an operator is missing before " + name(peek()));
    return result;
  }

 private:
  const Token& peek() const { return m_next; }
  void advance() {
    CalcResult<Token> token = m_tokens.next();
    if (!token) throw Refusal{token.error()};
    m_next = std::move(*token);
  }
  Token take() {
    Token token = std::move(m_next);
    advance();
    return token;
  }
  bool takeIf(TokenKind kind) {
    if (peek().kind != kind) return false;
    advance();
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
  static NodePtr make(Content content) {
    return std::make_unique<const Node>(Node{std::move(content)});
  }

  template <class Content>
  static NodePtr makeApart(Content content) {
    return make(std::make_unique<const Content>(std::move(content)));
  }

  NodePtr parseExpression() { return parseFrom(kLoosest); }

  /// Everything that operators of this rank and tighter ones join.
  NodePtr parseFrom(int loosest) {
    NodePtr left = parseUnary();
    while (rankOf(peek().kind) >= loosest) {
      const int rank = rankOf(peek().kind);
      Chain chain{std::move(left), {}};
      while (rankOf(peek().kind) == rank) {
        const Token operation = take();
        chain.links.push_back({operation.kind, parseFrom(rank + 1)});
      }
      chain.links.shrink_to_fit();
      left = make(std::move(chain));
    }
    return left;
  }

  NodePtr parseUnary() {
    const Nesting nesting(*this);
    const TokenKind kind = peek().kind;
    if (kind == TokenKind::kMinus || kind == TokenKind::kPlus || kind == TokenKind::kNot) {
      advance();
      return make(Unary{kind, parseUnary()});
    }
    return parsePrimary();
  }

  NodePtr parsePrimary() {
    const Token token = take();
    switch (token.kind) {
      case TokenKind::kNumber:
        return makeLiteral(token, numberLiteral);
      case TokenKind::kText:
        return makeLiteral(token, [](const Token& text) { return Value::ofUtf8(text.text); });
      case TokenKind::kPilcrow:
        return makeLiteral(token, [](const Token&) { return Value::ofText(std::u16string(1, kReturn)); });
      case TokenKind::kVariable:
      case TokenKind::kGlobalVariable:
        return make(parseVariable(token));
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

  /// A literal, sharing the value of an equal one before it.
  template <class Read>
  NodePtr makeLiteral(const Token& token, Read read) {
    std::shared_ptr<const Value>& value = m_literals[static_cast<char>(token.kind) + token.text];
    if (!value) value = std::make_shared<const Value>(read(token));
    return make(Literal{value});
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
    if (!called && m_visible.contains(key)) return make(LocalVariable{key});
    if (const Builtin* builtin = findBuiltin(token.text)) return parseBuiltin(token, *builtin);
    const auto signature = m_signatures.find(key);
    if (signature != m_signatures.end()) return parseLibraryCall(token, *signature->second);
    if (called) refuse(token.offset, fmt::format("there is no function named {}", token.text));
    if (token.text.find("::") != std::string::npos) {
      refuse(token.offset, fmt::format("{} would be a field, and there are none here", token.text));
    }
    refuse(token.offset, fmt::format("there is no function or variable named {}", token.text));
  }

  NodePtr parseBuiltin(const Token& token, const Builtin& builtin) {
    switch (builtin.form) {
      case Form::kLet:
        return parseLet();
      case Form::kWhile:
        return parseWhile();
      case Form::kGet:
        return parseGet();
      case Form::kSubstitute:
        return make(Call{&builtin, checked(token, builtin, parseSubstituteArguments())});
      case Form::kFunction:
      case Form::kOneOrAll:
      case Form::kCase:
      case Form::kChoose:
        break;
    }
    return make(Call{&builtin, checked(token, builtin, parseArguments())});
  }

  NodePtr parseLibraryCall(const Token& token, const Signature& signature) {
    std::vector<NodePtr> arguments = parseArguments();
    checkCount(token, signature.prototype, signature.minimum, signature.maximum, arguments.size());
    return makeApart(LibraryCall{signature.name, std::move(arguments)});
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

  NodePtr parseGet() {
    expect(TokenKind::kOpen, "(");
    const Token word = take();
    const GetEntry* entry = word.kind == TokenKind::kName ? findGet(word.text) : nullptr;
    if (entry == nullptr) refuse(word.offset, fmt::format("Get does not know {}", name(word)));
    expect(TokenKind::kClose, ")");
    return make(GetCall{entry});
  }

  NodePtr parseLet() {
    const std::size_t scope = m_scope.size();
    expect(TokenKind::kOpen, "(");
    Let let{parseBindings(), nullptr};
    expect(TokenKind::kSeparator, ";");
    let.result = parseExpression();
    expect(TokenKind::kClose, ")");
    leave(scope);
    return makeApart(std::move(let));
  }

  NodePtr parseWhile() {
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
    leave(scope);
    return makeApart(std::move(loop));
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
    if (token.kind == TokenKind::kName) enter(lowerName(token.text));
    return binding;
  }

  void enter(const std::string& name) {
    const auto visible = m_visible.try_emplace(name, 0).first;
    ++visible->second;
    m_scope.push_back(visible);
  }

  /// Forgets the names that came after the first `size` ones.
  void leave(std::size_t size) {
    for (; m_scope.size() > size; m_scope.pop_back()) {
      if (--m_scope.back()->second == 0) m_visible.erase(m_scope.back());
    }
  }

  /// Counts one level of nesting for as long as it lives.
  class Nesting {
   public:
    explicit Nesting(Parser& parser) : m_depth(parser.m_depth) {
      if (m_depth >= kMaximumNesting) {
        refuse(parser.peek().offset, fmt::format("this is nested more than {} levels deep", kMaximumNesting));
      }
      // What is built as deep as this must also be let go again.
      if (stackRoom() < parser.m_startPlace - stackPlace()) {
        refuse(parser.peek().offset,
               "this is nested too deeply for the stack of this process; nest it less, or allow "
               "a larger one (ulimit -s)");
      }
      ++m_depth;
    }
    ~Nesting() { --m_depth; }
    Nesting(const Nesting&) = delete;
    Nesting& operator=(const Nesting&) = delete;

   private:
    int& m_depth;
  };

  std::string_view m_source;
  TokenReader m_tokens;
  Token m_next;
  std::unordered_map<std::string, const Signature*> m_signatures;
  std::unordered_map<std::string, std::shared_ptr<const Value>> m_literals;
  std::map<std::string, int> m_visible;  ///< names of enclosing variables, each with how often it was given
  std::vector<std::map<std::string, int>::iterator> m_scope;
  int m_depth = 0;
  std::size_t m_startPlace = stackPlace();
};

}  // namespace

CalcResult<NodePtr> parse(std::string_view source, const FunctionLibrary& library) {
  // What is no token anywhere is said before what is no calculation.
  TokenReader tokens(source);
  for (;;) {
    const CalcResult<Token> token = tokens.next();
    if (!token) return tl::unexpected(token.error());
    if (token->kind == TokenKind::kEnd) break;
  }
  const std::vector<Signature> signatures = library.signatures();
  try {
    return Parser(source, signatures).run();
  } catch (const Refusal& refusal) {
    return tl::unexpected(refusal.error);
  }
}

}  // namespace orlocal::host::calc
