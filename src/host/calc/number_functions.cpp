#include <functional>
#include <optional>

#include "host/calc/arguments.h"
#include "host/calc/builtins.h"
#include "host/calc/operators.h"

namespace orlocal::host::calc {

namespace {

/// A function of one number; "?" stays "?".
template <auto Function>
Value ofOne(CallContext&, Arguments a) {
  return a[0].isValid() ? Value::ofNumber(Function(a[0].asNumber())) : a[0];
}

template <auto Function>
Value ofTwo(CallContext&, Arguments a) {
  if (!a[0].isValid() || !a[1].isValid()) { return Value::invalid(); }
  return Value::ofNumber(Function(a[0].asNumber(), a[1].asNumber()));
}

Number wholeQuotient(const Number& left, const Number& right) { return floor(left / right); }
Number cutWhole(const Number& value) { return truncate(value); }
Number sign(const Number& value) { return value.isZero() ? 0 : value.isNegative() ? -1 : 1; }

Value roundTo(CallContext&, Arguments a) {
  return a[0].isValid() ? Value::ofNumber(round(a[0].asNumber(), smallAt(a, 1))) : a[0];
}

Value truncateTo(CallContext&, Arguments a) {
  return a[0].isValid() ? Value::ofNumber(truncate(a[0].asNumber(), smallAt(a, 1))) : a[0];
}

Value setPrecision(CallContext&, Arguments a) {
  if (!a[0].isValid()) { return a[0]; }
  Number number = a[0].asNumber();
  number.setPrecision(smallAt(a, 1));
  return Value::ofNumber(number);
}

bool holdsSomething(const Value& value) { return !value.isEmpty() || !value.isValid(); }

Value count(CallContext&, Arguments a) {
  std::int64_t filled = 0;
  for (const Value& value : a) { filled += holdsSomething(value) ? 1 : 0; }
  return Value::ofNumber(filled);
}

Value sum(CallContext&, Arguments a) {
  Number total = 0;
  for (const Value& value : a) {
    if (!value.isValid()) { return value; }
    total = total + value.asNumber();
  }
  return Value::ofNumber(total);
}

Value average(CallContext& context, Arguments a) {
  const Value total = sum(context, a);
  const Value filled = count(context, a);
  return filled.asNumber().isZero() ? numberOf(Value{}) : calculate(TokenKind::kDivide, total, filled);
}

/// The value that stands before all others in that order, empty ones left out; its type is kept.
template <class Order>
Value extreme(Arguments a, Order order) {
  const Value* best = nullptr;
  for (const Value& value : a) {
    if (!value.isValid()) { return value; }
    if (holdsSomething(value) && (best == nullptr || order(compareValues(value, *best)))) { best = &value; }
  }
  return best == nullptr ? Value{} : *best;
}

Value maximum(CallContext&, Arguments a) {
  return extreme(a, [](std::weak_ordering order) { return order > 0; });
}
Value minimum(CallContext&, Arguments a) {
  return extreme(a, [](std::weak_ordering order) { return order < 0; });
}

constexpr Builtin kFunctions[] = {
    {"Abs", "Abs ( number )", 1, 1, Form::kFunction, ofOne<absolute>},
    {"Average", "Average ( value {; value...} )", 1, -1, Form::kFunction, average},
    {"Ceiling", "Ceiling ( number )", 1, 1, Form::kFunction, ofOne<ceiling>},
    {"Count", "Count ( value {; value...} )", 1, -1, Form::kFunction, count},
    {"Div", "Div ( number ; divisor )", 2, 2, Form::kFunction, ofTwo<wholeQuotient>},
    {"Exp", "Exp ( number )", 1, 1, Form::kFunction, ofOne<exponential>},
    {"Floor", "Floor ( number )", 1, 1, Form::kFunction, ofOne<floor>},
    {"Int", "Int ( number )", 1, 1, Form::kFunction, ofOne<cutWhole>},
    {"Ln", "Ln ( number )", 1, 1, Form::kFunction, ofOne<naturalLogarithm>},
    {"Max", "Max ( value {; value...} )", 1, -1, Form::kFunction, maximum},
    {"Min", "Min ( value {; value...} )", 1, -1, Form::kFunction, minimum},
    {"Mod", "Mod ( number ; divisor )", 2, 2, Form::kFunction, ofTwo<modulo>},
    {"Round", "Round ( number ; precision )", 2, 2, Form::kFunction, roundTo},
    {"SetPrecision", "SetPrecision ( expression ; precision )", 2, 2, Form::kFunction, setPrecision},
    {"Sign", "Sign ( number )", 1, 1, Form::kFunction, ofOne<sign>},
    {"Sqrt", "Sqrt ( number )", 1, 1, Form::kFunction, ofOne<squareRoot>},
    {"Sum", "Sum ( value {; value...} )", 1, -1, Form::kFunction, sum},
    {"Truncate", "Truncate ( number ; precision )", 2, 2, Form::kFunction, truncateTo},
};

}  // namespace

std::span<const Builtin> numberFunctions() { return kFunctions; }

}  // namespace orlocal::host::calc
