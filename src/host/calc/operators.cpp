#include "host/calc/operators.h"

#include <algorithm>
#include <optional>

#include "host/fmwrapper/unicode.h"

namespace orlocal::host::calc {

namespace {

using fmx::NativeType;

bool isText(const Value& value) { return value.type() == fmx::kText; }
bool isClock(NativeType type) { return type == fmx::kDate || type == fmx::kTime || type == fmx::kTimeStamp; }
bool isPlainNumber(NativeType type) { return !isClock(type); }

std::weak_ordering compareTexts(const Value& left, const Value& right) {
  return foldCase(left.asText()) <=> foldCase(right.asText());
}

std::weak_ordering compareNumbers(const Number& left, const Number& right) {
  const std::partial_ordering order = left <=> right;
  if (order == std::partial_ordering::less) { return std::weak_ordering::less; }
  if (order == std::partial_ordering::greater) { return std::weak_ordering::greater; }
  return std::weak_ordering::equivalent;
}

bool countsAsNothing(const Value& value, const Value& other) {
  return value.isEmpty() ||
         (isText(value) && isPlainNumber(other.type()) && !isText(other) && !hasDigit(value.asText()));
}

std::weak_ordering compareClocks(const Value& left, const Value& right) {
  const bool mixed = left.type() != right.type();
  const bool timestamps = left.type() == fmx::kTimeStamp || right.type() == fmx::kTimeStamp;
  const bool dates = left.type() == fmx::kDate || right.type() == fmx::kDate;
  if (mixed && timestamps && dates) {
    return compareNumbers(left.asTimestamp().secondsSinceEpoch(), right.asTimestamp().secondsSinceEpoch());
  }
  return compareNumbers(left.asNumber(), right.asNumber());
}

/// What the result of a sum or difference is, beside its number.
NativeType typeOfSum(TokenKind operation, NativeType left, NativeType right) {
  if (isClock(left) && isPlainNumber(right)) { return left; }
  if (operation == TokenKind::kPlus && isPlainNumber(left) && isClock(right)) { return right; }
  if (left == fmx::kTime && right == fmx::kTime) { return fmx::kTime; }
  if (left == fmx::kTimeStamp && right == fmx::kTime) { return fmx::kTimeStamp; }
  if (operation == TokenKind::kPlus && left == fmx::kTime && right == fmx::kTimeStamp) { return fmx::kTimeStamp; }
  return fmx::kNumber;
}

Value withType(const Number& number, NativeType type) {
  std::optional<DateTime> moment;
  switch (type) {
    case fmx::kDate:
      moment = DateTime::fromDays(number);
      return moment ? Value::ofDate(*moment) : Value::invalid();
    case fmx::kTime:
      moment = DateTime::fromSeconds(number);
      return moment ? Value::ofTime(*moment) : Value::invalid();
    case fmx::kTimeStamp:
      moment = DateTime::fromSecondsSinceEpoch(number);
      return moment ? Value::ofTimestamp(*moment) : Value::invalid();
    default:
      return Value::ofNumber(number);
  }
}

Number combined(TokenKind operation, const Number& left, const Number& right) {
  switch (operation) {
    case TokenKind::kPlus:
      return left + right;
    case TokenKind::kMinus:
      return left - right;
    case TokenKind::kTimes:
      return left * right;
    case TokenKind::kDivide:
      return left / right;
    default:
      return power(left, right);
  }
}

}  // namespace

bool hasDigit(std::u16string_view text) {
  return std::ranges::any_of(text, [](char16_t unit) { return unit >= u'0' && unit <= u'9'; });
}

Value numberOf(const Value& value) {
  if (!value.isValid()) { return value; }
  if (value.isEmpty() || (isText(value) && !hasDigit(value.asText()))) {
    Value nothing;
    nothing.clear(fmx::kNumber);
    return nothing;
  }
  return Value::ofNumber(value.asNumber());
}

std::weak_ordering compareValues(const Value& left, const Value& right) {
  const bool leftNothing = countsAsNothing(left, right);
  const bool rightNothing = countsAsNothing(right, left);
  if (leftNothing || rightNothing) { return rightNothing <=> leftNothing; }
  if (isText(left) && isText(right)) { return compareTexts(left, right); }
  if (isText(left) && isClock(right.type())) {
    Value read = left;
    return read.convertTo(right.type()) ? compareClocks(read, right) : compareTexts(left, right);
  }
  if (isClock(left.type()) && isText(right)) {
    Value read = right;
    return read.convertTo(left.type()) ? compareClocks(left, read) : compareTexts(left, right);
  }
  if (isClock(left.type()) && isClock(right.type())) { return compareClocks(left, right); }
  return compareNumbers(left.asNumber(), right.asNumber());
}

Value calculate(TokenKind operation, const Value& left, const Value& right) {
  if (!left.isValid() || !right.isValid()) { return Value::invalid(); }
  const Number number = combined(operation, left.asNumber(), right.asNumber());
  if (!number.isNumber()) { return Value::invalid(); }
  const bool sum = operation == TokenKind::kPlus || operation == TokenKind::kMinus;
  // Nothing has no type of its own to lend: the sum with an empty date is a plain number.
  const NativeType leftType = left.isEmpty() ? fmx::kNumber : left.type();
  const NativeType rightType = right.isEmpty() ? fmx::kNumber : right.type();
  return withType(number, sum ? typeOfSum(operation, leftType, rightType) : fmx::kNumber);
}

Value compare(TokenKind operation, const Value& left, const Value& right) {
  if (!left.isValid() || !right.isValid()) { return Value::invalid(); }
  const std::weak_ordering order = compareValues(left, right);
  switch (operation) {
    case TokenKind::kEqual:
      return Value::ofNumber(order == 0 ? 1 : 0);
    case TokenKind::kNotEqual:
      return Value::ofNumber(order != 0 ? 1 : 0);
    case TokenKind::kLess:
      return Value::ofNumber(order < 0 ? 1 : 0);
    case TokenKind::kLessOrEqual:
      return Value::ofNumber(order <= 0 ? 1 : 0);
    case TokenKind::kGreater:
      return Value::ofNumber(order > 0 ? 1 : 0);
    default:
      return Value::ofNumber(order >= 0 ? 1 : 0);
  }
}

}  // namespace orlocal::host::calc
