#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "host/calc/function_library.h"

namespace orlocal::host::calc {

/// What a function of the language may ask of the evaluator, besides its arguments.
class CallContext {
 public:
  virtual ~CallContext() = default;

  /// Evaluates a calculation given as text. A faulty one is `?`.
  virtual Value evaluate(std::string_view source) = 0;

  /// True when `evaluate` would not give `?` because of an error.
  virtual bool isValidExpression(std::string_view source) = 0;

  /// Units that a text may have. What would be longer is not made.
  virtual std::size_t textLimit() const = 0;

  /// Remembers why a result is `?`, for the person at the console.
  virtual void note(std::string reason) = 0;
};

/// How the arguments of a function are evaluated.
enum class Form : std::uint8_t {
  kFunction,    ///< all, before the call
  kOneOrAll,    ///< as kFunction; takes one argument, or as many as it can
  kCase,        ///< If and Case: tests up to the first true one, and its result
  kChoose,      ///< the number, and the result that it chooses
  kSubstitute,  ///< as kFunction; pairs may stand in brackets
  kLet,         ///< variables and a result
  kWhile,       ///< variables, a condition, more variables and a result
  kGet,         ///< one word
};

using BuiltinBody = Value (*)(CallContext&, std::span<const Value>);

struct Builtin {
  std::string_view name;
  std::string_view prototype;
  int minimum;
  int maximum;  ///< -1: any number
  Form form;
  BuiltinBody body;  ///< null for forms that the evaluator knows
};

/// One word that `Get ( … )` takes.
struct GetEntry {
  std::string_view name;
  Value (*body)();
};

/// The function of that name, written in any case; null when the language has none.
const Builtin* findBuiltin(std::string_view name);
const GetEntry* findGet(std::string_view name);

/// Every function of the language, by name, for help and completion.
std::span<const Builtin* const> allBuiltins();
std::span<const GetEntry> allGets();

/// The tables, one for each group.
std::span<const Builtin> textFunctions();
std::span<const Builtin> listFunctions();
std::span<const Builtin> numberFunctions();
std::span<const Builtin> dateFunctions();
std::span<const Builtin> logicalFunctions();

}  // namespace orlocal::host::calc
