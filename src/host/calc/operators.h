#pragma once

#include <compare>

#include "host/calc/lexer.h"
#include "host/fmwrapper/value.h"

namespace orlocal::host::calc {

/// How two valid values stand to each other, as the host compares them:
///
/// - Nothing is before everything else, and equal to nothing.
/// - Two texts are compared without case, by Unicode.
/// - A text beside a date, time or timestamp is read as one; when it is none, both are compared as texts.
/// - A text beside a number is read as a number; one without digits counts as nothing.
/// - A date beside a timestamp is its midnight. All else is compared as numbers.
std::weak_ordering compareValues(const Value& left, const Value& right);

/// `+` `-` `*` `/` `^`. An invalid operand makes an invalid result, as do a division by zero and a result beyond range.
///
/// A date, time or timestamp plus or minus a number stays what it is (days for dates, seconds for the others); a
/// timestamp plus or minus a time stays one. The difference of two dates or of two timestamps is a number, of two
/// times a time. Everything else is plain numbers.
Value calculate(TokenKind operation, const Value& left, const Value& right);

/// `=` `≠` `<` `≤` `>` `≥`. An invalid operand makes an invalid result.
Value compare(TokenKind operation, const Value& left, const Value& right);

/// True when the text holds a digit, so that it can be read as a number at all.
bool hasDigit(std::u16string_view text);

/// The value as a number as GetAsNumber gives it: empty for a text without digits.
Value numberOf(const Value& value);

}  // namespace orlocal::host::calc
