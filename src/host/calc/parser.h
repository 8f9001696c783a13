#pragma once

#include <string_view>

#include "base/result.h"
#include "host/calc/ast.h"
#include "host/calc/function_library.h"

namespace orlocal::host::calc {

/// Nesting of brackets, functions and unary operators that a calculation may have.
inline constexpr int kMaximumNesting = 500;

/// Reads one calculation in UTF-8. Names are resolved here: an unknown function or variable is an error with its place,
/// as is a number of arguments that the function does not take. An empty calculation gives the empty text.
///
/// From the loosest rank: `or` `xor`, `and`, comparisons, `&`, `+` `-`, `*` `/`, `^`, and the unary `not` `-` `+`.
/// Every rank joins from the left.
Result<NodePtr> parse(std::string_view source, const FunctionLibrary& library);

}  // namespace orlocal::host::calc
